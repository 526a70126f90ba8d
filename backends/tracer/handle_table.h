#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kiv::tracer {

enum class Kind : std::uint8_t {
  kLog,
  kBackend,
  kDevice,
  kContext,
  kGraph,
  kProfile,
  kSignal,
  kMem,
};

inline constexpr std::size_t kKindCount = 8;

// Hands out handles and names them in the trace: a name is the handle's kind
// and its number in order of creation, counted for each kind from 0.
//
//   void* context = table.create(Kind::kContext);
//   table.nameOf(Kind::kContext, context);  // "context#0"
//
// A handle holds its kind and number, so it is never forgotten and stays the
// same from run to run. May be used from any thread.
class HandleTable {
 public:
  void* create(Kind kind);
  // "null" for null; "context?" for a handle that was never handed out as one
  // of this kind.
  std::string nameOf(Kind kind, const void* handle) const;
  // The same where the interface does not say the kind; "handle?" if unknown.
  std::string nameOf(const void* handle) const;

 private:
  bool wasCreated(Kind kind, const void* handle) const;

  std::array<std::atomic<std::uint32_t>, kKindCount> counts_{};
};

}  // namespace kiv::tracer
