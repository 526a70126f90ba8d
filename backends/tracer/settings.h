#pragma once

#include <string>

namespace kiv::tracer {

// The settings that environment variables make; read once, at the first call,
// and constant from then on.
struct Settings {
  // KIV_TRACER_OUTPUT: the file to print to; empty for standard error.
  std::string outputPath;
  // KIV_TRACER_LOG=1: the calls that set up logging are part of the trace.
  bool showsLogCalls = false;
  // KIV_TRACER_CUSTOM=gpu: custom configs of contexts and graphs are the GPU
  // backend's records and are printed to their leaves.
  bool showsGpuRecords = false;

  static Settings fromEnvironment();
};

}  // namespace kiv::tracer
