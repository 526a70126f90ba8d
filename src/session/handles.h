#pragma once

#include <cstddef>
#include <cstdint>

namespace kiv::session {

// The opaque value that a client gets for an object: the object's address with
// its bytes reversed, exclusive-or'ed with a constant, so that nobody takes it
// for a pointer. Unique among live objects.
using Handle = std::uint64_t;

inline Handle handleOf(const void* object) {
  constexpr Handle kMask = 0x5A3C96E1F0D2B487;
  if (object == nullptr) return 0;
  auto address = reinterpret_cast<std::uintptr_t>(object);
  Handle reversed = 0;
  for (std::size_t i = 0; i < sizeof(address); ++i) {
    reversed = (reversed << 8) | (address & 0xFF);
    address >>= 8;
  }
  return reversed ^ kMask;
}

// The API's handle types are all void*.
inline Handle fromApi(void* handle) {
  return static_cast<Handle>(reinterpret_cast<std::uintptr_t>(handle));
}

inline void* toApi(Handle handle) {
  return reinterpret_cast<void*>(static_cast<std::uintptr_t>(handle));
}

}  // namespace kiv::session
