#include "platform/trace_logging.h"

#include <gtest/gtest.h>

#include <cctype>

#include "platform/sha1.h"

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

// Listeners know the provider by its name, from which they derive the GUID.
TEST(TraceLogging, GuidComesFromTheName) {
  Bytes message = {0x48, 0x2C, 0x2D, 0xB2, 0xC3, 0x90, 0x47, 0xC8,
                   0x87, 0xF8, 0x1A, 0x15, 0xBF, 0xC1, 0x30, 0xFB};
  for (const char c : kProviderName) {
    message.push_back(0);
    message.push_back(static_cast<std::uint8_t>(std::toupper(c)));
  }
  const auto digest = test::sha1(message);
  Bytes expected(digest.begin(), digest.begin() + 16);
  expected[7] = static_cast<std::uint8_t>((expected[7] & 0x0F) | 0x50);
  const auto guid = providerGuid();
  EXPECT_EQ(Bytes(guid.begin(), guid.end()), expected);
}

TEST(TraceLogging, DigestOfTheTestIsRight) {
  const auto digest = test::sha1(bytes("abc"));
  EXPECT_EQ(Bytes(digest.begin(), digest.begin() + 4),
            (Bytes{0xA9, 0x99, 0x3E, 0x36}));
}

}  // namespace
}  // namespace kiv::platform::trace_logging
