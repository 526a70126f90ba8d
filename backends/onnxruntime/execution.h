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

namespace kiv::ort {

// What an execution took, in microseconds.
struct RunTimes {
  std::uint64_t total = 0;
  std::uint64_t computing = 0;
  std::uint64_t copying = 0;
};

class Execution {
 public:
  // Tensors are found by their ids, else by their names. A Failure for a tensor
  // that is no input or output of the graph or whose buffer has not the size of
  // its shape, and for an input that is not given.
  Execution(std::shared_ptr<const Session> session,
            std::span<const Kiv_Tensor_t> inputs,
            std::span<const Kiv_Tensor_t> outputs);
  ~Execution();
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;

  // Computes the outputs and copies them into their buffers, which must have
  // exactly the size of the result. A Failure if ONNX Runtime fails or a result
  // does not fit; buffers before that one are filled then.
  RunTimes run();

 private:
  struct Result {
    const ElementType* elements;
    std::vector<std::int64_t> dimensions;
    const void* data;
  };

  void addInput(const TensorFields& fields);
  void addOutput(const TensorFields& fields);
  void checkInputs() const;
  void compute();
  Result readResult(OrtValue* value, const std::string& what) const;
  void copyResult(const TensorFields& fields, OrtValue* value) const;
  void check(const char* what, OrtStatus* status) const;

  std::shared_ptr<const Session> session_;
  const OrtFunctions& functions_;
  std::vector<const char*> inputNames_;
  std::vector<OrtValue*> inputs_;
  std::vector<const char*> outputNames_;
  std::vector<TensorFields> outputFields_;
  std::vector<OrtValue*> outputs_;
};

}  // namespace kiv::ort
