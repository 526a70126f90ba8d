#include "support/client.h"

#include <cstdio>

#include "Saver/KivSaver.h"
#include "support/provider.h"

namespace kiv::test {
namespace {

// A backend without the recorder's options has none to be set.
bool setOptions(const DynamicLibrary& library, const std::string& directory) {
  const auto initialize = reinterpret_cast<KivSaver_InitializeFn_t>(
      library.find("KivSaver_initialize"));
  if (initialize == nullptr) return true;
  KivSaver_Config_t output{};
  output.option = KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY;
  output.outputDirectory = directory.c_str();
  KivSaver_Config_t backend{};
  backend.option = KIV_SAVER_CONFIG_OPTION_BACKEND_ID;
  backend.backendId = KIV_BACKEND_ID_GPU;
  const KivSaver_Config_t* options[] = {&output, &backend, nullptr};
  return initialize(options) == KIV_SUCCESS;
}

}  // namespace

int runClient(int argc, char** argv, const ClientBody& body) {
  std::string backend;
  std::string directory;
  for (int i = 1; i + 1 < argc; ++i) {
    if (argv[i] == std::string("--backend")) backend = argv[i + 1];
    if (argv[i] == std::string("--output-dir")) directory = argv[i + 1];
  }
  try {
    const DynamicLibrary library(backend);
    if (!setOptions(library, directory)) return 1;
    return body(interfaceOf(library), argv[argc - 1]) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace kiv::test
