#include <algorithm>
#include <cstring>

#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

using Size = Kiv_ContextBinarySize_t;

// The content of a context's binary.
std::string binaryOf(const HandleTable& handles, Kiv_ContextHandle_t context) {
  return "KIV_TRACER binary of " + handles.nameOf(Kind::kContext, context);
}

// A binary of no bytes looks the same whether its pointer is null or not.
Data binaryData(const void* binary, Size size) { return {binary, size, size}; }

Kiv_ErrorHandle_t contextCreate(Kiv_BackendHandle_t backend,
                                Kiv_DeviceHandle_t device,
                                const KivContext_Config_t** config,
                                Kiv_ContextHandle_t* context) noexcept {
  return traced("contextCreate", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .handle(Kind::kDevice, device)
        .value(List{config})
        .create(Kind::kContext, context);
  });
}

Kiv_ErrorHandle_t contextSetConfig(
    Kiv_ContextHandle_t context, const KivContext_Config_t** config) noexcept {
  return traced("contextSetConfig", [&](Call& call) {
    call.handle(Kind::kContext, context).value(List{config});
  });
}

Kiv_ErrorHandle_t contextGetBinarySize(Kiv_ContextHandle_t context,
                                       Size* binarySize) noexcept {
  return traced("contextGetBinarySize", [&](Call& call) {
    const std::string binary = binaryOf(call.tracer().handles, context);
    call.handle(Kind::kContext, context).give(binarySize, binary.size());
  });
}

Kiv_ErrorHandle_t contextGetBinary(Kiv_ContextHandle_t context, void* buffer,
                                   Size bufferSize,
                                   Size* writtenSize) noexcept {
  return traced("contextGetBinary", [&](Call& call) {
    const std::string binary = binaryOf(call.tracer().handles, context);
    const Size size =
        buffer == nullptr ? 0 : std::min<Size>(bufferSize, binary.size());
    if (size != 0) std::memcpy(buffer, binary.data(), size);
    call.handle(Kind::kContext, context)
        .out(buffer)
        .value(bufferSize)
        .give(writtenSize, size);
  });
}

Kiv_ErrorHandle_t contextCreateFromBinary(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary, Size binarySize,
    Kiv_ContextHandle_t* context, Kiv_ProfileHandle_t profile) noexcept {
  return traced("contextCreateFromBinary", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .handle(Kind::kDevice, device)
        .value(List{config})
        .value(binaryData(binary, binarySize))
        .value(binarySize)
        .create(Kind::kContext, context)
        .handle(Kind::kProfile, profile);
  });
}

Kiv_ErrorHandle_t contextCreateFromBinaryWithSignal(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary, Size binarySize,
    Kiv_ContextHandle_t* context, Kiv_ProfileHandle_t profile,
    Kiv_SignalHandle_t signal) noexcept {
  return traced("contextCreateFromBinaryWithSignal", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .handle(Kind::kDevice, device)
        .value(List{config})
        .value(binaryData(binary, binarySize))
        .value(binarySize)
        .create(Kind::kContext, context)
        .handle(Kind::kProfile, profile)
        .handle(Kind::kSignal, signal);
  });
}

Kiv_ErrorHandle_t contextValidateBinary(Kiv_BackendHandle_t backend,
                                        Kiv_DeviceHandle_t device,
                                        const KivContext_Config_t** config,
                                        const void* binary,
                                        Size binarySize) noexcept {
  return traced("contextValidateBinary", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .handle(Kind::kDevice, device)
        .value(List{config})
        .value(binaryData(binary, binarySize))
        .value(binarySize);
  });
}

Kiv_ErrorHandle_t contextFree(Kiv_ContextHandle_t context,
                              Kiv_ProfileHandle_t profile) noexcept {
  return traced("contextFree", [&](Call& call) {
    call.handle(Kind::kContext, context).handle(Kind::kProfile, profile);
  });
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

}  // namespace kiv::tracer
