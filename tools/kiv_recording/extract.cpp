#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <optional>

#include "arrays/npy.h"
#include "arrays/outputs.h"
#include "kiv_recording/answers.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Program;
using recording::Value;
namespace calls = format::calls;

constexpr const char* kExtractDescription =
    "Write data of a recording as .npy files";

constexpr const char* kExtractDetails =
    R"(Writes the data of tensors: static ones and parameters of nodes as
OUT/GRAPH/static/TENSOR.npy, inputs of executions as
OUT/GRAPH/EXECUTION/TENSOR.npy, and a list of them in OUT/outputs.txt, which
kiv-recording compare takes. Executions of a graph count from 0. Quantized
numbers are written as the integers that they are. Where OUT ends with .npy, it
is the file of the one array that --tensor names.

Example: the weights of a layer for NumPy
  kiv-recording extract saver_output --tensor conv1.weight -o weight.npy

Example: what did the network get the second time?
  kiv-recording extract saver_output --execution 1 -o inputs)";

struct ExtractOptions {
  RecordingOptions recording;
  std::string output;
  std::optional<std::string> tensor;
  std::optional<std::uint64_t> execution;
  bool isAll = false;

  bool isOneFile() const { return tensor && output.ends_with(".npy"); }
};

class Extractor {
 public:
  explicit Extractor(const ExtractOptions& options) : options_(options) {}

  int extract(const recording::Recording& recording,
              std::span<std::byte> data) {
    if (!options_.isOneFile() &&
        !check(writer_.open(pathOf(options_.output), why_)))
      return kDiffers;
    Program program(recording, data);
    Arguments arguments;
    for (std::size_t call = 0; call < recording.calls().size(); ++call) {
      if (const auto problem = program.begin(call, arguments)) {
        fmt::print(stderr, "{}\n", toString(*problem));
        return kUnreadable;
      }
      answers_.answer(arguments);
      if (!visit(program, arguments)) return kDiffers;
      program.end(call);
    }
    return finish();
  }

 private:
  bool check(bool isGood) {
    if (!isGood) fmt::print(stderr, "{}\n", why_);
    return isGood;
  }

  bool visit(const Program& program, const Arguments& arguments) {
    const format::Function* const function = arguments.function;
    if (function == &calls::kTensorCreateGraphTensor ||
        function == &calls::kTensorCreateContextTensor)
      return visitTensor(program, arguments);
    if (function == &calls::kGraphAddNode) return visitNode(program, arguments);
    if (function == &calls::kGraphExecute)
      return visitExecution(program, arguments);
    return true;
  }

  static std::string graphOf(const Program& program,
                             const Arguments& arguments) {
    const Value* const graph = arguments.find("graph");
    return graph == nullptr ? std::string()
                            : std::string(program.graphName(graph->variable));
  }

  bool visitTensor(const Program& program, const Arguments& arguments) {
    const auto* const tensor =
        arguments.find("tensor")->pointer<const Kiv_Tensor_t>();
    if (tensor == nullptr || tensor->v1.type != KIV_TENSOR_TYPE_STATIC)
      return true;
    return save(
        {graphOf(program, arguments), std::nullopt, orEmpty(tensor->v1.name)},
        *tensor);
  }

  bool visitNode(const Program& program, const Arguments& arguments) {
    const auto& node =
        arguments.find("opConfig")->pointer<const Kiv_OpConfig_t>()->v1;
    for (std::uint32_t i = 0; i < node.numParams; ++i) {
      const Kiv_Param_t& param = node.params[i];
      if (param.paramType != KIV_PARAM_TYPE_TENSOR) continue;
      std::string name = orEmpty(param.tensorParam.v1.name);
      if (name.empty()) name = orEmpty(node.name) + "." + orEmpty(param.name);
      if (!save({graphOf(program, arguments), std::nullopt, name},
                param.tensorParam))
        return false;
    }
    return true;
  }

  bool visitExecution(const Program& program, const Arguments& arguments) {
    const std::uint64_t number = executions_[arguments.find("graph")->bits]++;
    const auto* const inputs =
        arguments.find("inputs")->pointer<const Kiv_Tensor_t>();
    const std::uint64_t count =
        inputs == nullptr ? 0 : arguments.find("numInputs")->bits;
    for (std::uint64_t i = 0; i < count; ++i)
      if (!save(
              {graphOf(program, arguments), number, orEmpty(inputs[i].v1.name)},
              inputs[i]))
        return false;
    return true;
  }

  bool isWanted(const arrays::OutputName& name) const {
    if (options_.isAll) return true;
    if (options_.tensor) return name.tensor == *options_.tensor;
    return name.execution == options_.execution;
  }

  bool save(const arrays::OutputName& name, const Kiv_Tensor_t& tensor) {
    if (!isWanted(name)) return true;
    const auto view = arrays::viewOf(tensor, why_);
    if (!view) {
      fmt::print(stderr, "tensor \"{}\" is left out: {}\n", name.tensor, why_);
      return true;
    }
    ++written_;
    if (!options_.isOneFile()) return check(writer_.save(name, *view, why_));
    if (written_ > 1) return true;
    if (arrays::writeNpy(pathOf(options_.output), *view, why_)) return true;
    why_ = options_.output + ": " + why_;
    return check(false);
  }

  int finish() const {
    if (written_ == 0) {
      fmt::print(
          stderr, "the recording has no such data{}\n",
          options_.tensor ? " of a tensor \"" + *options_.tensor + "\"" : "");
      return kDiffers;
    }
    if (options_.isOneFile() && written_ > 1) {
      fmt::print(stderr,
                 "there are {} arrays of that name, and {} holds the first: "
                 "name a directory for all\n",
                 written_, options_.output);
      return kDiffers;
    }
    fmt::print("{} arrays\n", written_);
    return kDone;
  }

  const ExtractOptions& options_;
  arrays::OutputWriter writer_;
  Answers answers_;
  std::map<std::uint64_t, std::uint64_t> executions_;
  std::string why_;
  std::uint64_t written_ = 0;
};

int extract(const ExtractOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const auto data = DataFile::open(*recording);
  if (!data) return kUnreadable;
  return Extractor(options).extract(*recording, data->bytes());
}

}  // namespace

Verb addExtract(CLI::App& program) {
  const auto options = std::make_shared<ExtractOptions>();
  CLI::App* verb = program.add_subcommand("extract", kExtractDescription);
  verb->footer(kExtractDetails);
  addRecording(*verb, options->recording);
  CLI::Option_group* what = verb->add_option_group("What", "One of these");
  what->add_option("--tensor", options->tensor, "Data of the tensor NAME")
      ->type_name("NAME");
  what->add_option("--execution", options->execution,
                   "Inputs of each graph's execution N, from 0")
      ->type_name("N");
  what->add_flag("--all", options->isAll, "All data");
  what->require_option(1);
  verb->add_option("-o,--output", options->output,
                   "The new directory, or a file that ends with .npy")
      ->required()
      ->type_name("OUT");
  return {verb, [options] { return extract(*options); }};
}

}  // namespace kiv::tool
