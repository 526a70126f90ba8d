#include <gtest/gtest.h>

#include <fstream>

#include "library/client.h"

namespace kiv::test {
namespace {

TEST(LargeData, CallsAreAddedBehindFiveGiB) {
  constexpr std::uint64_t kBefore = std::uint64_t{5} << 30;
  const SaverLibrary saver;
  std::filesystem::create_directory(saver.directory());
  writeFile(saver.dataPath(), "");
  std::filesystem::resize_file(saver.dataPath(), kBefore);
  auto names = configOf<KivSaver_Config_t>(KIV_SAVER_CONFIG_OPTION_FILE_CONFIG);
  names.fileConfig = {"saver_output.c", "params.bin"};
  auto header =
      configOf<KivSaver_Config_t>(KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER);
  header.writeHeader = 0;
  ASSERT_EQ(saver.initialize({&names, &header}), 0U);
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
