#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "robustness/replayed_calls.h"
#include "support/file_size_limit.h"

// Switches of files that fail halfway, and files that cannot be cut or closed.
namespace kiv::test {
namespace {

namespace fs = std::filesystem;

void closeDescriptorOf(const fs::path& path) {
  std::error_code ignored;
  for (int fd = 3; fd < 4096; ++fd)
    if (fs::read_symlink("/proc/self/fd/" + std::to_string(fd), ignored) ==
        fs::canonical(path))
      close(fd);
}

// A session with one call, and a message for each failure.
class Switch : public ::testing::Test {
 protected:
  Switch() { EXPECT_EQ(call(1), 0U); }

  Code call(uint32_t key) { return saver.api().propertyHasCapability(key); }
  Code switchTo(const Option& files) { return saver.initialize({files}); }
  std::string read(const char* name) const {
    return readFile(saver.directory() / name);
  }
  void expectLast(const char* message) {
    const Lines messages = log.take();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), "1: " + std::string(message));
  }

  const Option other = filesOption("b.c", "b.bin");
  SaverLibrary saver;
  LogCapture log{saver.api()};
};

// Part of a footer would spoil what is written behind it.
TEST_F(Switch, FooterWithoutRoomIsUndone) {
  const std::string text = saver.modelText();
  {
    const FileSizeLimit full(text.size() + 10);
    EXPECT_EQ(switchTo(other), 4999U);
  }
  expectLast("Failure when writing model footer");
  EXPECT_EQ(saver.modelText(), text);
  EXPECT_EQ(call(2), 0U);
  EXPECT_EQ(switchTo(other), 0U);
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)", "propertyHasCapability(2)"}));
}

// Calls behind part of a header would make no program. The new header is longer
// than the whole file before.
TEST_F(Switch, HeaderWithoutRoomTakesNoCalls) {
  const std::string longName(250, 'b');
  const Option longFiles = filesOption("b.c", longName.c_str());
  {
    const FileSizeLimit full(saver.modelText().size() + 300);
    EXPECT_EQ(switchTo(longFiles), 4999U);
  }
  expectLast("Failure when writing model header");
  EXPECT_TRUE(saver.modelText().ends_with(kFooterEnd));
  EXPECT_EQ(call(2), 1999U);
  EXPECT_EQ(read("b.c"), "");
  EXPECT_EQ(switchTo(longFiles), 0U);
  EXPECT_EQ(call(2), 0U);
  EXPECT_EQ(countOf(read("b.c"), "Capability("), 1U);
}

// Whatever closing did, the file is given up: the next switch succeeds.
TEST_F(Switch, FilesThatCannotBeClosed) {
  closeDescriptorOf(saver.dataPath());
  EXPECT_EQ(switchTo(other), 4999U);
  expectLast("Failure when closing data file");
  EXPECT_TRUE(saver.modelText().ends_with(kFooterEnd));
  EXPECT_EQ(saver.initialize({other, footerOption(false)}), 0U);
  EXPECT_EQ(call(2), 0U);
  closeDescriptorOf(saver.directory() / "b.c");
  EXPECT_EQ(switchTo(filesOption("c.c", "c.bin")), 4999U);
  expectLast("Failure when closing model file");
  EXPECT_EQ(switchTo(filesOption("c.c", "c.bin")), 0U);
  EXPECT_EQ(call(3), 0U);
  EXPECT_EQ(countOf(saver.modelText(), "fclose(fp)"), 1U);
  EXPECT_EQ(countOf(read("b.c"), "Capability("), 1U);
  EXPECT_EQ(countOf(read("c.c"), "Capability("), 1U);
}

// Had the next call been written behind the bytes that stayed, it would be read
// at the wrong place.
TEST(Undo, AFileThatCannotBeCutTakesNothingMore) {
  const int memory = memfd_create("params", MFD_ALLOW_SEALING);
  if (memory < 0 || fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK) != 0)
    GTEST_SKIP();
  const SaverLibrary saver;
  fs::create_directory(saver.directory());
  fs::create_symlink("/proc/self/fd/" + std::to_string(memory),
                     saver.dataPath());
  EXPECT_EQ(saver.api().propertyHasCapability(1), 0U);
  const std::string text = saver.modelText();
  const auto validate = [&](const char* bytes) {
    return saver.api().contextValidateBinary(nullptr, nullptr, nullptr, bytes,
                                             3);
  };
  {
    const FileSizeLimit full(text.size() + 2);
    EXPECT_EQ(validate("abc"), 5999U);
  }
  EXPECT_EQ(validate("def"), 5002U);
  EXPECT_EQ(saver.data(), "abc");
  EXPECT_EQ(saver.modelText(), text);
  EXPECT_EQ(saver.api().propertyHasCapability(2), 0U);
  close(memory);
}

}  // namespace
}  // namespace kiv::test
