#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <thread>

#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

TEST(OutputTest, StartsTheFileAfreshAndEndsItAtUnloading) {
  const std::filesystem::path path = freshPath();
  std::ofstream(path) << "an earlier and longer trace\n";
  TracerRun run("KIV_TRACER_OUTPUT", path);
  EXPECT_EQ(contentOf(path), "");
  run.api().backendFree(nullptr);
  EXPECT_EQ(contentOf(path), "backendFree(null)\n");
  run.api().deviceFree(nullptr);
  EXPECT_EQ(contentOf(path), "backendFree(null)\ndeviceFree(null)\n");
  EXPECT_TRUE(isLoaded());
  run.unload();
  EXPECT_FALSE(isLoaded());
  for (const auto& entry :
       std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    EXPECT_NE(std::filesystem::read_symlink(entry, gone), path);
  }
  std::filesystem::remove(path);
}

TEST(OutputTest, PrintsToStandardErrorByDefault) {
  testing::internal::CaptureStderr();
  {
    const TracerRun run("KIV_TRACER_OUTPUT", "");
    run.api().backendFree(nullptr);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "backendFree(null)\n");
}

TEST(OutputTest, SaysThatTheFileCannotBeOpened) {
  testing::internal::CaptureStderr();
  {
    const TracerRun run("KIV_TRACER_OUTPUT", "/nowhere/trace");
    run.api().backendFree(nullptr);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KIV_TRACER: cannot open /nowhere/trace (No such file or "
            "directory); printing to standard error\nbackendFree(null)\n");
}

TEST(OutputTest, SaysOnceThatTheTraceIsIncomplete) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  testing::internal::CaptureStderr();
  {
    const TracerRun run("KIV_TRACER_OUTPUT", "/dev/full");
    EXPECT_EQ(run.api().backendFree(nullptr), 0u);
    EXPECT_EQ(run.api().backendFree(nullptr), 0u);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KIV_TRACER: cannot write; the trace is incomplete\n");
}

TEST(OutputTest, KeepsLinesOfThreadsWhole) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 500;
  const TracerRun run;
  const std::string name(300, 'x');
  const auto work = [&] {
    for (int i = 0; i < kCalls; ++i) {
      Kiv_GraphHandle_t graph = nullptr;
      run.api().graphCreate(nullptr, name.c_str(), nullptr, &graph);
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();

  const std::string start = "graphCreate(null, \"" + name + "\", [], out) -> ";
  std::set<std::string> graphs;
  for (const std::string& line : run.lines()) {
    ASSERT_TRUE(line.starts_with(start)) << line;
    graphs.insert(line.substr(start.size()));
  }
  // Every number once, so no handle was given to two threads.
  EXPECT_EQ(graphs.size(), std::size_t{kThreads * kCalls});
  EXPECT_TRUE(graphs.contains("graph#0"));
  EXPECT_TRUE(graphs.contains("graph#1999"));
}

TEST(OutputTest, GivesOneGraphToThreadsThatRetrieveOneName) {
  const TracerRun run;
  std::vector<Kiv_GraphHandle_t> graphs(4);
  std::vector<std::thread> threads;
  for (Kiv_GraphHandle_t& graph : graphs) {
    threads.emplace_back(
        [&] { run.api().graphRetrieve(nullptr, "g", &graph); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::count(graphs.begin(), graphs.end(), graphs[0]), 4);
}

}  // namespace
}  // namespace kiv::tracer::test
