#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "arrays/outputs.h"
#include "kiv_recording/output_plan.h"
#include "recording/replayer.h"

// Saves the outputs of a replay's executions, compares them with saved ones,
// and gives intermediate tensors buffers on the way in.
//
//   OutputKeeper keeper(plan);
//   if (!keeper.saveTo(directory, why)) return why;
//   ...                      // in a ReplayObserver:
//   keeper.prepare(call, arguments);
//   keeper.afterCall(result);
//
// From the replay's thread.
namespace kiv::tool {

class OutputKeeper {
 public:
  explicit OutputKeeper(OutputPlan& plan) : plan_(plan) {}

  bool saveTo(const std::filesystem::path& directory, std::string& why);
  bool compareWith(const std::filesystem::path& directory,
                   const arrays::Tolerance& tolerance, std::string& why);
  // Passes over outputs that were not saved.
  void expectPart() { expectsPart_ = true; }

  void prepare(std::size_t call, recording::Arguments& arguments);
  // Keeps what the first repetition of an execution gave.
  void afterCall(const recording::CallResult& result);

  // Shows saved outputs that the replay did not have, and a summary. True when
  // all was saved and all compared outputs are within.
  bool finish();

 private:
  void addOutputs(const OutputPlan::Execution& execution,
                  recording::Arguments& arguments);
  void keep(const OutputPlan::Execution& execution,
            const recording::Arguments& arguments);
  void keepOutput(const OutputPlan::Execution& execution,
                  const Kiv_Tensor_t& tensor);
  void fail(const std::string& why);

  OutputPlan& plan_;
  std::optional<arrays::OutputWriter> writer_;
  std::optional<arrays::OutputComparison> comparison_;
  // Ids of added outputs, as the backend gave them.
  std::vector<std::uint32_t> ids_;
  // The outputs of the execution that is being made, and buffers of those that
  // are added.
  std::vector<Kiv_Tensor_t> outputs_;
  std::vector<std::vector<std::byte>> buffers_;
  bool expectsPart_ = false;
  std::uint64_t compared_ = 0;
  std::uint64_t over_ = 0;
  std::string firstOver_;
  bool hasFailed_ = false;
};

// Shows one output's figures, the first one that is over marked.
void showDifference(const arrays::Difference& difference, bool isFirstOver);

// --rtol and --atol.
void addTolerance(CLI::App& verb, arrays::Tolerance& tolerance);

}  // namespace kiv::tool
