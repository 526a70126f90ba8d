#include "api/entries.h"
#include "call.h"
#include "entries.h"

namespace kiv::relay {
namespace {

using api::Code;

// Notes a context that the real backend has created, with what the recorder
// has, which may be nothing.
void noteContext(Call& call, Code code, const Kiv_ContextHandle_t* context,
                 Kiv_ContextHandle_t recorded) {
  if (code != KIV_SUCCESS) return;
  call.note([&](Relay& relay) { relay.contexts.add(context, {recorded}); });
}

Code contextCreate(Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
                   const KivContext_Config_t** config,
                   Kiv_ContextHandle_t* context) {
  Call call("contextCreate");
  Kiv_ContextHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::contextCreate(relay.backends.recorded(backend),
                              relay.devices.recorded(device), config,
                              context ? &recorded : nullptr);
  });
  const Code code = real().contextCreate(backend, device, config, context);
  noteContext(call, code, context, recorded);
  return call.answer(code);
}

Code contextCreateFromBinary(Kiv_BackendHandle_t backend,
                             Kiv_DeviceHandle_t device,
                             const KivContext_Config_t** config,
                             const void* binary, Kiv_ContextBinarySize_t size,
                             Kiv_ContextHandle_t* context,
                             Kiv_ProfileHandle_t profile) {
  Call call("contextCreateFromBinary");
  Kiv_ContextHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::contextCreateFromBinary(
        relay.backends.recorded(backend), relay.devices.recorded(device),
        config, binary, size, context ? &recorded : nullptr,
        relay.profiles.recorded(profile));
  });
  const Code code = real().contextCreateFromBinary(
      backend, device, config, binary, size, context, profile);
  noteContext(call, code, context, recorded);
  return call.answer(code);
}

Code contextCreateFromBinaryWithSignal(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t size, Kiv_ContextHandle_t* context,
    Kiv_ProfileHandle_t profile, Kiv_SignalHandle_t signal) {
  Call call("contextCreateFromBinaryWithSignal");
  Kiv_ContextHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::contextCreateFromBinaryWithSignal(
        relay.backends.recorded(backend), relay.devices.recorded(device),
        config, binary, size, context ? &recorded : nullptr,
        relay.profiles.recorded(profile), signal);
  });
  const Code code = real().contextCreateFromBinaryWithSignal(
      backend, device, config, binary, size, context, profile, signal);
  noteContext(call, code, context, recorded);
  return call.answer(code);
}

Code contextValidateBinary(Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config,
                           const void* binary, Kiv_ContextBinarySize_t size) {
  Call call("contextValidateBinary");
  call.record([&](Relay& relay) {
    return api::contextValidateBinary(relay.backends.recorded(backend),
                                      relay.devices.recorded(device), config,
                                      binary, size);
  });
  return call.answer(
      real().contextValidateBinary(backend, device, config, binary, size));
}

Code contextSetConfig(Kiv_ContextHandle_t context,
                      const KivContext_Config_t** config) {
  Call call("contextSetConfig");
  call.record([&](Relay& relay) {
    return api::contextSetConfig(relay.contexts.recorded(context), config);
  });
  return call.answer(real().contextSetConfig(context, config));
}

// The recorder writes neither sizes nor bytes.
Code contextGetBinarySize(Kiv_ContextHandle_t context,
                          Kiv_ContextBinarySize_t* size) {
  Call call("contextGetBinarySize");
  call.record([&](Relay& relay) {
    return api::contextGetBinarySize(relay.contexts.recorded(context), size);
  });
  return call.answer(real().contextGetBinarySize(context, size));
}

Code contextGetBinary(Kiv_ContextHandle_t context, void* buffer,
                      Kiv_ContextBinarySize_t size,
                      Kiv_ContextBinarySize_t* written) {
  Call call("contextGetBinary");
  call.record([&](Relay& relay) {
    return api::contextGetBinary(relay.contexts.recorded(context), buffer, size,
                                 written);
  });
  return call.answer(real().contextGetBinary(context, buffer, size, written));
}

// Its graphs are forgotten with it: their handles may come again, here or in
// the recorder.
Code contextFree(Kiv_ContextHandle_t context, Kiv_ProfileHandle_t profile) {
  Call call("contextFree");
  call.record([&](Relay& relay) {
    const Code code = api::contextFree(relay.contexts.recorded(context),
                                       relay.profiles.recorded(profile));
    relay.graphs.eraseOfContext(context);
    relay.contexts.erase(context);
    return code;
  });
  return call.answer(real().contextFree(context, profile));
}

}  // namespace

void addContextEntries(KivInterface_Implementation_t& table) {
  table.contextCreate = contextCreate;
  table.contextSetConfig = contextSetConfig;
  table.contextGetBinarySize = contextGetBinarySize;
  table.contextGetBinary = contextGetBinary;
  table.contextCreateFromBinary = contextCreateFromBinary;
  table.contextCreateFromBinaryWithSignal = contextCreateFromBinaryWithSignal;
  table.contextValidateBinary = contextValidateBinary;
  table.contextFree = contextFree;
}

}  // namespace kiv::relay
