#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "support/dynamic_library.h"
#include "support/files.h"
#include "support/options.h"

namespace kiv::test {

// The library from loading to unloading, as a client has it, recording into a
// directory of the test's own. Each object gets the library anew: nothing is
// left of an earlier session.
//
//   SaverLibrary saver;
//   saver.api().backendFree(backend);
//   EXPECT_EQ(saver.calls(), "   VALIDATE(...);\n\n");
class SaverLibrary {
 public:
  SaverLibrary();
  SaverLibrary(const SaverLibrary&) = delete;
  SaverLibrary& operator=(const SaverLibrary&) = delete;

  const DynamicLibrary& library() const { return library_; }
  const KivInterface_t& provider() const { return *provider_; }
  const KivInterface_Implementation_t& api() const {
    return provider_->KIV_INTERFACE_VER_NAME;
  }
  Kiv_ErrorHandle_t initialize(const std::vector<Option>& options) const {
    return setOptions(library_, options);
  }

  // Where the recording goes; does not exist before the first call.
  const std::filesystem::path& directory() const { return directory_; }
  std::filesystem::path modelPath() const;
  std::filesystem::path dataPath() const;

  std::string modelText() const { return readFile(modelPath()); }
  std::string data() const { return readFile(dataPath()); }
  // What stands between the header and the footer, if there is one.
  std::string calls() const;

  // Unloads the library; false when it stays in memory.
  bool unload();

 private:
  TempDirectory temp_;
  std::filesystem::path directory_;
  DynamicLibrary library_;
  const KivInterface_t* provider_ = nullptr;
};

}  // namespace kiv::test
