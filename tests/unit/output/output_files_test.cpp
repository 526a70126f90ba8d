#include "output/output_files.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "output/program_frame.h"
#include "output_files_fixture.h"

namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::Lines;
using kiv::test::readFile;

TEST_F(OutputFilesTest, AStartThatFailsIsUndoneAndTriedAgain) {
  kiv::test::writeFile(out_, "");
  EXPECT_EQ(files_.start(), Status::kNotStarted);
  EXPECT_EQ(log_.take(), Lines{"1: " + out_.string() + " already exists"});
  fs::remove(out_);
  fs::create_directories(out_ / "params.bin");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(files_.start(), Status::kNotStarted);
    EXPECT_EQ(log_.take(), Lines{"1: Could not open file: params.bin"});
  }
  EXPECT_EQ(files_.append({}, "x", kFailures), kFailures.text);
  EXPECT_EQ(log_.take(), Lines{"1: Could not write data, FILE* is NULL"});
  EXPECT_FALSE(files_.started());
  fs::remove(out_ / "params.bin");
  EXPECT_EQ(files_.start(), Status::kOk);
  EXPECT_EQ(readFile(out_ / "saver_output.c"),
            programHeader({}, "params.bin", ""));
  EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(OutputFilesTest, CallsOfManyThreadsKeepBytesAndTextInStep) {
  ASSERT_EQ(files_.start(), Status::kOk);
  const auto model = [&] { return readFile(out_ / "saver_output.c"); };
  const std::size_t headerSize = model().size();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        const std::string bytes = std::to_string(10000 + t * 1000 + i);
        EXPECT_EQ(
            files_.append({{bytes.data(), 1, 2}, {bytes.data() + 2, 1, 3}},
                          bytes + "\n", kFailures),
            Status::kOk);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::istringstream calls(model().substr(headerSize));
  std::string fromText;
  for (std::string line; std::getline(calls, line);) fromText += line;
  EXPECT_EQ(fromText.size(), 4000u);
  EXPECT_EQ(fromText, readFile(out_ / "params.bin"));
}

}  // namespace
}  // namespace kiv::output::test
