#include "recording_options.h"

#include "api_call.h"

namespace onnx_client {
namespace {

constexpr const char* kDefaultModelFile = "saver_output.c";
constexpr const char* kDefaultDataFile = "params.bin";

// The options for header and footer need the files' names beside them.
bool namesFiles(const RecordingOptions& options) {
  return options.modelFile || options.dataFile || options.noHeader ||
         options.noFooter;
}

KivSaver_Config_t fileConfig(const RecordingOptions& options) {
  KivSaver_Config_t config{};
  config.option = KIV_SAVER_CONFIG_OPTION_FILE_CONFIG;
  config.fileConfig.modelFileName =
      options.modelFile ? options.modelFile->c_str() : kDefaultModelFile;
  config.fileConfig.dataFileName =
      options.dataFile ? options.dataFile->c_str() : kDefaultDataFile;
  return config;
}

std::vector<KivSaver_Config_t> saverConfigs(const RecordingOptions& options) {
  std::vector<KivSaver_Config_t> configs;
  const auto add = [&](KivSaver_ConfigOption_t option) -> KivSaver_Config_t& {
    configs.push_back({});
    configs.back().option = option;
    return configs.back();
  };
  if (options.outputDirectory) {
    add(KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY).outputDirectory =
        options.outputDirectory->c_str();
  }
  if (options.timestamp)
    add(KIV_SAVER_CONFIG_OPTION_APPEND_TIMESTAMP).appendTimestamp = 1;
  if (options.backendId)
    add(KIV_SAVER_CONFIG_OPTION_BACKEND_ID).backendId = *options.backendId;
  if (namesFiles(options)) configs.push_back(fileConfig(options));
  if (options.noHeader)
    add(KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER).writeHeader = 0;
  if (options.noFooter)
    add(KIV_SAVER_CONFIG_WRITE_OUTPUT_FOOTER).writeFooter = 0;
  return configs;
}

}  // namespace

void applyRecordingOptions(const Library& library,
                           const RecordingOptions& options,
                           std::vector<std::string>& notes) {
  const std::vector<KivSaver_Config_t> configs = saverConfigs(options);
  if (configs.empty()) return;
  const KivSaver_InitializeFn_t initialize = library.saverInitialize();
  if (initialize == nullptr) {
    notes.emplace_back(
        "the library does not record, recording options are without effect");
    return;
  }
  std::vector<const KivSaver_Config_t*> list;
  list.reserve(configs.size() + 1);
  for (const KivSaver_Config_t& config : configs) list.push_back(&config);
  list.push_back(nullptr);
  call("KivSaver_initialize", initialize, list.data());
}

}  // namespace onnx_client
