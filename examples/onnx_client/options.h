#pragma once

// The command line of onnx_client.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "execution.h"
#include "results.h"
#include "shapes.h"

namespace onnx_client {

// Options for a library that records what it is asked to do.
struct RecordingOptions {
  std::optional<std::string> outputDirectory;
  std::optional<std::uint32_t> backendId;
  std::optional<std::string> modelFile;
  std::optional<std::string> dataFile;
  bool timestamp = false;
  bool noHeader = false;
  bool noFooter = false;
};

struct Options {
  std::string network;
  std::string backend;
  std::uint32_t executions = 1;
  InputOptions inputs;
  GivenShapes shapes;
  ResultOptions results;
  std::uint64_t seed = 0;
  std::optional<std::uint32_t> profileLevel;
  std::optional<std::uint32_t> priority;
  bool device = false;
  std::string saveBinary;
  std::string fromBinary;
  RecordingOptions recording;
};

// Null after --help, whose text is then printed. A ClientError for arguments
// that are not valid.
std::optional<Options> parseOptions(int argc, char** argv);

}  // namespace onnx_client
