#include "output/output_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>
#include <thread>

#include "file_size_limit.h"
#include "logged_messages.h"
#include "output/program_frame.h"
#include "support/files.h"

namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::Lines;
using kiv::test::readFile;
using kiv::test::writeFile;

constexpr WriteFailures kFailures = {Status::kBackendError,
                                     Status::kContextBinary};

class OutputFilesTest : public testing::Test {
 protected:
  OutputFilesTest() {
    OutputChanges changes;
    changes.directory = temp_.path() / "out";
    EXPECT_EQ(files_.configure(changes, false), Status::kOk);
  }

  Status append(const std::string& text, const std::vector<DataRun>& runs) {
    return files_.append(runs, text, kFailures);
  }
  fs::path modelPath() const { return temp_.path() / "out/saver_output.c"; }
  fs::path dataPath() const { return temp_.path() / "out/params.bin"; }
  std::string model() const { return readFile(modelPath()); }
  std::string data() const { return readFile(dataPath()); }

  kiv::test::TempDirectory temp_;
  kiv::test::LoggedMessages log_;
  OutputFiles files_{[](std::string_view) {}};
};

TEST_F(OutputFilesTest, StartsOnceWithTheHeaderOfTheBackend) {
  OutputChanges changes;
  changes.backendId = 4;
  EXPECT_EQ(files_.configure(changes, false), Status::kOk);
  EXPECT_FALSE(files_.started());
  EXPECT_FALSE(fs::exists(temp_.path() / "out"));
  EXPECT_EQ(files_.start(), Status::kOk);
  EXPECT_TRUE(files_.started());
  EXPECT_EQ(model(), programHeader(headersOfBackend(4), "params.bin", ""));
  EXPECT_TRUE(fs::exists(dataPath()));
  EXPECT_EQ(append("   call;\n", {}), Status::kOk);
  EXPECT_EQ(files_.start(), Status::kOk);
  EXPECT_EQ(log_.take(), Lines{});
  changes.backendId = 3;
  EXPECT_EQ(files_.configure(changes, false), std::nullopt);
  EXPECT_EQ(files_.backendId(), 4u);
}

TEST_F(OutputFilesTest, AStartThatFailsIsUndoneAndTriedAgain) {
  writeFile(temp_.path() / "out", "");
  EXPECT_EQ(files_.start(), Status::kNotStarted);
  EXPECT_EQ(log_.take(),
            Lines{"1: " + (temp_.path() / "out").string() + " already exists"});
  fs::remove(temp_.path() / "out");

  fs::create_directories(dataPath());
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(files_.start(), Status::kNotStarted);
    EXPECT_EQ(log_.take(), Lines{"1: Could not open file: params.bin"});
  }
  fs::remove(dataPath());

  {
    const FileSizeLimit limit(100);
    EXPECT_EQ(files_.start(), Status::kNotStarted);
  }
  EXPECT_EQ(log_.take().size(), 1u);
  EXPECT_EQ(append("x", {}), kFailures.text);
  log_.take();

  EXPECT_EQ(files_.start(), Status::kOk);
  EXPECT_EQ(model(), programHeader({}, "params.bin", ""));
  EXPECT_EQ(log_.take(), Lines{});
}

// The limit moves byte by byte through a call's text, then through its bytes.
TEST_F(OutputFilesTest, ACallIsWrittenWholeOrNotAtAll) {
  const std::string text = "   static char d[6];\n   fread(d, 2, 3, fp);\n";
  const std::vector<DataRun> runs = {{"abcdef", 2, 3}, {"ghi", 1, 3}};
  for (const bool header : {true, false}) {
    for (const bool failInData : {false, true}) {
      OutputFiles files([](std::string_view) {});
      const fs::path out = temp_.path() / "whole";
      fs::remove_all(out);
      fs::create_directory(out);
      writeFile(out / "saver_output.c", "earlier\n");
      writeFile(out / "params.bin", "earlier");
      OutputChanges changes;
      changes.directory = out;
      changes.writeHeader = header;
      ASSERT_EQ(files.configure(changes, false), Status::kOk);
      ASSERT_EQ(files.start(), Status::kOk);
      const std::string filler(failInData ? 10000 : 1, '.');
      ASSERT_EQ(files.append({{filler.data(), 1, filler.size()}},
                             std::string(50, '\n'), kFailures),
                Status::kOk);
      const std::string modelBefore = readFile(out / "saver_output.c");
      const std::string dataBefore = (header ? "" : "earlier") + filler;
      EXPECT_EQ(modelBefore.starts_with("earlier\n"), !header);
      const std::size_t size = failInData ? 9 : text.size();
      for (std::size_t room = 0; room < size; ++room) {
        Status status = Status::kOk;
        {
          const FileSizeLimit limit(
              (failInData ? dataBefore.size() : modelBefore.size()) + room);
          status = files.append(runs, text, kFailures);
        }
        EXPECT_EQ(status, failInData ? kFailures.data : kFailures.text);
        EXPECT_EQ(readFile(out / "saver_output.c"), modelBefore) << room;
        EXPECT_EQ(readFile(out / "params.bin"), dataBefore) << room;
        EXPECT_EQ(log_.take().size(), 1u);
      }
      EXPECT_EQ(files.append(runs, text, kFailures), Status::kOk);
      EXPECT_EQ(readFile(out / "saver_output.c"), modelBefore + text);
      EXPECT_EQ(readFile(out / "params.bin"), dataBefore + "abcdefghi");
    }
  }
}

