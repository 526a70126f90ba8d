#include "options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <map>

#include "errors.h"

namespace onnx_client {
namespace {

// One value each time; the option may be given several times.
template <typename List>
CLI::Option* addList(CLI::App& app, const char* name, List& list,
                     const char* description) {
  return app.add_option(name, list, description)
      ->type_size(1)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addRunOptions(CLI::App& app, Options& options,
                   std::vector<std::string>& shapes) {
  app.add_option("network", options.network, "The network, an ONNX file")
      ->required();
  app.add_option("--backend", options.backend, "The Kiv library")
      ->required()
      ->type_name("LIB");
  app.add_option("--executions", options.executions, "Number of executions")
      ->capture_default_str();
  addList(app, "--input", options.inputs.files,
          "Data of an input, or of the next one: .pb, .npy, a picture (.png, "
          ".jpg), or else raw bytes; inputs without a file get random values")
      ->type_name("[NAME=]FILE");
  addList(app, "--shape", shapes,
          "Sizes of an input that the network leaves open, which are 1 "
          "otherwise")
      ->type_name("NAME=1x3x48x192");
  app.add_option("--seed", options.seed, "Seed of the random values")
      ->capture_default_str();
}

void addImageOptions(CLI::App& app, ImageOptions& options) {
  const char* group = "Options for pictures";
  app.add_option("--mean", options.mean,
                 "Subtracted from pixels in 0 to 1, one or one a channel")
      ->delimiter(',')
      ->group(group);
  app.add_option("--std", options.std, "What the difference is divided by")
      ->delimiter(',')
      ->group(group);
  const std::map<std::string, Layout> layouts = {{"nchw", Layout::kNchw},
                                                 {"nhwc", Layout::kNhwc}};
  app.add_option("--layout", options.layout,
                 "Order of the input's sizes: nchw or nhwc")
      ->transform(CLI::CheckedTransformer(layouts).description(""))
      ->type_name("LAYOUT")
      ->group(group);
}

void addResultOptions(CLI::App& app, ResultOptions& options) {
  const char* group = "Options for outputs";
  app.add_option("--save-outputs", options.saveDirectory,
                 "Save each execution's outputs there, as .npy")
      ->type_name("DIR")
      ->group(group);
  app.add_option("--compare", options.compareDirectory,
                 "Compare the outputs with those that were saved there")
      ->type_name("DIR")
      ->group(group);
  app.add_option("--rtol", options.tolerance.rtol,
                 "Tolerance relative to the saved value")
      ->capture_default_str()
      ->group(group);
  app.add_option("--atol", options.tolerance.atol, "Absolute tolerance")
      ->capture_default_str()
      ->group(group);
}

void addApiOptions(CLI::App& app, Options& options) {
  app.add_option("--profile", options.profileLevel,
                 "Profile with this level and list the events");
  app.add_option("--priority", options.priority,
                 "Priority of the context and the graph")
      ->check(CLI::Range(0, std::numeric_limits<std::int32_t>::max() - 1));
  app.add_flag("--device", options.device, "Open a device for the context");
  app.add_option("--save-binary", options.saveBinary,
                 "Save the finalized context to this file")
      ->type_name("FILE");
  app.add_option("--from-binary", options.fromBinary,
                 "Load the context from this file instead of building it")
      ->type_name("FILE");
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
  std::vector<std::string> shapes;
  addRunOptions(app, options, shapes);
  addImageOptions(app, options.inputs.images);
  addResultOptions(app, options.results);
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
  for (const std::string& shape : shapes) parseShape(shape, options.shapes);
  return options;
}

}  // namespace onnx_client
