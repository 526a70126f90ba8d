#include "library.h"

#include <dlfcn.h>

namespace reading_client {
namespace {

const Api* findApi(void* library) {
  const auto getProviders = reinterpret_cast<KivInterface_GetProvidersFn_t>(
      dlsym(library, "KivInterface_getProviders"));
  if (getProviders == nullptr)
    throw Failure("the library has no KivInterface_getProviders");
  const KivInterface_t** providers = nullptr;
  std::uint32_t count = 0;
  check("KivInterface_getProviders", getProviders(&providers, &count));
  if (count == 0) throw Failure("the library has no provider");
  return &providers[0]->KIV_INTERFACE_VER_NAME;
}

}  // namespace

void check(const char* call, Kiv_ErrorHandle_t status) {
  if (status != KIV_SUCCESS)
    throw Failure(std::string(call) + " failed with " + std::to_string(status));
}

Library::Library(const std::string& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw Failure(dlerror());
  api_ = findApi(handle_);
}

Library::~Library() { dlclose(handle_); }

Session::Session(const Api& api) : api_(api) {
  KivBackend_Config_t config{};
  config.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
  config.platformOption = "onnx.opset:13";
  const KivBackend_Config_t* configs[] = {&config, nullptr};
  check("backendCreate", api_.backendCreate(nullptr, configs, &backend_));
  check("contextCreate",
        api_.contextCreate(backend_, nullptr, nullptr, &context_));
}

Session::~Session() {
  api_.contextFree(context_, nullptr);
  api_.backendFree(backend_);
}

}  // namespace reading_client