TEST_F(OutputFilesTest, AFullDeviceStopsCallsWithBytesOnly) {
  if (!fs::exists("/dev/full")) GTEST_SKIP();
  fs::create_directory(temp_.path() / "out");
  fs::create_symlink("/dev/full", dataPath());
  ASSERT_EQ(files_.start(), Status::kOk);
  const std::string header = model();
  EXPECT_EQ(append("a;\n", {{"x", 1, 1}}), kFailures.data);
  EXPECT_EQ(log_.take(),
            Lines{"1: Number of elements written(0) does not match number of "
                  "elements requested(1)"});
  EXPECT_EQ(append("b;\n", {}), Status::kOk);
  EXPECT_EQ(model(), header + "b;\n");
}

// A data file that cannot be cut: had the next call been written behind the
// bytes that stayed, it would be read at the wrong place.
TEST_F(OutputFilesTest, AFileThatCannotBeCutTakesNothingMore) {
  const int memory = memfd_create("params", MFD_ALLOW_SEALING);
  if (memory < 0 || fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK) != 0)
    GTEST_SKIP();
  const std::string path = "/proc/self/fd/" + std::to_string(memory);
  fs::create_directory(temp_.path() / "out");
  fs::create_symlink(path, dataPath());
  ASSERT_EQ(files_.start(), Status::kOk);
  const std::string header = model();
  {
    const FileSizeLimit limit(header.size() + 2);
    EXPECT_EQ(append("first;\n", {{"abc", 1, 3}}), kFailures.text);
  }
  EXPECT_EQ(log_.take().size(), 2u);
  EXPECT_EQ(append("second;\n", {{"def", 1, 3}}), kFailures.data);
  EXPECT_EQ(log_.take().size(), 1u);
  EXPECT_EQ(readFile(path), "abc");
  EXPECT_EQ(model(), header);
  EXPECT_EQ(append("third;\n", {}), Status::kOk);
  ::close(memory);
}

TEST_F(OutputFilesTest, SwitchesToNewFilesWithFooterAndHeader) {
  ASSERT_EQ(files_.start(), Status::kOk);
  ASSERT_EQ(append("a;\n", {{"a", 1, 1}}), Status::kOk);
  const std::string header = model();
  OutputChanges changes;
  changes.fileNames = {"b.c", "b.bin"};
  {
    // Part of a footer would spoil what is written behind it.
    const FileSizeLimit limit(header.size() + 10);
    EXPECT_EQ(files_.configure(changes, true), Status::kBackendError);
  }
  EXPECT_EQ(model(), header);
  EXPECT_EQ(log_.take().back(), "1: Failure when writing model footer");
  EXPECT_EQ(files_.configure(changes, true), Status::kOk);
  EXPECT_EQ(files_.program(), 1u);
  ASSERT_EQ(append("b;\n", {{"b", 1, 1}}), Status::kOk);
  EXPECT_EQ(model(), header + std::string(programFooter()));
  EXPECT_EQ(data(), "a");
  EXPECT_EQ(readFile(temp_.path() / "out/b.c"),
            programHeader({}, "b.bin", "") + "b;\n");
  EXPECT_EQ(readFile(temp_.path() / "out/b.bin"), "b");
}

TEST_F(OutputFilesTest, CallsOfManyThreadsKeepBytesAndTextInStep) {
  ASSERT_EQ(files_.start(), Status::kOk);
  const std::size_t headerSize = model().size();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        const int number = 10000 + t * 1000 + i;
        const std::string bytes = std::to_string(number);
        EXPECT_EQ(append(bytes + "\n",
                         {{bytes.data(), 1, 2}, {bytes.data() + 2, 1, 3}}),
                  Status::kOk);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::istringstream calls(model().substr(headerSize));
  std::string fromText;
  for (std::string line; std::getline(calls, line);) fromText += line;
  EXPECT_EQ(fromText.size(), 4000u);
  EXPECT_EQ(fromText, data());
}

}  // namespace
}  // namespace kiv::output::test
