#include "options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>

#include "errors.h"

namespace onnx_client {
namespace {

void addRunOptions(CLI::App& app, Options& options) {
  app.add_option("network", options.network, "The network, an ONNX file")
      ->required();
  app.add_option("--backend", options.backend, "The Kiv library")
      ->required()
      ->type_name("LIB");
  app.add_option("--executions", options.executions, "Number of executions")
      ->capture_default_str();
  app.add_option("--input", options.inputs,
                 "Data of the next input: a .pb file, or else raw bytes; "
                 "inputs without a file get random values")
      ->type_name("FILE")
      ->type_size(1)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_option("--seed", options.seed, "Seed of the random values")
      ->capture_default_str();
}

void addApiOptions(CLI::App& app, Options& options) {
  app.add_option("--profile", options.profileLevel,
                 "Profile with this level and list the events");
  app.add_option("--priority", options.priority,
                 "Priority of the context and the graph")
      ->check(CLI::Range(0, std::numeric_limits<std::int32_t>::max() - 1));
  app.add_flag("--device", options.device, "Open a device for the context");
  app.add_option("--save-binary", options.saveBinary,
                 "Save the finalized context to this file");
  app.add_option("--from-binary", options.fromBinary,
                 "Load the context from this file instead of building it");
}

void addRecordingOptions(CLI::App& app, RecordingOptions& options) {
  const char* group = "Options for a recording library";
  app.add_option("--output-dir", options.outputDirectory,
                 "Directory of the recording")
      ->group(group);
  app.add_option("--backend-id", options.backendId,
                 "The backend that the recording is for")
      ->group(group);
  app.add_option("--model-file", options.modelFile, "Name of the model file")
      ->group(group);
  app.add_option("--data-file", options.dataFile, "Name of the data file")
      ->group(group);
  app.add_flag("--timestamp", options.timestamp, "Put the time into the names")
      ->group(group);
  app.add_flag("--no-header", options.noHeader, "Leave the model's header out")
      ->group(group);
  app.add_flag("--no-footer", options.noFooter, "Leave the model's footer out")
      ->group(group);
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv) {
  CLI::App app("Drives a Kiv library with an ONNX network.", "onnx_client");
  Options options;
  addRunOptions(app, options);
  addApiOptions(app, options);
  addRecordingOptions(app, options.recording);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw ClientError(error.what());
  }
  return options;
}

}  // namespace onnx_client
