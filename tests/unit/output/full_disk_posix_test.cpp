#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "output/program_frame.h"
#include "output_files_fixture.h"
#include "support/file_size_limit.h"

// Files that cannot be written, cut or closed.
namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::FileSizeLimit;
using kiv::test::Lines;
using kiv::test::readFile;

class FullDiskTest : public OutputFilesTest {
 protected:
  FullDiskTest() { fs::create_directory(out_); }

  void start() { ASSERT_EQ(files_.start(), Status::kOk); }
  Status append(const std::string& text, const std::vector<DataRun>& runs) {
    return files_.append(runs, text, kFailures);
  }
  std::string model() const { return readFile(out_ / "saver_output.c"); }
  std::string data() const { return readFile(dataPath_); }

  const fs::path dataPath_ = out_ / "params.bin";
};

// Had the next call been written behind the bytes that stayed, it would be read
// at the wrong place.
TEST_F(FullDiskTest, AFileThatCannotBeCutTakesNothingMore) {
  const int memory = memfd_create("params", MFD_ALLOW_SEALING);
  if (memory < 0 || fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK) != 0)
    GTEST_SKIP();
  fs::create_symlink("/proc/self/fd/" + std::to_string(memory), dataPath_);
  start();
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
  start();
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
  start();
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
  for (int fd = 3; fd < 4096; ++fd) {
    const auto link = "/proc/self/fd/" + std::to_string(fd);
    if (fs::read_symlink(link, error) == dataPath_) ::close(fd);
  }
  EXPECT_FALSE(file.close());
  EXPECT_EQ(log_.take(), Lines{"1: Failed to close the file"});
  EXPECT_FALSE(file.write({"a", 1, 1}));
}

}  // namespace
}  // namespace kiv::output::test
