#include <gtest/gtest.h>

#include <fstream>

#include "library/started_session.h"

namespace kiv::test {
namespace {

TEST(LargeData, CallsAreAddedBehindFiveGiB) {
  constexpr std::uint64_t kBefore = std::uint64_t{5} << 30;
  const SaverLibrary saver;
  std::filesystem::create_directory(saver.directory());
  writeFile(saver.dataPath(), "");
  std::filesystem::resize_file(saver.dataPath(), kBefore);
  ASSERT_EQ(saver.initialize({filesOption("saver_output.c", "params.bin"),
                              headerOption(false)}),
            0U);
  for (const char* bytes : {"abc", "def"})
    EXPECT_EQ(
        saver.api().contextValidateBinary(nullptr, nullptr, nullptr, bytes, 3),
        0U);
  EXPECT_EQ(std::filesystem::file_size(saver.dataPath()), kBefore + 6);
  std::ifstream data(saver.dataPath(), std::ios::binary);
  data.seekg(kBefore);
  std::string added;
  data >> added;
  EXPECT_EQ(added, "abcdef");
}

}  // namespace
}  // namespace kiv::test
