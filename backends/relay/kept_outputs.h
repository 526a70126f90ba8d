#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "KivTypes.h"
#include "answers.h"
#include "arrays/outputs.h"

namespace kiv::relay {

// Whether a record is of a version that has an id and a buffer.
bool hasId(const Kiv_Tensor_t& tensor);

// An execution that was recorded, as its outputs are named.
struct Execution {
  Answers::Place place;
  std::string graph;
  std::uint64_t number = 0;
};

// Tensors with copies of all that they point to but their buffers, for a call
// that goes on when the client's records are gone.
class OwnedTensors {
 public:
  OwnedTensors() = default;
  OwnedTensors(const Kiv_Tensor_t* tensors, std::uint32_t count);
  OwnedTensors(const OwnedTensors&) = delete;
  OwnedTensors& operator=(const OwnedTensors&) = delete;

  std::span<const Kiv_Tensor_t> tensors() const { return tensors_; }

 private:
  std::vector<Kiv_Tensor_t> tensors_;
  std::vector<std::string> names_;
  std::vector<std::vector<std::uint32_t>> dimensions_;
};

// The outputs of executions, kept as
// RECORDING/outputs/GRAPH/EXECUTION/TENSOR.npy where KIV_RELAY_KEEP_OUTPUTS is
// 1, up to KIV_RELAY_KEEP_BYTES bytes of data:
//
//   if (outputs.isOn()) outputs.keep(answers, execution, tensors);
//
// From any thread.
class KeptOutputs {
 public:
  // As the environment has it.
  KeptOutputs();

  bool isOn() const { return limit_ != 0; }
  // Begins the list of outputs of the recording in that directory.
  void begin(const std::string& directory);
  // Outputs behind the first one that cannot be kept are dropped, and listed.
  void keep(Answers& answers, const Execution& execution,
            std::span<const Kiv_Tensor_t> outputs);

 private:
  // Why the outputs could not be kept, or nothing.
  std::string keepAll(const Execution& execution,
                      std::span<const Kiv_Tensor_t> outputs);

  std::uint64_t limit_ = 0;
  std::mutex mutex_;
  std::uint64_t bytes_ = 0;
  bool isFull_ = false;
  std::string directory_;
  std::unique_ptr<arrays::OutputWriter> writer_;
  // Why the list could not be begun.
  std::string whyNot_;
};

}  // namespace kiv::relay
