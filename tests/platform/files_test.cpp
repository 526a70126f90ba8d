#include "platform/files.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "support/files.h"

namespace kiv::platform {
namespace {

struct Close {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

class Files : public testing::Test {
 protected:
  std::string path(const std::string& name) const {
    return (temp_.path() / name).string();
  }
  Stream open(OpenMode mode) const {
    return Stream(openForWriting(path("file"), mode).stream);
  }
  static void write(const Stream& stream, std::string_view text) {
    EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), stream.get()),
              text.size());
  }
  static std::uint64_t sizeOf(const Stream& stream) {
    return fileState(stream.get()).value_or(FileState{}).size;
  }
  std::string content() const { return test::readFile(path("file")); }

  const test::TempDirectory temp_;
};

TEST_F(Files, OneRecorderHasTheFileAndOthersMayUseIt) {
  test::writeFile(path("file"), "earlier");
  Stream first = open(OpenMode::kTruncate);
  write(first, "first ");
  EXPECT_NE(Stream(openForReading(path("file"))), nullptr);
  EXPECT_TRUE(std::ofstream(path("file"), std::ios::app).is_open());
  for (const OpenMode mode : {OpenMode::kTruncate, OpenMode::kAppend})
    EXPECT_TRUE(openForWriting(path("file"), mode).isHeldByAnother);
  EXPECT_EQ(content(), "first ");
  EXPECT_TRUE(closeFile(first.release()));
  const Stream second = open(OpenMode::kAppend);
  ASSERT_NE(second, nullptr);
  write(second, "second");
  EXPECT_EQ(content(), "first second");
  EXPECT_EQ(openForReading(path("missing")), nullptr);
}

TEST_F(Files, WritingGoesOnWhereAFileWasCut) {
  for (const OpenMode mode : {OpenMode::kTruncate, OpenMode::kAppend}) {
    const Stream stream = open(mode);
    write(stream, "kept, lost");
    ASSERT_TRUE(truncateFile(stream.get(), 4));
    EXPECT_EQ(sizeOf(stream), 4U);
    write(stream, "!");
    EXPECT_EQ(content(), "kept!");
    ASSERT_TRUE(truncateFile(stream.get(), 0));
  }
}

TEST_F(Files, DirectoriesAndFilesAreToldApart) {
  const std::string directory = path("directory");
  EXPECT_FALSE(pathExists(directory));
  EXPECT_FALSE(isDirectory(directory));
  EXPECT_TRUE(createDirectory(directory));
  EXPECT_FALSE(createDirectory(directory));
  EXPECT_FALSE(createDirectory(path("no/parent")));
  const std::string file = path("file");
  test::writeFile(file, "");
  for (const char* slashes : {"", "/", "//"}) {
    EXPECT_TRUE(isDirectory(directory + slashes)) << slashes;
    EXPECT_TRUE(pathExists(file + slashes)) << slashes;
    EXPECT_FALSE(isDirectory(file + slashes)) << slashes;
  }
  EXPECT_EQ(openForWriting(directory, OpenMode::kTruncate).stream, nullptr);
  EXPECT_EQ(openForWriting(path("no/file"), OpenMode::kTruncate).stream,
            nullptr);
  EXPECT_TRUE(isDirectory("/"));
}

}  // namespace
}  // namespace kiv::platform
