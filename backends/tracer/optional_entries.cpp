#include <algorithm>

#include "call.h"
#include "entries.h"

// Signals, registered memory, error messages and the operations to come. Other
// libraries may leave these out.
namespace kiv::tracer {

namespace {

void printHandles(LineWriter& line, const Kiv_MemHandle_t* handles,
                  uint32_t count) {
  if (handles == nullptr && count != 0) {
    line.word("null");
    return;
  }
  line.begin('[');
  for (uint32_t i = 0; i < count; ++i) line.handle(Kind::kMem, handles[i]);
  line.end(']');
}

Kiv_ErrorHandle_t memRegister(Kiv_ContextHandle_t context,
                              const KivMem_Descriptor_t* descriptors,
                              uint32_t numDescriptors,
                              Kiv_MemHandle_t* handles) noexcept {
  return traced("memRegister", [&](Call& call) {
    call.handle(Kind::kContext, context)
        .value(Array{descriptors, numDescriptors})
        .value(numDescriptors)
        .out(handles);
    if (handles == nullptr) return;
    std::generate_n(handles, numDescriptors, [&call] {
      return call.tracer().handles.create(Kind::kMem);
    });
    printHandles(call.result(), handles, numDescriptors);
  });
}

Kiv_ErrorHandle_t memDeRegister(const Kiv_MemHandle_t* handles,
                                uint32_t numHandles) noexcept {
  return traced("memDeRegister", [&](Call& call) {
    printHandles(call.line(), handles, numHandles);
    call.value(numHandles);
  });
}

Kiv_ErrorHandle_t signalCreate(Kiv_BackendHandle_t backend,
                               const KivSignal_Config_t** config,
                               Kiv_SignalHandle_t* signal) noexcept {
  return traced("signalCreate", [&](Call& call) {
    call.handle(Kind::kBackend, backend).value(List{config});
    call.create(Kind::kSignal, signal);
  });
}

Kiv_ErrorHandle_t signalSetConfig(Kiv_SignalHandle_t signal,
                                  const KivSignal_Config_t** config) noexcept {
  return traced("signalSetConfig", [&](Call& call) {
    call.handle(Kind::kSignal, signal).value(List{config});
  });
}

Kiv_ErrorHandle_t signalTrigger(Kiv_SignalHandle_t signal) noexcept {
  return traced("signalTrigger",
                [&](Call& call) { call.handle(Kind::kSignal, signal); });
}

Kiv_ErrorHandle_t signalFree(Kiv_SignalHandle_t signal) noexcept {
  return traced("signalFree",
                [&](Call& call) { call.handle(Kind::kSignal, signal); });
}

Kiv_ErrorHandle_t errorGetMessage(Kiv_ErrorHandle_t status,
                                  const char** message) noexcept {
  return traced("errorGetMessage", [&](Call& call) {
    call.value(status).store(message, "no message");
  });
}

Kiv_ErrorHandle_t errorGetLongMessage(Kiv_ErrorHandle_t status,
                                      const char** message) noexcept {
  return traced("errorGetLongMessage", [&](Call& call) {
    call.value(status).store(message, "no long message");
  });
}

Kiv_ErrorHandle_t errorFreeLongMessage(const char* message) noexcept {
  return traced("errorFreeLongMessage",
                [&](Call& call) { call.value(message); });
}

Kiv_ErrorHandle_t laterOperation(std::string_view name, void* handle,
                                 const void* arguments) noexcept {
  return traced(name, [&](Call& call) {
    call.line().handle(handle);
    call.value(Opaque{arguments != nullptr});
  });
}

Kiv_ErrorHandle_t laterOperation56(void* handle, const void* args) noexcept {
  return laterOperation("laterOperation56", handle, args);
}

Kiv_ErrorHandle_t laterOperation57(void* handle, const void* args) noexcept {
  return laterOperation("laterOperation57", handle, args);
}

Kiv_ErrorHandle_t laterOperation58(void* handle, const void* args) noexcept {
  return laterOperation("laterOperation58", handle, args);
}

}  // namespace

void addOptionalEntries(KivInterface_Implementation_t& table) {
  table.memRegister = memRegister;
  table.memDeRegister = memDeRegister;
  table.signalCreate = signalCreate;
  table.signalSetConfig = signalSetConfig;
  table.signalTrigger = signalTrigger;
  table.signalFree = signalFree;
  table.errorGetMessage = errorGetMessage;
  table.errorGetLongMessage = errorGetLongMessage;
  table.errorFreeLongMessage = errorFreeLongMessage;
  table.laterOperation56 = laterOperation56;
  table.laterOperation57 = laterOperation57;
  table.laterOperation58 = laterOperation58;
}

}  // namespace kiv::tracer
