#include "settings.h"

#include <cstdlib>

namespace kiv::tracer {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

Settings Settings::fromEnvironment() {
  return {.outputPath = variable("KIV_TRACER_OUTPUT"),
          .showsLogCalls = variable("KIV_TRACER_LOG") == "1",
          .showsGpuRecords = variable("KIV_TRACER_CUSTOM") == "gpu"};
}

}  // namespace kiv::tracer
