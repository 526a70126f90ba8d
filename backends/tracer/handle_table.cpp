#include "handle_table.h"

#include <string_view>

namespace kiv::tracer {
namespace {

// Upper half of a handle: a mark that no address and no small number bears, and
// the kind. The lower half is the number plus one.
constexpr std::uint64_t kMark = 0x4B540000;

constexpr std::array<std::string_view, kKindCount> kNames = {
    "log", "backend", "device", "context", "graph", "profile", "signal", "mem"};

std::size_t indexOf(Kind kind) { return static_cast<std::size_t>(kind); }

std::uint64_t bitsOf(const void* handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

std::uint32_t ordinalOf(const void* handle) {
  return static_cast<std::uint32_t>(bitsOf(handle));
}

}  // namespace

void* HandleTable::create(Kind kind) {
  const std::uint64_t ordinal = counts_[indexOf(kind)].fetch_add(1) + 1u;
  return reinterpret_cast<void*>((kMark + indexOf(kind)) << 32 | ordinal);
}

std::string HandleTable::nameOf(Kind kind, const void* handle) const {
  if (handle == nullptr) return "null";
  std::string name(kNames[indexOf(kind)]);
  if (!wasCreated(kind, handle)) return name + "?";
  return name + "#" + std::to_string(ordinalOf(handle) - 1);
}

std::string HandleTable::nameOf(const void* handle) const {
  if (handle == nullptr) return "null";
  for (std::size_t index = 0; index < kKindCount; ++index) {
    const auto kind = static_cast<Kind>(index);
    if (wasCreated(kind, handle)) return nameOf(kind, handle);
  }
  return "handle?";
}

bool HandleTable::wasCreated(Kind kind, const void* handle) const {
  return bitsOf(handle) >> 32 == kMark + indexOf(kind) &&
         ordinalOf(handle) >= 1 &&
         ordinalOf(handle) <= counts_[indexOf(kind)].load();
}

}  // namespace kiv::tracer
