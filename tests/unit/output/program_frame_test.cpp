#include "output/program_frame.h"

#include <gtest/gtest.h>

namespace kiv::output::test {
namespace {

// The golden recording shows the text; here is what varies in it.
TEST(ProgramFrameTest, TakesNamesAndTimeAsTheyAre) {
  const std::string plain = programHeader({}, "params.bin", "");
  std::string named = programHeader({}, "out/my data.bin", "");
  for (int i = 0; i < 2; ++i) {
    const std::size_t at = named.find("out/my data.bin");
    ASSERT_NE(at, std::string::npos);
    named.replace(at, std::string("out/my data.bin").size(), "params.bin");
  }
  EXPECT_EQ(named, plain);
  std::string stamped = programHeader({}, "params.bin", "1999-12-31");
  const std::size_t at = stamped.find(" on 1999-12-31.\n//");
  ASSERT_NE(at, std::string::npos);
  stamped.erase(at, std::string(" on 1999-12-31").size());
  EXPECT_EQ(stamped, plain);
}

}  // namespace
}  // namespace kiv::output::test
