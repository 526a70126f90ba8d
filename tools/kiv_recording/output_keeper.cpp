#include "kiv_recording/output_keeper.h"

#include <fmt/format.h>

#include <cstdio>

#include "kiv_recording/recordings.h"

namespace kiv::tool {

using recording::Arguments;
using recording::CallResult;

void showDifference(const arrays::Difference& difference, bool isFirstOver) {
  const char* const mark = !difference.isOver() ? "  "
                           : isFirstOver        ? "=>"
                                                : "! ";
  fmt::print("{} {}\n", mark, toString(difference));
}

void addTolerance(CLI::App& verb, arrays::Tolerance& tolerance) {
  verb.add_option("--rtol", tolerance.rtol,
                  "Tolerance relative to the expected value")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  verb.add_option("--atol", tolerance.atol, "Absolute tolerance")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
}

bool OutputKeeper::saveTo(const std::filesystem::path& directory,
                          std::string& why) {
  return writer_.emplace().open(directory, why);
}

bool OutputKeeper::compareWith(const std::filesystem::path& directory,
                               const arrays::Tolerance& tolerance,
                               std::string& why) {
  return comparison_.emplace(tolerance).open(directory, why);
}

void OutputKeeper::prepare(std::size_t call, Arguments& arguments) {
  if (plan_.createdBy(call))
    arguments.find("tensor")->pointer<Kiv_Tensor_t>()->v1.type =
        KIV_TENSOR_TYPE_OUTPUT;
  for (const OutputPlan::NodeTensor& place : plan_.changesOfNode(call)) {
    auto& node = arguments.find("opConfig")->pointer<Kiv_OpConfig_t>()->v1;
    (place.isOutput ? node.outputTensors : node.inputTensors)[place.index]
        .v1.type = KIV_TENSOR_TYPE_OUTPUT;
  }
  const OutputPlan::Execution* const execution = plan_.execution(call);
  if (execution != nullptr && !execution->added.empty())
    addOutputs(*execution, arguments);
}

void OutputKeeper::addOutputs(const OutputPlan::Execution& execution,
                              Arguments& arguments) {
  for (std::size_t i = 0; i + 1 < arguments.values.size(); ++i) {
    recording::Value& value = arguments.values[i];
    recording::Value& count = arguments.values[i + 1];
    if (value.argument->name != "outputs") continue;
    const auto* const recorded = value.pointer<const Kiv_Tensor_t>();
    outputs_.assign(recorded,
                    recorded + (recorded == nullptr ? 0 : count.bits));
    buffers_.clear();
    for (const std::size_t index : execution.added) {
      OwnedTensor& tensor = plan_.added()[index].tensor;
      buffers_.emplace_back(static_cast<std::size_t>(*tensor.size()));
      Kiv_Tensor_t record = tensor.record();
      record.v1.id = ids_[index];
      record.v1.clientBuf = {buffers_.back().data(),
                             static_cast<std::uint32_t>(*tensor.size())};
      outputs_.push_back(record);
    }
    value.bits = reinterpret_cast<std::uintptr_t>(outputs_.data());
    count.bits = outputs_.size();
  }
}

void OutputKeeper::afterCall(const CallResult& result) {
  if (result.status != KIV_SUCCESS) return;
  if (const auto index = plan_.createdBy(result.call)) {
    ids_.resize(plan_.added().size());
    ids_[*index] =
        result.arguments.find("tensor")->pointer<Kiv_Tensor_t>()->v1.id;
  }
  const OutputPlan::Execution* const execution = plan_.execution(result.call);
  if (execution != nullptr && !result.isWarmup && result.repetition == 0)
    keep(*execution, result.arguments);
}

void OutputKeeper::keep(const OutputPlan::Execution& execution,
                        const Arguments& arguments) {
  const auto* const outputs =
      arguments.find("outputs")->pointer<const Kiv_Tensor_t>();
  for (const std::size_t index : execution.order)
    keepOutput(execution, outputs[index]);
}

void OutputKeeper::keepOutput(const OutputPlan::Execution& execution,
                              const Kiv_Tensor_t& tensor) {
  const arrays::OutputName name = {
      execution.graph, execution.number,
      tensor.v1.name == nullptr ? "" : tensor.v1.name};
  std::string why;
  const auto view = arrays::viewOf(tensor, why);
  if (!view)
    return fail(fmt::format(R"(output "{}" of graph "{}": {})", name.tensor,
                            name.graph, why));
  if (writer_ && !writer_->save(name, *view, why)) fail(why);
  if (!comparison_) return;
  const arrays::Difference difference = comparison_->compare(name, *view);
  if (difference.isUnknown && expectsPart_) return;
  ++compared_;
  if (difference.isOver() && over_++ == 0)
    firstOver_ = arrays::titleOf(difference.path);
  showDifference(difference, difference.isOver() && over_ == 1);
}

void OutputKeeper::fail(const std::string& why) {
  std::fflush(stdout);
  fmt::print(stderr, "{}\n", why);
  hasFailed_ = true;
}

bool OutputKeeper::finish() {
  if (!comparison_) return !hasFailed_;
  const auto missing = comparison_->missing();
  for (const arrays::Difference& difference : missing)
    showDifference(difference, false);
  if (over_ == 0)
    fmt::print(
        "{} outputs are within{}\n", compared_,
        missing.empty() ? "" : fmt::format(", {} are missing", missing.size()));
  else
    fmt::print("{} of {} outputs are over, the first is {}\n", over_, compared_,
               firstOver_);
  return !hasFailed_ && over_ == 0 && missing.empty();
}

}  // namespace kiv::tool
