#include "real_backend.h"

#include <utility>

#include "platform/library.h"
#include "platform/process.h"

namespace kiv::relay {
namespace {

constexpr const char* kVariable = "KIV_RELAY_BACKEND";
constexpr const char* kEntryPoint = "KivInterface_getProviders";

const KivInterface_t* findProvider(void* library, std::string& why) {
  const auto getProviders = reinterpret_cast<KivInterface_GetProvidersFn_t>(
      platform::findSymbol(library, kEntryPoint));
  if (getProviders == nullptr) {
    why = std::string("it exports no ") + kEntryPoint;
    return nullptr;
  }
  if (getProviders == KivInterface_getProviders) {
    why = "it is this library itself; name the backend that is to compute";
    return nullptr;
  }
  const KivInterface_t** found = nullptr;
  std::uint32_t count = 0;
  if (const Kiv_ErrorHandle_t status = getProviders(&found, &count)) {
    why = "it refuses to list its providers with " + std::to_string(status);
    return nullptr;
  }
  for (std::uint32_t i = 0; found != nullptr && i < count; ++i)
    if (found[i] != nullptr &&
        found[i]->apiVersion.coreApiVersion.majorVersion ==
            KIV_CORE_API_VERSION_MAJOR)
      return found[i];
  why = "none of its " + std::to_string(count) + " providers has version " +
        std::to_string(KIV_CORE_API_VERSION_MAJOR) + " of the API";
  return nullptr;
}

}  // namespace

std::optional<RealBackend> RealBackend::load(std::string& why) {
  const auto path = platform::environmentVariable(kVariable);
  if (!path) {
    why = "is not set; it names the backend that is to compute";
    return std::nullopt;
  }
  void* const library = platform::openLibrary(*path, why);
  if (library == nullptr) return std::nullopt;
  const KivInterface_t* const provider = findProvider(library, why);
  if (provider != nullptr) return RealBackend(*path, library, provider);
  platform::closeLibrary(library);
  why = *path + ": " + why;
  return std::nullopt;
}

void RealBackend::unload() const { platform::closeLibrary(library_); }

}  // namespace kiv::relay
