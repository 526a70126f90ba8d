#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>

#include "library/started_session.h"
#include "support/sanitized.h"

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
  std::string block(1'000'001, '\0');
  for (std::size_t i = 0; i < block.size(); ++i)
    block[i] = static_cast<char>(i * i >> 8);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(saver.api().contextValidateBinary(nullptr, nullptr, nullptr,
                                                block.data(), block.size()),
              0U);
  std::ifstream data(saver.dataPath(), std::ios::binary);
  data.seekg(kBefore);
  std::ostringstream added;
  added << data.rdbuf();
  EXPECT_TRUE(std::move(added).str() == block + block);
}

// More than 2 GiB at once, into the null device, which reads nothing: the
// memory need not be there.
TEST(LargeData, OneCallMayBringMoreThanTwoGiB) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers read all that is written";
  constexpr std::size_t kSize = (std::size_t{2} << 30) + 5;
  const std::unique_ptr<void, decltype(&std::free)> bytes(std::calloc(kSize, 1),
                                                          std::free);
  ASSERT_NE(bytes, nullptr);
  const SaverLibrary saver;
  std::filesystem::create_directory(saver.directory());
  // On Windows each directory has a file of this name.
  if (std::filesystem::exists("/dev/null"))
    std::filesystem::create_symlink("/dev/null", saver.directory() / "NUL");
  ASSERT_EQ(saver.initialize({filesOption("a.c", "NUL")}), 0U);
  EXPECT_EQ(saver.api().contextValidateBinary(nullptr, nullptr, nullptr,
                                              bytes.get(), kSize),
            0U);
}

}  // namespace
}  // namespace kiv::test
