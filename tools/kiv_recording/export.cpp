#include <fmt/format.h>

#include <memory>

#include "kiv_recording/export_options.h"
#include "kiv_recording/system.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

constexpr const char* kExportDescription = "Write the network as an ONNX model";

constexpr const char* kExportDetails =
    R"(Writes the network of a recording of ONNX operators, as examples/onnx_client
makes, as OUT/model.onnx. Weights of more than 1024 bytes stay in a copy of the
data file beside it (ONNX's external data), so OUT is to be kept together. With
--link the copy is a hard link: it costs no space, but a recorder that writes
the recording's data file again changes it, too.

The versions of the operators come from the platform options onnx.opset:VERSION
and onnx.opset.DOMAIN:VERSION of the recorded backend; without, the newest that
the library of ONNX knows are taken, with a warning. Quantized numbers become
integers; their scales are not written.

Example: look at the network of a recording, and run it elsewhere
  kiv-recording export saver_output -o network --test-data
  onnx_client network/model.onnx --backend ./libBackend.so

--test-data writes OUT/test_data_set_0/input_N.pb, N in the order of the model's
inputs.)";

int exportNetwork(const ExportOptions& options) {
  std::vector<std::string> arguments = {options.recording.path, "-o",
                                        options.output};
  if (!options.recording.modelFile.empty())
    arguments.insert(arguments.end(),
                     {"--model-file", options.recording.modelFile});
  if (!options.graph.empty())
    arguments.insert(arguments.end(), {"--graph", options.graph});
  if (options.hasTestData) arguments.emplace_back("--test-data");
  if (options.isLinked) arguments.emplace_back("--link");
  becomeProgramBeside(kExportProgram, arguments);
  fmt::print(stderr,
             "there is no program {} beside kiv-recording: export needs a "
             "build on Linux with ONNX and protobuf (Debian's libonnx-dev and "
             "libprotobuf-dev)\n",
             kExportProgram);
  return kUnreadable;
}

}  // namespace

Verb addExport(CLI::App& program) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App* verb = program.add_subcommand("export", kExportDescription);
  verb->footer(kExportDetails);
  addExportOptions(*verb, *options);
  return {verb, [options] { return exportNetwork(*options); }};
}

}  // namespace kiv::tool
