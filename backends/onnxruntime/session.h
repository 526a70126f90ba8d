#pragma once

// A graph that ONNX Runtime is ready to execute:
//
//   auto session = std::make_shared<const Session>(library, model, false);
//   Execution(session, inputs, outputs).run();
//
// Any thread may use it.

#include <atomic>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model.h"
#include "node_times.h"
#include "ort_library.h"
#include "scratch_directory.h"
#include "tensors.h"

namespace kiv::ort {

// An input or output of a session: the tensor's id, 0 in a session from a
// binary, its name, and its name in the model.
struct Port {
  std::uint32_t id;
  std::string name;
  std::string value;
};

// The port of the tensor's id, else of its name; null if there is none.
const Port* findPort(std::span<const Port> ports, const TensorFields& fields);

class Session {
 public:
  // Where it is asked for, ONNX Runtime times each node. A Failure with
  // ONNX Runtime's message for a model that it refuses.
  Session(std::shared_ptr<const OrtLibrary> library, Model model,
          bool timesNodes);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const OrtLibrary& library() const { return *library_; }
  OrtSession* handle() const { return session_; }
  const std::vector<Port>& inputs() const { return inputs_; }
  const std::vector<Port>& outputs() const { return outputs_; }
  const Model& model() const { return model_; }

  // The time of each node so far, in order of the first execution. Nothing
  // unless nodes are timed, and from the second call on: ONNX Runtime ends its
  // timing with the first.
  std::vector<NodeTime> takeNodeTimes() const;

 private:
  std::vector<Port> readPorts(
      const google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>& values)
      const;
  void open(const OrtSessionOptions* options);
  std::string endProfiling() const;

  // ONNX Runtime may write there until the session is released.
  std::unique_ptr<ScratchDirectory> scratch_;
  mutable std::atomic_flag hasEndedProfiling_;
  std::shared_ptr<const OrtLibrary> library_;
  Model model_;
  std::vector<Port> inputs_;
  std::vector<Port> outputs_;
  OrtSession* session_ = nullptr;
};

}  // namespace kiv::ort
