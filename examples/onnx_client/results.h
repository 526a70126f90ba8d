#pragma once

// What becomes of the outputs of executions: they are saved, compared with
// saved ones, and shown in short.
//
//   Results results(options.results, "main");
//   results.take(number, execution.outputs());
//   results.show(execution.outputs());
//   return results.areWithin();

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "arrays/outputs.h"

namespace onnx_client {

struct ResultOptions {
  std::string saveDirectory;
  std::string compareDirectory;
  kiv::arrays::Tolerance tolerance;
};

class Results {
 public:
  // A ClientError for directories that do not do.
  Results(const ResultOptions& options, std::string graph);

  // Saves and compares the outputs of an execution, which count from 0. A
  // ClientError for a file that cannot be written.
  void take(std::uint64_t execution, const std::vector<Kiv_Tensor_t>& outputs);

  // One line for each output: its type, shape, first values, and the five
  // largest of a list.
  static void show(const std::vector<Kiv_Tensor_t>& outputs);

  // Shows what was saved and did not come up. False where an output is over.
  bool areWithin();

 private:
  std::string graph_;
  std::optional<kiv::arrays::OutputWriter> writer_;
  std::optional<kiv::arrays::OutputComparison> comparison_;
  bool isOver_ = false;
};

}  // namespace onnx_client
