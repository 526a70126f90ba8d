// Runs the golden session on a library: session_client --backend LIBRARY
// [--output-dir DIRECTORY] NAME. Takes the same arguments as the ONNX client,
// so that the same script compares it.

#include <dlfcn.h>

#include <cstdio>
#include <string>
#include <vector>

#include "Saver/KivSaver.h"
#include "golden/golden_session.h"

namespace {

template <typename Function>
Function symbol(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

// A backend without the recorder's options has none to be set.
void setOptions(void* library, const std::string& directory) {
  const auto initialize =
      symbol<KivSaver_InitializeFn_t>(library, "KivSaver_initialize");
  if (initialize == nullptr) return;
  KivSaver_Config_t output{};
  output.option = KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY;
  output.outputDirectory = directory.c_str();
  KivSaver_Config_t backend{};
  backend.option = KIV_SAVER_CONFIG_OPTION_BACKEND_ID;
  backend.backendId = KIV_BACKEND_ID_GPU;
  std::vector<const KivSaver_Config_t*> options = {&output, &backend, nullptr};
  initialize(options.data());
}

}  // namespace

int main(int argc, char** argv) {
  std::string backend;
  std::string directory;
  for (int i = 1; i + 1 < argc; ++i) {
    if (argv[i] == std::string("--backend")) backend = argv[i + 1];
    if (argv[i] == std::string("--output-dir")) directory = argv[i + 1];
  }
  void* library = dlopen(backend.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  setOptions(library, directory);
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  symbol<KivInterface_GetProvidersFn_t>(library, "KivInterface_getProviders")(
      &providers, &count);
  kiv::test::runGoldenSession(providers[0]->KIV_INTERFACE_VER_NAME);
  return dlclose(library);
}
