#include "output/output_stream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

#include "file_size_limit.h"
#include "logged_messages.h"
#include "output/data_file.h"
#include "output/model_file.h"
#include "output/program_frame.h"
#include "support/files.h"

namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::Lines;
using kiv::test::readFile;
using kiv::test::writeFile;

class OutputStreamTest : public testing::Test {
 protected:
  std::string at(const std::string& name) const {
    return (temp_.path() / name).string();
  }

  kiv::test::TempDirectory temp_;
  kiv::test::LoggedMessages log_;
};

TEST_F(OutputStreamTest, OpensOrTellsWhyNot) {
  writeFile(at("plain"), "kept");
  fs::create_directories(at("taken/file"));
  fs::create_symlink(at("nowhere"), at("dangling"));
  const std::string noDirectory =
      "1: Could not create directory, pal::Directory::create failed";
  const struct {
    std::string directory;
    std::string file;
    // Empty when it opens.
    std::string message;
  } cases[] = {
      {at("new"), "file", ""},
      {at("new"), "file", ""},
      {at("other/"), "file", ""},
      {"", at("by path"), ""},
      {at("missing/new"), "file", noDirectory},
      {at("dangling"), "file", noDirectory},
      {at("plain"), "file", "1: " + at("plain") + " already exists"},
      {at("plain/"), "file", "1: " + at("plain/") + " already exists"},
      {at("taken"), "file", "1: Could not open file: file"},
      {at("taken/"), "no/file", "1: Could not open file: no/file"},
  };
  for (const auto& c : cases) {
    OutputStream stream;
    std::string directory = c.directory;
    const bool opened =
        stream.open(directory, c.file, platform::OpenMode::kTruncate);
    EXPECT_EQ(opened, c.message.empty()) << c.directory;
    EXPECT_EQ(stream.isOpen(), opened);
    EXPECT_EQ(log_.take(), c.message.empty() ? Lines{} : Lines{c.message});
    if (!opened) continue;
    EXPECT_TRUE(fs::exists(directory + c.file)) << c.directory;
    EXPECT_EQ(directory.empty(), c.directory.empty());
    if (!directory.empty()) {
      EXPECT_EQ(directory, fs::path(c.directory) / "");
    }
  }
  EXPECT_EQ(readFile(at("plain")), "kept");
  EXPECT_FALSE(fs::exists(at("missing")));
}

TEST_F(OutputStreamTest, KeepsTheFirstStreamWhenOpenedTwice) {
  DataFile file(temp_.path(), "first");
  ASSERT_TRUE(file.open());
  file.setLocation(temp_.path(), "second");
  EXPECT_FALSE(file.open());
  EXPECT_EQ(log_.take(), Lines{"1: File has already been opened"});
  EXPECT_TRUE(file.write({"abc", 1, 3}));
  EXPECT_EQ(readFile(at("first")), "abc");
  EXPECT_FALSE(fs::exists(at("second")));
}

TEST_F(OutputStreamTest, TellsThatThereIsNoStream) {
  const Lines noWrite = {"1: Could not write data, FILE* is NULL"};
  {
    DataFile data(temp_.path(), "data");
    EXPECT_FALSE(data.write({"a", 1, 1}));
    EXPECT_EQ(log_.take(), noWrite);
    EXPECT_FALSE(data.close());
    EXPECT_EQ(log_.take(), Lines{"1: Could not close file, FILE* is NULL"});
    ModelFile model(temp_.path(), "model");
    EXPECT_FALSE(model.writeString("a"));
    EXPECT_FALSE(model.writeHeader({}, "data", ""));
    EXPECT_FALSE(model.writeFooter());
    EXPECT_EQ(log_.take(), (Lines{noWrite[0], noWrite[0], noWrite[0]}));
  }
  EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(OutputStreamTest, DataFileHoldsTheRunsBackToBack) {
  const std::uint32_t words[] = {0x64636261, 0x68676665};
  {
    DataFile file(temp_.path(), "data");
    ASSERT_TRUE(file.open());
    EXPECT_TRUE(file.write({words, 4, 2}));
    EXPECT_TRUE(file.write({nullptr, 4, 0}));
    EXPECT_TRUE(file.write({"\0\n", 1, 2}));
    EXPECT_EQ(readFile(at("data")), std::string("abcdefgh\0\n", 10));
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.isOpen());
    file.setAppend(true);
    EXPECT_TRUE(file.open());
    EXPECT_TRUE(file.write({"x", 1, 1}));
  }
  EXPECT_EQ(readFile(at("data")), std::string("abcdefgh\0\nx", 11));
  DataFile fresh(temp_.path(), "data");
  EXPECT_TRUE(fresh.open());
  EXPECT_EQ(readFile(at("data")), "");
  EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(OutputStreamTest, ModelFileFramesItsTextAsToldByItsFlags) {
  const std::string header = programHeader({}, "d.bin", "");
  const std::string footer(programFooter());
  for (const bool withHeader : {true, false}) {
    for (const bool withFooter : {true, false}) {
      writeFile(at("model"), "before\n");
      {
        ModelFile file(temp_.path(), "model");
        file.setFrame(withHeader, withFooter);
        ASSERT_TRUE(file.open());
        EXPECT_TRUE(file.writeHeader({}, "d.bin", ""));
        EXPECT_TRUE(file.writeString("calls\n"));
        EXPECT_TRUE(file.writeString(""));
        EXPECT_EQ(readFile(at("model")),
                  (withHeader ? header : "before\n") + "calls\n");
      }
      EXPECT_EQ(readFile(at("model")), (withHeader ? header : "before\n") +
                                           "calls\n" +
                                           (withFooter ? footer : ""));
    }
  }
}

TEST_F(OutputStreamTest, TellsHowMuchWasWritten) {
  DataFile data(temp_.path(), "data");
  ModelFile model(temp_.path(), "model");
  model.setFrame(true, false);
  ASSERT_TRUE(data.open() && model.open());
  {
    const FileSizeLimit limit(10);
    EXPECT_FALSE(data.write({"aaaabbbbccccdddd", 4, 4}));
    EXPECT_FALSE(model.writeString("0123456789ab"));
  }
  EXPECT_EQ(log_.take(),
            (Lines{"1: Number of elements written(2) does not match number of "
                   "elements requested(4)",
                   "1: Size of string written(10) does not match size of "
                   "original string(12)"}));
  // A failed write leaves the stream open.
  EXPECT_TRUE(data.write({"e", 1, 1}));
  EXPECT_TRUE(model.writeString("c"));
  EXPECT_EQ(readFile(at("model")), "0123456789c");
}

// Whatever fclose did, the stream is gone: nothing may touch it again.
TEST_F(OutputStreamTest, SurvivesAStreamThatCannotBeClosed) {
  {
    DataFile file(temp_.path(), "data");
    ASSERT_TRUE(file.open());
    std::error_code error;
    for (int fd = 3; fd < 1024; ++fd) {
      const auto link = "/proc/self/fd/" + std::to_string(fd);
      if (fs::read_symlink(link, error) == at("data")) ::close(fd);
    }
    EXPECT_FALSE(file.close());
    EXPECT_EQ(log_.take(), Lines{"1: Failed to close the file"});
    EXPECT_FALSE(file.write({"a", 1, 1}));
    log_.take();
  }
}

}  // namespace
}  // namespace kiv::output::test
