// Makes a random session that is right in every call, which a seed decides:
//
//   property_client --backend LIBRARY [--output-dir DIRECTORY] SEED
//
// Ends with 1 and tells which calls a library refused, if any.

#include <dlfcn.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "Saver/KivSaver.h"
#include "hostile/random_client.h"

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

std::vector<std::uint8_t> bytesOf(unsigned long seed) {
  std::mt19937_64 random(seed);
  std::vector<std::uint8_t> bytes(500 + random() % 8000);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
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
  const std::vector<std::uint8_t> bytes = bytesOf(std::stoul(argv[argc - 1]));
  kiv::test::Source source(bytes);
  kiv::test::RandomClient client(providers[0]->KIV_INTERFACE_VER_NAME, source,
                                 kiv::test::RandomClient::Manner::kFair);
  client.run();
  for (const std::string& failure : client.failures())
    std::fprintf(stderr, "refused: %s\n", failure.c_str());
  return dlclose(library) != 0 || !client.failures().empty() ? 1 : 0;
}
