// The verb export of kiv-recording, a program of its own so that the command
// needs no library of ONNX.

#include <fmt/format.h>
#include <google/protobuf/stubs/logging.h>

#include <exception>
#include <fstream>
#include <system_error>

#include "kiv_recording/export_options.h"
#include "kiv_recording/network_export.h"
#include "kiv_recording/system.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;

int fail(const fs::path& path, const std::string& why) {
  fmt::print(stderr, "{}: {}\n", textOf(path), why);
  return kDiffers;
}

bool write(const fs::path& path, const google::protobuf::Message& message) {
  std::ofstream file(path, std::ios::binary);
  const bool isGood = message.SerializeToOstream(&file);
  file.close();
  return isGood && file;
}

int placeData(const ExportOptions& options, const fs::path& from,
              const fs::path& to) {
  std::error_code error;
  if (options.isLinked)
    fs::create_hard_link(from, to, error);
  else
    fs::copy_file(from, to, error);
  return error ? fail(to, error.message()) : kDone;
}

int writeInputs(const NetworkExport& network, const fs::path& directory) {
  const int wanted = network.model().graph().input_size();
  if (static_cast<int>(network.inputs().size()) != wanted) {
    fmt::print(stderr,
               "there is no test data: the recording holds {} of the {} inputs "
               "of a first execution\n",
               network.inputs().size(), wanted);
    return kDiffers;
  }
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) return fail(directory, error.message());
  int number = 0;
  for (const onnx::TensorProto& input : network.inputs()) {
    const fs::path path = directory / fmt::format("input_{}.pb", number++);
    if (!write(path, input)) return fail(path, "cannot be written");
  }
  return kDone;
}

int writeNetwork(const ExportOptions& options, const NetworkExport& network,
                 const fs::path& dataPath) {
  const fs::path directory = pathOf(options.output);
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) return fail(directory, error.message());
  const fs::path path = directory / "model.onnx";
  if (fs::exists(path))
    return fail(path, "is there already; name another directory");
  if (network.usesDataFile())
    if (const int status =
            placeData(options, dataPath, directory / dataPath.filename());
        status != kDone)
      return status;
  if (!write(path, network.model())) return fail(path, "cannot be written");
  if (!options.hasTestData) return kDone;
  return writeInputs(network, directory / "test_data_set_0");
}

int exportNetwork(const ExportOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const auto data = DataFile::open(*recording);
  const auto dataPath = recording->dataPath();
  if (!data || !dataPath) return kUnreadable;
  NetworkExport network(textOf(dataPath->filename()));
  if (!network.read(*recording, data->bytes(), options.graph)) {
    fmt::print(stderr, "{}\n", network.problem());
    return kDiffers;
  }
  for (const std::string& note : network.notes())
    fmt::print(stderr, "{}\n", note);
  const int status = writeNetwork(options, network, *dataPath);
  if (status == kDone)
    fmt::print("{} nodes, {} initializers\n",
               network.model().graph().node_size(),
               network.model().graph().initializer_size());
  return status;
}

int run(const std::vector<std::string>& arguments) {
  CLI::App app("Does kiv-recording export, whose help says more",
               kExportProgram);
  ExportOptions options;
  addExportOptions(app, options);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUnreadable;
  }
  return exportNetwork(options);
}

}  // namespace
}  // namespace kiv::tool

int main(int argc, char** argv) {
  try {
    google::protobuf::SetLogHandler(nullptr);
    return kiv::tool::run(kiv::tool::utf8Arguments(argc, argv));
  } catch (const std::exception& error) {
    fmt::print(stderr, "kiv-recording: {}\n", error.what());
    return kiv::tool::kDiffers;
  }
}
