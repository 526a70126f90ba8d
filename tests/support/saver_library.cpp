#include "support/saver_library.h"

#include "support/provider.h"

namespace kiv::test {
namespace {

constexpr const char* kHeaderEnd =
    "     VALIDATE(error, interface.logCreate(NULL, logLevel, &loghandle));\n"
    "   }\n";
constexpr const char* kFooterStart =
    "   if (logging) {\n"
    "     VALIDATE(error, interface.logFree(loghandle));\n";

}  // namespace

SaverLibrary::SaverLibrary()
    : directory_(temp_.path() / "recording"), library_(KIV_SAVER_LIBRARY) {
  provider_ = &providerOf(library_);
  const std::string text = directory_.string();
  initialize({directoryOption(text.c_str())});
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
  library_.unload();
  return !DynamicLibrary::isLoaded(KIV_SAVER_LIBRARY);
}

}  // namespace kiv::test
