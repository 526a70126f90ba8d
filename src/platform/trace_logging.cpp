#include "platform/trace_logging.h"

#include <utility>

namespace kiv::platform::trace_logging {
namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0);
}

// Puts the whole length into the first two bytes.
Bytes withSize(Bytes bytes) {
  bytes[0] = static_cast<std::uint8_t>(bytes.size() & 0xFF);
  bytes[1] = static_cast<std::uint8_t>(bytes.size() >> 8);
  return bytes;
}

}  // namespace

std::array<std::uint8_t, 16> providerGuid() {
  return {0xAB, 0x3B, 0x58, 0xB0, 0xF2, 0x77, 0xBB, 0x59,
          0xE9, 0xF2, 0xBB, 0x79, 0xD8, 0x32, 0xF9, 0xA6};
}

Bytes providerMetadata() {
  Bytes bytes = {0, 0};
  append(bytes, kProviderName);
  return withSize(std::move(bytes));
}

Bytes eventMetadata() {
  constexpr std::uint8_t kTag = 0;
  Bytes bytes = {0, 0, kTag};
  append(bytes, kEventName);
  append(bytes, kFieldName);
  bytes.push_back(kAnsiString);
  return withSize(std::move(bytes));
}

}  // namespace kiv::platform::trace_logging
