#include "KivInterface.h"
#include "diagnostics/standard_error.h"
#include "entries.h"
#include "relay.h"

// The library's one provider, with the real one's name, id and versions.
namespace kiv::relay {
namespace {

template <typename Slot>
void dropIfMissing(Slot& slot, const Slot& real) {
  if (real == nullptr) slot = nullptr;
}

// A function that the real backend lacks is lacking here. A table is nothing
// but pointers to functions.
void dropMissing(KivInterface_Implementation_t& table,
                 const KivInterface_Implementation_t& real) {
  constexpr std::size_t kSlots = sizeof(table) / sizeof(Kiv_ReservedFn_t);
  auto* const slots = reinterpret_cast<Kiv_ReservedFn_t*>(&table);
  const auto* const realSlots =
      reinterpret_cast<const Kiv_ReservedFn_t*>(&real);
  for (std::size_t i = 0; i < kSlots; ++i)
    dropIfMissing(slots[i], realSlots[i]);
}

// Queries that a recording goes without, and the logger, whose callback is the
// client's, stay the real backend's own functions.
KivInterface_Implementation_t tableFor(
    const KivInterface_Implementation_t& real) {
  KivInterface_Implementation_t table = real;
  addBackendEntries(table);
  addContextEntries(table);
  addDeviceEntries(table);
  addGraphEntries(table);
  addTensorEntries(table);
  addProfileEntries(table);
  addListedEntries(table);
  dropMissing(table, real);
  return table;
}

// Constant-initialised, so that clients' exit handlers find it.
constinit KivInterface_t provider = {};
constinit const KivInterface_t* providers[] = {&provider};
constinit bool isMade = false;
constinit log::SpinLock makingLock;

bool makeProvider() {
  std::string why;
  const Relay* const relay = Relay::make(why);
  if (relay == nullptr) {
    log::reportFailure("KIV_RELAY_BACKEND", why.c_str());
    return false;
  }
  const std::lock_guard lock(makingLock);
  if (isMade) return true;
  provider = relay->real.provider();
  provider.KIV_INTERFACE_VER_NAME = tableFor(relay->real.table());
  return isMade = true;
}

Kiv_ErrorHandle_t getProviders(const KivInterface_t*** providerList,
                               uint32_t* numProviders) {
  if (providerList == nullptr || numProviders == nullptr)
    return KIV_COMMON_ERROR_INVALID_ARGUMENT;
  try {
    if (!makeProvider()) return KIV_BACKEND_ERROR_CANNOT_INITIALIZE;
  } catch (...) {
    return KIV_COMMON_ERROR_MEM_ALLOC;
  }
  *providerList = providers;
  *numProviders = 1;
  return KIV_SUCCESS;
}

}  // namespace
}  // namespace kiv::relay

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  return kiv::relay::getProviders(providerList, numProviders);
}
