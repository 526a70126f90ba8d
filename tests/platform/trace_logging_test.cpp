#include "platform/trace_logging.h"

#include <gtest/gtest.h>

namespace kiv::platform::trace_logging {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytes(std::string_view text) { return {text.begin(), text.end()}; }

// The sizes are numbers, so a "\x1A" here is not the letter behind it.
TEST(TraceLogging, MetadataIsInWireForm) {
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(providerMetadata(), bytes("\x1A\0"
                                      "KIVTraceLoggingProvider\0"sv));
  EXPECT_EQ(eventMetadata(), bytes("\x14\0\0"
                                   "KIV\0"
                                   "TestMessage\0\2"sv));
}

// Listeners derive it from the provider's name: these are the first bytes of
// the SHA-1 of a fixed prefix and "KIVTRACELOGGINGPROVIDER" in UTF-16BE.
TEST(TraceLogging, GuidComesFromTheName) {
  const auto guid = providerGuid();
  EXPECT_EQ(Bytes(guid.begin(), guid.end()),
            (Bytes{0xAB, 0x3B, 0x58, 0xB0, 0xF2, 0x77, 0xBB, 0x59, 0xE9, 0xF2,
                   0xBB, 0x79, 0xD8, 0x32, 0xF9, 0xA6}));
}

}  // namespace
}  // namespace kiv::platform::trace_logging
