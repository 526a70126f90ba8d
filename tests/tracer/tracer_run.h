#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "KivInterface.h"

namespace kiv::tracer::test {

// The library from loading to unloading, as a client has it. The trace goes to
// a file of the run's own, unless the one variable that a run may set for
// itself says otherwise.
//
//   TracerRun run;
//   run.api().backendFree(nullptr);
//   EXPECT_EQ(run.lastLine(), "backendFree(null)");
class TracerRun {
 public:
  TracerRun() : TracerRun("", "") {}
  TracerRun(const std::string& variable, const std::string& value);
  ~TracerRun();
  TracerRun(const TracerRun&) = delete;
  TracerRun& operator=(const TracerRun&) = delete;

  const KivInterface_t& provider() const { return *provider_; }
  const KivInterface_Implementation_t& api() const {
    return provider_->KIV_INTERFACE_VER_NAME;
  }

  std::string text() const;
  std::vector<std::string> lines() const;
  std::string lastLine() const;

  void unload();

 private:
  std::filesystem::path output_;
  std::string variable_;
  void* library_;
  const KivInterface_t* provider_ = nullptr;
};

std::string contentOf(const std::filesystem::path& path);
std::filesystem::path freshPath();
bool isLoaded();

}  // namespace kiv::tracer::test
