#pragma once

// One execution of a session:
//
//   Execution execution(session, inputs, outputs);
//   const RunTimes times = execution.run();
//
// The records are read when the execution is created, the buffers that they
// name when it runs, which may be on another thread.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "session.h"
#include "tensors.h"

namespace kiv::ort {

// The durations of an execution, in microseconds.
struct RunTimes {
  std::uint64_t total = 0;
  std::uint64_t computing = 0;
  std::uint64_t copying = 0;
};

// Values of ONNX Runtime, null until they are there; released with the object.
class OrtValues {
 public:
  explicit OrtValues(const OrtFunctions& functions) : functions_(functions) {}
  ~OrtValues() {
    for (OrtValue* value : values_)
      if (value != nullptr) functions_.releaseValue(value);
  }
  OrtValues(const OrtValues&) = delete;
  OrtValues& operator=(const OrtValues&) = delete;

  OrtValue** add() { return &values_.emplace_back(nullptr); }
  OrtValue** data() { return values_.data(); }
  std::size_t size() const { return values_.size(); }
  OrtValue* operator[](std::size_t index) const { return values_[index]; }

 private:
  const OrtFunctions& functions_;
  std::vector<OrtValue*> values_;
};

class Execution {
 public:
  // Tensors are found by their ids, else by their names. A Failure for a tensor
  // that is no input or output of the graph or whose buffer has not the size of
  // its shape, and for an input that is not given.
  Execution(std::shared_ptr<const Session> session,
            std::span<const Kiv_Tensor_t> inputs,
            std::span<const Kiv_Tensor_t> outputs);
  // Computes the outputs and copies them into their buffers, which must have
  // exactly the size of the result. A Failure if ONNX Runtime fails or a result
  // does not fit; buffers before that one are filled then.
  RunTimes run();

 private:
  struct Result {
    int onnxType;
    std::vector<std::int64_t> dimensions;
    const void* data;
  };

  void addInput(const Kiv_Tensor_t& record);
  void addOutput(const TensorFields& fields);
  void checkInputs() const;
  void compute();
  Result readResult(OrtValue* value, const std::string& what) const;
  static void logResult(const std::string& what, const Result& result,
                        std::uint64_t size);
  void copyResult(const TensorFields& fields, OrtValue* value) const;
  void check(const char* what, OrtStatus* status) const;

  std::shared_ptr<const Session> session_;
  const OrtFunctions& functions_;
  std::vector<const char*> inputNames_;
  OrtValues inputs_;
  std::vector<const char*> outputNames_;
  std::vector<TensorFields> outputFields_;
  OrtValues outputs_;
};

}  // namespace kiv::ort
