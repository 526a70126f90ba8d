#include "support/options.h"

namespace kiv::test {
namespace {

Option make(int option) {
  Option result{};
  result.option = static_cast<KivSaver_ConfigOption_t>(option);
  return result;
}

}  // namespace

Option directoryOption(const char* path) {
  Option result = make(KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY);
  result.outputDirectory = path;
  return result;
}

Option filesOption(const char* model, const char* data) {
  Option result = make(KIV_SAVER_CONFIG_OPTION_FILE_CONFIG);
  result.fileConfig = {model, data};
  return result;
}

// All flags begin where the number does.
Option numberOption(int option, uint32_t value) {
  Option result = make(option);
  result.backendId = value;
  return result;
}

Kiv_ErrorHandle_t setOptions(const DynamicLibrary& library,
                             const std::vector<Option>& options) {
  std::vector<const Option*> list;
  for (const Option& option : options) list.push_back(&option);
  list.push_back(nullptr);
  return library.function<KivSaver_InitializeFn_t>("KivSaver_initialize")(
      list.data());
}

}  // namespace kiv::test
