#pragma once

#include <atomic>
#include <cstdint>

#include "KivDevice.h"
#include "graph_names.h"
#include "handle_table.h"
#include "settings.h"
#include "trace_output.h"

namespace kiv::tracer {

// The platform that the library claims to run on: one device of two cores.
// Holds pointers to itself.
class Platform {
 public:
  Platform();
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  const KivDevice_PlatformInfo_t* info() const { return &info_; }

 private:
  KivDevice_CoreInfo_t cores_[2];
  KivDevice_HardwareDeviceInfo_t device_;
  KivDevice_PlatformInfo_t info_;
};

// All state of the library. There is one Tracer from the first call until the
// library is unloaded, which closes the output. Its parts may be used from any
// thread.
struct Tracer {
  static Tracer& instance();

  std::uint32_t takeTensorId() { return nextTensorId.fetch_add(1); }

  const Settings settings = Settings::fromEnvironment();
  TraceOutput output{settings.outputPath};
  HandleTable handles;
  GraphNames graphs;
  const Platform platform;
  std::atomic<std::uint32_t> nextTensorId = 1;
};

}  // namespace kiv::tracer
