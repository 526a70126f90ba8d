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
}

}  // namespace
}  // namespace kiv::platform
