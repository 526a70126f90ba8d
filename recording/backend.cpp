#include "recording/backend.h"

#include <set>

#include "recording/invoke.h"
#include "recording/statuses.h"

namespace kiv::recording {

std::optional<Backend> Backend::load(const std::filesystem::path& path,
                                     std::string& why) {
  auto library = Library::load(path, why);
  if (!library) return std::nullopt;
  const auto getProviders = reinterpret_cast<KivInterface_GetProvidersFn_t>(
      library->find("KivInterface_getProviders"));
  if (getProviders == nullptr) {
    why = "the library has no KivInterface_getProviders of its own";
    return std::nullopt;
  }
  const KivInterface_t** providers = nullptr;
  std::uint32_t count = 0;
  const Kiv_ErrorHandle_t status = getProviders(&providers, &count);
  if (status != KIV_SUCCESS) {
    why = "the library refuses to list its providers with " +
          describeStatus(status);
    return std::nullopt;
  }
  if (count == 0 || providers == nullptr || providers[0] == nullptr) {
    why = "the library lists no providers";
    return std::nullopt;
  }
  return Backend(*std::move(library), path, providers[0]);
}

std::vector<std::string_view> Backend::missingFunctions(
    const Recording& recording) const {
  std::set<const format::Function*> called;
  for (const Call& call : recording.calls()) called.insert(call.function);
  std::vector<std::string_view> missing;
  for (const format::Function* function : format::recordedFunctions())
    if (called.contains(function) && !hasFunction(table(), *function))
      missing.push_back(function->name);
  return missing;
}

}  // namespace kiv::recording
