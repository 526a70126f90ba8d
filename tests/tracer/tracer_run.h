#pragma once

#include <string>

#include "KivInterface.h"
#include "support/dynamic_library.h"
#include "support/files.h"

namespace kiv::test {

// Tracer from loading to unloading, as a client has it. The trace goes to a
// file of the run's own, unless the one variable that a run may set for itself
// says otherwise.
//
//   TracerRun run;
//   run.api().backendFree(nullptr);
//   EXPECT_EQ(run.lastLine(), "backendFree(null)");
class TracerRun {
 public:
  explicit TracerRun(const std::string& variable = "",
                     const std::string& value = "");
  ~TracerRun();
  TracerRun(const TracerRun&) = delete;
  TracerRun& operator=(const TracerRun&) = delete;

  const KivInterface_Implementation_t& api() const { return *api_; }

  std::string text() const { return readFile(output_); }
  // Without its end.
  std::string lastLine() const;

  // Unloads the library; false when it stays in memory.
  bool unload();

 private:
  TempDirectory temp_;
  std::filesystem::path output_;
  std::string variable_;
  DynamicLibrary library_;
  const KivInterface_Implementation_t* api_;
};

}  // namespace kiv::test
