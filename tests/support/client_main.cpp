#include "support/client_main.h"

#include <cstdio>

#include "support/options.h"
#include "support/provider.h"

namespace kiv::test {
namespace {

// A backend without the recorder's options has none to be set.
bool setOptionsIfAny(const DynamicLibrary& library,
                     const std::string& directory) {
  if (library.find("KivSaver_initialize") == nullptr) return true;
  return setOptions(library, {directoryOption(directory.c_str()),
                              backendOption(KIV_BACKEND_ID_GPU)}) ==
         KIV_SUCCESS;
}

}  // namespace

int clientMain(int argc, char** argv, const ClientBody& body) {
  std::string backend;
  std::string directory;
  for (int i = 1; i + 1 < argc; ++i) {
    if (argv[i] == std::string("--backend")) backend = argv[i + 1];
    if (argv[i] == std::string("--output-dir")) directory = argv[i + 1];
  }
  try {
    const DynamicLibrary library(backend);
    if (!setOptionsIfAny(library, directory)) return 1;
    return body(interfaceOf(library), argv[argc - 1]) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace kiv::test
