#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "kiv_recording/recordings.h"

// The command line of the verb export, for the command and for the program that
// does it: one that needs ONNX, which the command does not. From the main
// thread.
namespace kiv::tool {

// The program beside the command.
inline constexpr const char* kExportProgram = "kiv-recording-export";

struct ExportOptions {
  RecordingOptions recording;
  std::string output;
  std::string graph;
  bool hasTestData = false;
  bool isLinked = false;
};

inline void addExportOptions(CLI::App& app, ExportOptions& options) {
  addRecording(app, options.recording);
  app.add_option("-o,--output", options.output,
                 "The directory of model.onnx and the data file")
      ->required()
      ->type_name("OUT");
  app.add_option("--graph", options.graph,
                 "The graph, where the recording has several")
      ->type_name("NAME");
  app.add_flag("--test-data", options.hasTestData,
               "Write the inputs of the first execution, too");
  app.add_flag("--link", options.isLinked,
               "Make the data file a hard link of the recording's instead of "
               "a copy");
}

}  // namespace kiv::tool
