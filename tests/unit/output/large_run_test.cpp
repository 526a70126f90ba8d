#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "output/data_file.h"

namespace kiv::output::test {
namespace {

// The null device reads nothing, so that the memory need not be there.
TEST(LargeRunTest, MoreThanTwoGiBAreWritten) {
  constexpr std::size_t kSize = (std::size_t{2} << 30) + 5;
  const std::unique_ptr<void, decltype(&std::free)> bytes(std::calloc(kSize, 1),
                                                          std::free);
  ASSERT_NE(bytes, nullptr);
  DataFile file("", KIV_NULL_DEVICE);
  ASSERT_TRUE(file.open());
  EXPECT_TRUE(file.write({bytes.get(), 1, kSize}));
}

}  // namespace
}  // namespace kiv::output::test
