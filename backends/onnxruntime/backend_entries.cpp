#include <vector>

#include "entries.h"
#include "entry.h"
#include "objects.h"
#include "operators.h"

namespace kiv::ort {
namespace {

constexpr auto kInvalidBackend = KIV_BACKEND_ERROR_INVALID_HANDLE;

void readOption(const char* option, onnx_model::Opsets& opsets) {
  if (opsets.readOption(option) != onnx_model::Opsets::Option::kMalformed)
    return;
  refuse(KIV_BACKEND_ERROR_INVALID_ARGUMENT,
         "the platform option \"" + std::string(option) +
             "\" names no operator set, it is onnx.opset[.DOMAIN]:NUMBER");
}

// The options that a list adds to a backend's; error reporting and platform
// options of other libraries are taken and have no effect.
void readConfigs(const KivBackend_Config_t** list, onnx_model::Opsets& opsets) {
  forEachConfig(list, [&](const KivBackend_Config_t& config) {
    switch (config.option) {
      case KIV_BACKEND_CONFIG_OPTION_PLATFORM:
        if (config.platformOption != nullptr)
          readOption(config.platformOption, opsets);
        return;
      case KIV_BACKEND_CONFIG_OPTION_CUSTOM:
      case KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING:
        return;
      default:
        refuse(
            KIV_BACKEND_ERROR_INVALID_ARGUMENT,
            "a config has the unknown option " + std::to_string(config.option));
    }
  });
}

Kiv_ErrorHandle_t backendCreate(Kiv_LogHandle_t,
                                const KivBackend_Config_t** config,
                                Kiv_BackendHandle_t* handle) noexcept {
  return enter("backendCreate", KIV_BACKEND_ERROR_GENERAL, [&] {
    if (handle == nullptr)
      refuse(KIV_BACKEND_ERROR_INVALID_ARGUMENT, "the out-pointer is null");
    auto backend = std::make_shared<Backend>();
    readConfigs(config, backend->opsets);
    backend->library = OrtLibrary::get();
    backend->opsets.setNewest(backend->library->newestOpset());
    *handle = Handles<Backend>::instance().add(std::move(backend));
  });
}

Kiv_ErrorHandle_t backendSetConfig(
    Kiv_BackendHandle_t handle, const KivBackend_Config_t** config) noexcept {
  return enter("backendSetConfig", KIV_BACKEND_ERROR_GENERAL, [&] {
    const auto backend = require<Backend>(handle, kInvalidBackend);
    const std::scoped_lock lock(backend->mutex);
    readConfigs(config, backend->opsets);
  });
}

Kiv_ErrorHandle_t backendGetApiVersion(Kiv_ApiVersion_t* version) noexcept {
  if (version == nullptr) return KIV_BACKEND_ERROR_INVALID_ARGUMENT;
  *version = kApiVersion;
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t backendGetBuildId(const char** id) noexcept {
  if (id == nullptr) return KIV_BACKEND_ERROR_INVALID_ARGUMENT;
  *id = "KivOnnxRuntime " KIV_VERSION;
  return KIV_SUCCESS;
}

const std::vector<KivBackend_OperationName_t>& operations() {
  static const std::vector<OperatorName> kNames = knownOperators();
  static const std::vector<KivBackend_OperationName_t> kOperations = [] {
    std::vector<KivBackend_OperationName_t> records;
    records.reserve(kNames.size());
    for (const OperatorName& name : kNames)
      records.push_back({name.package.c_str(), name.type.c_str(), "CPU"});
    return records;
  }();
  return kOperations;
}

Kiv_ErrorHandle_t backendGetSupportedOperations(
    Kiv_BackendHandle_t handle, uint32_t* count,
    const KivBackend_OperationName_t** records) noexcept {
  return enter("backendGetSupportedOperations", KIV_BACKEND_ERROR_GENERAL, [&] {
    require<Backend>(handle, kInvalidBackend);
    if (count != nullptr)
      *count = static_cast<std::uint32_t>(operations().size());
    if (records != nullptr) *records = operations().data();
  });
}

Kiv_ErrorHandle_t backendValidateOpConfig(Kiv_BackendHandle_t handle,
                                          Kiv_OpConfig_t config) noexcept {
  return enter("backendValidateOpConfig", KIV_BACKEND_ERROR_GENERAL, [&] {
    const auto backend = require<Backend>(handle, kInvalidBackend);
    const std::scoped_lock lock(backend->mutex);
    validateOperation(backend->opsets, config);
  });
}

Kiv_ErrorHandle_t backendFree(Kiv_BackendHandle_t handle) noexcept {
  return enter("backendFree", KIV_BACKEND_ERROR_GENERAL, [&] {
    require<Backend>(handle, kInvalidBackend);
    Handles<Backend>::instance().remove(handle);
  });
}

}  // namespace

void addBackendEntries(KivInterface_Implementation_t& table) {
  table.backendCreate = backendCreate;
  table.backendSetConfig = backendSetConfig;
  table.backendGetApiVersion = backendGetApiVersion;
  table.backendGetBuildId = backendGetBuildId;
  table.backendGetSupportedOperations = backendGetSupportedOperations;
  table.backendValidateOpConfig = backendValidateOpConfig;
  table.backendFree = backendFree;
}

}  // namespace kiv::ort
