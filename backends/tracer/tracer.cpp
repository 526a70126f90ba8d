#include "tracer.h"

namespace kiv::tracer {
namespace {

KivDevice_CoreInfo_t coreOf(std::uint32_t id) {
  KivDevice_CoreInfo_t core = {};
  core.version = KIV_DEVICE_CORE_INFO_VERSION_1;
  core.v1.coreId = id;
  return core;
}

}  // namespace

Platform::Platform() : cores_{coreOf(0), coreOf(1)}, device_(), info_() {
  device_.version = KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1;
  device_.v1.numCores = 2;
  device_.v1.cores = cores_;
  info_.version = KIV_DEVICE_PLATFORM_INFO_VERSION_1;
  info_.v1.numHwDevices = 1;
  info_.v1.hwDevices = &device_;
}

Tracer& Tracer::instance() {
  static Tracer tracer;
  return tracer;
}

}  // namespace kiv::tracer
