#include "api/entries.h"
#include "call.h"
#include "entries.h"

namespace kiv::relay {
namespace {

using api::Code;

Code propertyHasCapability(KivProperty_Key_t key) {
  Call call("propertyHasCapability");
  call.record([&](Relay&) { return api::propertyHasCapability(key); });
  return call.answer(real().propertyHasCapability(key));
}

Code backendCreate(Kiv_LogHandle_t log, const KivBackend_Config_t** config,
                   Kiv_BackendHandle_t* backend) {
  Call call("backendCreate");
  Kiv_BackendHandle_t recorded = nullptr;
  call.record([&](Relay&) {
    return api::backendCreate(log, config, backend ? &recorded : nullptr);
  });
  const Code code = real().backendCreate(log, config, backend);
  if (code == KIV_SUCCESS)
    call.note([&](Relay& relay) { relay.backends.add(backend, {recorded}); });
  return call.answer(code);
}

Code backendSetConfig(Kiv_BackendHandle_t backend,
                      const KivBackend_Config_t** config) {
  Call call("backendSetConfig");
  call.record([&](Relay& relay) {
    return api::backendSetConfig(relay.backends.recorded(backend), config);
  });
  return call.answer(real().backendSetConfig(backend, config));
}

Code backendRegisterOpPackage(Kiv_BackendHandle_t backend, const char* path,
                              const char* provider, const char* target) {
  Call call("backendRegisterOpPackage");
  call.record([&](Relay& relay) {
    return api::backendRegisterOpPackage(relay.backends.recorded(backend), path,
                                         provider, target);
  });
  return call.answer(
      real().backendRegisterOpPackage(backend, path, provider, target));
}

Code backendGetSupportedOperations(
    Kiv_BackendHandle_t backend, uint32_t* count,
    const KivBackend_OperationName_t** operations) {
  Call call("backendGetSupportedOperations");
  call.record([&](Relay& relay) {
    uint32_t noCount = 0;
    const KivBackend_OperationName_t* none = nullptr;
    return api::backendGetSupportedOperations(relay.backends.recorded(backend),
                                              count ? &noCount : nullptr,
                                              operations ? &none : nullptr);
  });
  return call.answer(
      real().backendGetSupportedOperations(backend, count, operations));
}

// No graph knows the operation's tensors, so their ids are the client's.
Code backendValidateOpConfig(Kiv_BackendHandle_t backend,
                             Kiv_OpConfig_t config) {
  Call call("backendValidateOpConfig");
  call.record([&](Relay& relay) {
    return api::backendValidateOpConfig(relay.backends.recorded(backend),
                                        config);
  });
  return call.answer(real().backendValidateOpConfig(backend, config));
}

// The handle is forgotten first: another thread may be given it again as soon
// as the real backend has freed it.
Code backendFree(Kiv_BackendHandle_t backend) {
  Call call("backendFree");
  call.record([&](Relay& relay) {
    const Code code = api::backendFree(relay.backends.recorded(backend));
    relay.backends.erase(backend);
    return code;
  });
  return call.answer(real().backendFree(backend));
}

}  // namespace

void addBackendEntries(KivInterface_Implementation_t& table) {
  table.propertyHasCapability = propertyHasCapability;
  table.backendCreate = backendCreate;
  table.backendSetConfig = backendSetConfig;
  table.backendRegisterOpPackage = backendRegisterOpPackage;
  table.backendGetSupportedOperations = backendGetSupportedOperations;
  table.backendValidateOpConfig = backendValidateOpConfig;
  table.backendFree = backendFree;
}

}  // namespace kiv::relay
