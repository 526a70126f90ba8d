#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "logged_messages.h"
#include "output/output_files.h"
#include "output/program_frame.h"
#include "support/file_size_limit.h"
#include "support/files.h"

// Files that cannot be written, cut or closed.
namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::FileSizeLimit;
using kiv::test::Lines;
using kiv::test::readFile;
using kiv::test::writeFile;

constexpr WriteFailures kFailures = {Status::kBackendError,
                                     Status::kContextBinary};

class FullDiskTest : public testing::Test {
 protected:
  FullDiskTest() { fs::create_directory(out_); }

  // Configures and starts the files.
  void start(bool header) {
    OutputChanges changes;
    changes.directory = out_.string();
    changes.writeHeader = header;
    ASSERT_EQ(files_.configure(changes, false), Status::kOk);
    ASSERT_EQ(files_.start(), Status::kOk);
  }
  Status append(const std::string& text, const std::vector<DataRun>& runs) {
    return files_.append(runs, text, kFailures);
  }
  std::string model() const { return readFile(modelPath_); }
  std::string data() const { return readFile(dataPath_); }

  kiv::test::TempDirectory temp_;
  const fs::path out_ = temp_.path() / "out";
  const fs::path modelPath_ = out_ / "saver_output.c";
  const fs::path dataPath_ = out_ / "params.bin";
  kiv::test::LoggedMessages log_;
  OutputFiles files_{[](std::string_view) {}};
};

// Whether the model file has a header, and whether the data file is the one
// that is full.
class WholeCallTest
    : public FullDiskTest,
      public testing::WithParamInterface<std::tuple<bool, bool>> {};

// The limit moves byte by byte through a call's text or through its bytes.
TEST_P(WholeCallTest, IsWrittenWholeOrNotAtAll) {
  const auto [header, failInData] = GetParam();
  const std::string text = "   static char d[6];\n   fread(d, 2, 3, fp);\n";
  const std::vector<DataRun> runs = {{"abcdef", 2, 3}, {"ghi", 1, 3}};
  writeFile(modelPath_, "earlier\n");
  writeFile(dataPath_, "earlier");
  start(header);
  const std::string filler(failInData ? 10000 : 1, '.');
  ASSERT_EQ(append(std::string(50, '\n'), {{filler.data(), 1, filler.size()}}),
            Status::kOk);
  const std::string modelBefore = model();
  const std::string dataBefore = (header ? "" : "earlier") + filler;
  const std::size_t limit = failInData ? dataBefore.size() : modelBefore.size();
  for (std::size_t room = 0; room < (failInData ? 9 : text.size()); ++room) {
    Status status = Status::kOk;
    {
      const FileSizeLimit full(limit + room);
      status = append(text, runs);
    }
    EXPECT_EQ(status, failInData ? kFailures.data : kFailures.text);
    EXPECT_EQ(model(), modelBefore) << room;
    EXPECT_EQ(data(), dataBefore) << room;
    EXPECT_EQ(log_.take().size(), 1u);
  }
  EXPECT_EQ(append(text, runs), Status::kOk);
  EXPECT_EQ(model(), modelBefore + text);
  EXPECT_EQ(data(), dataBefore + "abcdefghi");
}

INSTANTIATE_TEST_SUITE_P(FullDisk, WholeCallTest,
                         testing::Combine(testing::Bool(), testing::Bool()));

// Had the next call been written behind the bytes that stayed, it would be read
// at the wrong place.
TEST_F(FullDiskTest, AFileThatCannotBeCutTakesNothingMore) {
  const int memory = memfd_create("params", MFD_ALLOW_SEALING);
  if (memory < 0 || fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK) != 0)
    GTEST_SKIP();
  fs::create_symlink("/proc/self/fd/" + std::to_string(memory), dataPath_);
  start(true);
  const std::string header = model();
  {
    const FileSizeLimit limit(header.size() + 2);
    EXPECT_EQ(append("first;\n", {{"abc", 1, 3}}), kFailures.text);
  }
  EXPECT_EQ(log_.take().size(), 2u);
  EXPECT_EQ(append("second;\n", {{"def", 1, 3}}), kFailures.data);
  EXPECT_EQ(log_.take().size(), 1u);
  EXPECT_EQ(data(), "abc");
  EXPECT_EQ(model(), header);
  EXPECT_EQ(append("third;\n", {}), Status::kOk);
  ::close(memory);
}

// Part of a footer would spoil what is written behind it.
TEST_F(FullDiskTest, AFooterThatDoesNotFitIsUndone) {
  start(true);
  const std::string header = model();
  OutputChanges changes;
  changes.fileNames = {"b.c", "b.bin"};
  {
    const FileSizeLimit limit(header.size() + 10);
    EXPECT_EQ(files_.configure(changes, true), Status::kBackendError);
  }
  EXPECT_EQ(model(), header);
  EXPECT_EQ(log_.take().back(), "1: Failure when writing model footer");
  EXPECT_EQ(files_.configure(changes, true), Status::kOk);
  EXPECT_EQ(files_.program(), 1u);
  EXPECT_EQ(model(), header + std::string(programFooter()));
}

// Calls behind part of a header would make no program.
TEST_F(FullDiskTest, AHeaderThatDoesNotFitTakesNoCalls) {
  start(true);
  const std::string whole = model() + std::string(programFooter());
  OutputChanges changes;
  changes.fileNames = {"b.c", std::string(250, 'b')};
  changes.backendId = 4;
  {
    const FileSizeLimit limit(whole.size());
    EXPECT_EQ(files_.configure(changes, true), Status::kBackendError);
  }
  EXPECT_EQ(log_.take().back(), "1: Failure when writing model header");
  EXPECT_EQ(model(), whole);
  EXPECT_EQ(append("first;\n", {}), kFailures.text);
  EXPECT_EQ(readFile(out_ / "b.c"), "");
  EXPECT_EQ(files_.configure(changes, true), Status::kOk);
  EXPECT_EQ(append("first;\n", {}), Status::kOk);
  EXPECT_TRUE(readFile(out_ / "b.c").ends_with("first;\n"));
}

// Whatever closing did, the stream is gone: nothing may touch it again.
TEST_F(FullDiskTest, SurvivesAStreamThatCannotBeClosed) {
  DataFile file(out_.string(), "params.bin");
  ASSERT_TRUE(file.open());
  std::error_code error;
  for (int fd = 3; fd < 1024; ++fd) {
    const auto link = "/proc/self/fd/" + std::to_string(fd);
    if (fs::read_symlink(link, error) == dataPath_) ::close(fd);
  }
  EXPECT_FALSE(file.close());
  EXPECT_EQ(log_.take(), Lines{"1: Failed to close the file"});
  EXPECT_FALSE(file.write({"a", 1, 1}));
}

}  // namespace
}  // namespace kiv::output::test
