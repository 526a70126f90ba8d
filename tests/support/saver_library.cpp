#include "support/saver_library.h"

#include <dlfcn.h>

#include <stdexcept>
#include <vector>

namespace kiv::test {
namespace {

constexpr const char* kHeaderEnd =
    "     VALIDATE(error, interface.logCreate(NULL, logLevel, &loghandle));\n"
    "   }\n";
constexpr const char* kFooterStart =
    "   if (logging) {\n"
    "     VALIDATE(error, interface.logFree(loghandle));\n";

template <typename Function>
Function symbol(void* library, const char* name) {
  void* address = dlsym(library, name);
  if (address == nullptr) throw std::runtime_error(name);
  return reinterpret_cast<Function>(address);
}

}  // namespace

SaverLibrary::SaverLibrary()
    : directory_(temp_.path() / "recording"),
      library_(dlopen(KIV_SAVER_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  symbol<KivInterface_GetProvidersFn_t>(library_, "KivInterface_getProviders")(
      &providers, &count);
  provider_ = providers[0];
  initialize_ =
      symbol<KivSaver_InitializeFn_t>(library_, "KivSaver_initialize");
  const std::string text = directory_.string();
  KivSaver_Config_t option{};
  option.option = KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY;
  option.outputDirectory = text.c_str();
  initialize({&option});
}

SaverLibrary::~SaverLibrary() {
  if (library_ != nullptr) unload();
}

Kiv_ErrorHandle_t SaverLibrary::initialize(
    std::initializer_list<const KivSaver_Config_t*> options) const {
  std::vector<const KivSaver_Config_t*> list(options);
  list.push_back(nullptr);
  return initialize_(list.data());
}

std::filesystem::path SaverLibrary::modelPath() const {
  return directory_ / "saver_output.c";
}

std::filesystem::path SaverLibrary::dataPath() const {
  return directory_ / "params.bin";
}

std::string SaverLibrary::calls() const {
  std::string text = modelText();
  const std::size_t end = text.find(kHeaderEnd);
  if (end == std::string::npos) return {};
  text.erase(0, end + std::string(kHeaderEnd).size());
  return text.substr(0, text.rfind(kFooterStart));
}

bool SaverLibrary::unload() {
  dlclose(library_);
  library_ = nullptr;
  void* stillThere = dlopen(KIV_SAVER_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (stillThere != nullptr) dlclose(stillThere);
  return stillThere == nullptr;
}

}  // namespace kiv::test
