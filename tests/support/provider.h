#pragma once

#include "KivInterface.h"
#include "support/dynamic_library.h"

namespace kiv::test {

// The one provider of a library, valid until it is unloaded.
inline const KivInterface_t& providerOf(const DynamicLibrary& library) {
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  const auto getProviders = library.function<KivInterface_GetProvidersFn_t>(
      "KivInterface_getProviders");
  if (getProviders(&providers, &count) != KIV_SUCCESS || count != 1)
    throw std::runtime_error("The library has no provider");
  return *providers[0];
}

inline const KivInterface_Implementation_t& interfaceOf(
    const DynamicLibrary& library) {
  return providerOf(library).KIV_INTERFACE_VER_NAME;
}

}  // namespace kiv::test
