#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "tracer_run.h"

namespace kiv::test {
namespace {

TEST(TracerOutput, StartsTheFileAfreshAndEndsItAtUnloading) {
  const TempDirectory directory;
  const std::filesystem::path path = directory.path() / "trace";
  writeFile(path, "an earlier and longer trace\n");
  TracerRun run("KIV_TRACER_OUTPUT", path.string());
  EXPECT_EQ(readFile(path), "");
  run.api().backendFree(nullptr);
  EXPECT_EQ(readFile(path), "backendFree(null)\n");
  EXPECT_TRUE(run.unload());
  // A file that is still open cannot be removed on every system.
  EXPECT_TRUE(std::filesystem::remove(path));
}

// What a run with this output prints to standard error.
std::string standardErrorOf(const std::string& output) {
  testing::internal::CaptureStderr();
  {
    const TracerRun run("KIV_TRACER_OUTPUT", output);
    EXPECT_EQ(run.api().backendFree(nullptr), KIV_SUCCESS);
    EXPECT_EQ(run.api().deviceFree(nullptr), KIV_SUCCESS);
  }
  return testing::internal::GetCapturedStderr();
}

TEST(TracerOutput, GoesToStandardErrorWithoutAFile) {
  const std::string lines = "backendFree(null)\ndeviceFree(null)\n";
  EXPECT_EQ(standardErrorOf(""), lines);
  const TempDirectory directory;
  const std::string path = (directory.path() / "nowhere" / "trace").string();
  EXPECT_EQ(standardErrorOf(path),
            "KIV_TRACER: cannot open " + path +
                " (No such file or directory); printing to standard error\n" +
                lines);
}

TEST(TracerOutput, IsToldOnceToBeIncomplete) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  EXPECT_EQ(standardErrorOf("/dev/full"),
            "KIV_TRACER: cannot write; the trace is incomplete\n");
}

TEST(TracerOutput, OfThreadsIsWholeLinesWithHandlesOfTheirOwn) {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kCalls = 1000;
  const TracerRun run;
  const std::string name(300, 'x');
  std::atomic<std::size_t> ready = 0;
  const auto work = [&] {
    for (++ready; ready < kThreads;) std::this_thread::yield();
    Kiv_GraphHandle_t graph = nullptr;
    for (std::size_t i = 0; i < kCalls; ++i) {
      run.api().graphCreate(nullptr, name.c_str(), nullptr, &graph);
    }
  };
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();

  const std::string start = "graphCreate(null, \"" + name + "\", [], out) -> ";
  std::set<std::string> graphs;
  std::istringstream text(run.text());
  for (std::string line; std::getline(text, line);) {
    ASSERT_TRUE(line.starts_with(start)) << line;
    graphs.insert(line.substr(start.size()));
  }
  EXPECT_EQ(graphs.size(), kThreads * kCalls);
}

}  // namespace
}  // namespace kiv::test
