#include "library_loader.h"

#include <dlfcn.h>

#include "api_call.h"
#include "errors.h"

namespace onnx_client {
namespace {

// A name without a slash is a file in the current directory.
void* load(const std::string& path) {
  const bool bare = path.find('/') == std::string::npos;
  void* handle =
      dlopen((bare ? "./" + path : path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr)
    throw ClientError(std::string("cannot load the library: ") + dlerror());
  return handle;
}

const Api& chooseProvider(KivInterface_GetProvidersFn_t getProviders,
                          const std::string& path) {
  const KivInterface_t** providers = nullptr;
  std::uint32_t count = 0;
  call("KivInterface_getProviders", getProviders, &providers, &count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Kiv_Version_t& version = providers[i]->apiVersion.coreApiVersion;
    if (version.majorVersion == KIV_CORE_API_VERSION_MAJOR)
      return providers[i]->KIV_INTERFACE_VER_NAME;
  }
  throw ClientError(path + " has no provider for this version of the API");
}

}  // namespace

Library::Library(const std::string& path) : handle_(load(path)) {
  const char* name = "KivInterface_getProviders";
  const auto getProviders = symbol<KivInterface_GetProvidersFn_t>(name);
  if (getProviders == nullptr)
    throw ClientError(path + " is no Kiv library, it has no " + name);
  api_ = &chooseProvider(getProviders, path);
}

KivSaver_InitializeFn_t Library::saverInitialize() const {
  return symbol<KivSaver_InitializeFn_t>("KivSaver_initialize");
}

template <typename Function>
Function Library::symbol(const char* name) const {
  return reinterpret_cast<Function>(dlsym(handle_.get(), name));
}

void Library::Unload::operator()(void* handle) const { dlclose(handle); }

}  // namespace onnx_client
