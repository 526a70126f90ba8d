// The provider is nobody's business but the file's own.
#include <gtest/gtest.h>

#include "platform/trace_events_windows.cpp"

namespace kiv::platform {
namespace {

void control(Provider& target, ULONG code, UCHAR level) {
  Provider::onEnable(nullptr, code, level, 0, 0, nullptr, &target);
}

TEST(TraceEvents, TheSystemTakesTheProviderAndItsEvents) {
  Provider own;
  EXPECT_EQ(own.registered(), ULONG{ERROR_SUCCESS});
  EXPECT_EQ(own.named(), ULONG{ERROR_SUCCESS});
  EXPECT_EQ(own.write("a message"), ULONG{ERROR_SUCCESS});
  EXPECT_EQ(own.write(""), ULONG{ERROR_SUCCESS});
  EXPECT_EQ(own.unregister(), ULONG{ERROR_SUCCESS});
  EXPECT_NE(own.unregister(), ULONG{ERROR_SUCCESS});
}

TEST(TraceEvents, EventsAreInWireForm) {
  const Provider own;
  const EVENT_DESCRIPTOR event = Provider::describeEvent();
  const std::array<std::uint8_t, 16> bytes = {0, 0, 0, 11, 5};
  EXPECT_EQ(std::memcmp(&event, bytes.data(), sizeof(event)), 0);
  const char* text = "text";
  const auto data = own.describeData(text);
  const auto contentOf = [](const EVENT_DATA_DESCRIPTOR& descriptor) {
    const auto* start =
        reinterpret_cast<const std::uint8_t*>(std::uintptr_t{descriptor.Ptr});
    return std::vector<std::uint8_t>(start, start + descriptor.Size);
  };
  EXPECT_EQ(contentOf(data[0]), trace_logging::providerMetadata());
  EXPECT_EQ(data[0].Reserved, 2U);
  EXPECT_EQ(contentOf(data[1]), trace_logging::eventMetadata());
  EXPECT_EQ(data[1].Reserved, 1U);
  EXPECT_EQ(contentOf(data[2]),
            (std::vector<std::uint8_t>{'t', 'e', 'x', 't', 0}));
  EXPECT_EQ(data[2].Reserved, 0U);
}

TEST(TraceEvents, ListenersSwitchTheProviderOnAndOff) {
  constexpr ULONG kCaptureState = 2;
  Provider own;
  EXPECT_FALSE(own.isEnabled());
  for (const UCHAR level : {UCHAR{0}, UCHAR{5}, UCHAR{255}}) {
    control(own, 1, level);
    EXPECT_TRUE(own.isEnabled()) << int{level};
    control(own, kCaptureState, 1);
    EXPECT_TRUE(own.isEnabled());
    control(own, 0, level);
    EXPECT_FALSE(own.isEnabled());
  }
  control(own, 1, 4);
  EXPECT_FALSE(own.isEnabled());
  control(own, 1, 5);
  own.unregister();
  EXPECT_FALSE(own.isEnabled());
}

}  // namespace
}  // namespace kiv::platform
