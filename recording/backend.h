#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "format/calls.h"
#include "recording/platform/library.h"
#include "recording/problem.h"
#include "recording/recording.h"

namespace kiv::recording {

// A backend's library with its first provider.
//
//   std::string why;
//   auto backend = Backend::load("/opt/npu/libNpu.so", why);
//   if (!backend) return why;
//
// One thread at a time.
class Backend {
 public:
  // Nothing, with the reason in `why`, when the library cannot be loaded, has
  // no KivInterface_getProviders of its own, refuses to list its providers, or
  // lists none.
  static std::optional<Backend> load(const std::filesystem::path& path,
                                     std::string& why);

  const std::filesystem::path& path() const { return path_; }
  const KivInterface_t& provider() const { return *provider_; }
  const KivInterface_Implementation_t& table() const {
    return provider_->KIV_INTERFACE_VER_NAME;
  }

  // The functions that the recording calls and the backend does not have, each
  // once, in the order of the table.
  std::vector<std::string_view> missingFunctions(
      const Recording& recording) const;

 private:
  Backend(Library library, std::filesystem::path path,
          const KivInterface_t* provider)
      : library_(std::move(library)),
        path_(std::move(path)),
        provider_(provider) {}

  Library library_;
  std::filesystem::path path_;
  const KivInterface_t* provider_ = nullptr;
};

}  // namespace kiv::recording
