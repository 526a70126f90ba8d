#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <thread>

#include "robustness/in_child.h"
#include "robustness/replayed_calls.h"
#include "support/sanitized.h"

// Many threads record at once.
namespace kiv::test {
namespace {

constexpr int kThreads = 16;
constexpr int kSharing = 8;  // of these, in one context
constexpr int kRounds = kIsSanitized ? 6 : 25;

void ignore(const char*, KivLog_Level_t, uint64_t, va_list) {}

std::string bytesOf(int thread, int round) {
  std::string bytes(
      static_cast<std::size_t>(1 + (thread * 31 + round * 7) % 90),
      static_cast<char>(thread));
  for (std::size_t i = 0; i < bytes.size(); i += 3)
    bytes[i] = static_cast<char>(static_cast<std::size_t>(round) + i);
  return bytes;
}

// What one thread does. Every call carries a name or a number of the thread, or
// a handle of one that does.
class Worker {
 public:
  Worker(const Api& api, int thread, Kiv_BackendHandle_t backend,
         Kiv_ContextHandle_t shared)
      : api_(api), thread_(thread), backend_(backend), context_(shared) {}

  void run() {
    const bool shares = thread_ < kSharing;
    Kiv_DeviceHandle_t device = nullptr;
    if (!shares) {
      expectOk(api_.deviceCreate(nullptr, nullptr, &device));
      expectOk(api_.contextCreate(backend_, device, nullptr, &context_));
    }
    expectOk(
        api_.graphCreate(context_, name("graph", 0).c_str(), nullptr, &graph_));
    for (int round = 0; round < kRounds; ++round) runRound(round);
    expectOk(api_.graphFinalize(graph_, nullptr, nullptr));
    if (shares) return;
    expectOk(api_.contextFree(context_, nullptr));
    expectOk(api_.deviceFree(device));
  }

  int failures() const { return failures_; }

 private:
  void runRound(int round) {
    const auto number = static_cast<uint32_t>((thread_ + 1) * 1000 + round);
    Kiv_LogHandle_t logger = nullptr;
    expectOk(api_.logCreate(ignore, KIV_LOG_LEVEL_DEBUG, &logger));
    Kiv_ProfileHandle_t profile = nullptr;
    expectOk(api_.profileCreate(backend_, number, &profile));

    std::string bytes = bytesOf(thread_, round);
    const auto size = static_cast<uint32_t>(bytes.size());
    const std::string names[] = {name("weights", round),
                                 name("between", round)};
    Kiv_Tensor_t tensors[] = {tensorWithData(bytes.data(), size),
                              tensorWithData(bytes.data(), size / 2)};
    tensors[0].v1.name = names[0].c_str();
    tensors[1].v1.name = names[1].c_str();
    expectOk(api_.tensorCreateContextTensor(context_, &tensors[0]));
    expectOk(api_.tensorCreateGraphTensor(graph_, &tensors[1]));
    const std::string nodeName = name("node", round);
    Kiv_OpConfig_t node = emptyOpConfig(nodeName.c_str());
    node.v1.numInputs = 2;
    node.v1.inputTensors = tensors;
    expectOk(api_.graphAddNode(graph_, node));
    std::reverse(bytes.begin(), bytes.end());
    expectOk(
        api_.graphExecute(graph_, tensors, 2, nullptr, 0, profile, nullptr));

    expectOk(api_.propertyHasCapability(number));
    expectOk(api_.profileSetConfig(profile, nullptr));
    expectOk(api_.profileFree(profile));
    expectOk(api_.logFree(logger));
  }

  std::string name(const char* what, int round) const {
    return 't' + std::to_string(thread_) + '_' + what + std::to_string(round);
  }
  void expectOk(Code code) { failures_ += code == 0 ? 0 : 1; }

  const Api& api_;
  const int thread_;
  Kiv_BackendHandle_t backend_;
  Kiv_ContextHandle_t context_;
  Kiv_GraphHandle_t graph_ = nullptr;
  int failures_ = 0;
};

// All workers' calls, side by side or one after the other.
void runWorkers(const Api& api, bool sideBySide) {
  Kiv_BackendHandle_t backend = nullptr;
  Kiv_ContextHandle_t shared = nullptr;
  api.backendCreate(nullptr, nullptr, &backend);
  api.contextCreate(backend, nullptr, nullptr, &shared);
  std::vector<Worker> workers;
  for (int i = 0; i < kThreads; ++i)
    workers.emplace_back(api, i, backend, shared);
  std::vector<std::thread> threads;
  for (Worker& worker : workers) {
    threads.emplace_back([&worker] { worker.run(); });
    if (!sideBySide) threads.back().join();
  }
  for (std::thread& thread : threads)
    if (thread.joinable()) thread.join();
  for (const Worker& worker : workers) EXPECT_EQ(worker.failures(), 0);
}

// The lines of a trace by thread, without the numbers of handles and tensors,
// for these depend on what the other threads did meanwhile. Lines that name no
// thread count as one thread's, in any order; each other line is of a thread
// that uses no handle of another one.
class TraceByThread {
 public:
  explicit TraceByThread(const Lines& lines) {
    static const std::regex number(R"((#|\bid=)\d+)");
    for (const std::string& line : lines) {
      const int thread = threadOf(line);
      if (thread != kNobody) expectOwnHandles(line, thread);
      calls_[thread].push_back(std::regex_replace(line, number, "$1"));
    }
    std::ranges::sort(calls_[kNobody]);
  }

  const std::map<int, Lines>& calls() const { return calls_; }

 private:
  static constexpr int kNobody = -1;

  static int threadOf(const std::string& line) {
    static const std::regex mark(
        R"("t(\d+)_|(?:Capability\(|profileCreate\(backend#0, )(\d+)\d{3}\b)");
    std::smatch match;
    if (!std::regex_search(line, match, mark)) return kNobody;
    return match[1].matched ? std::stoi(match[1]) : std::stoi(match[2]) - 1;
  }

  void expectOwnHandles(const std::string& line, int thread) {
    static const std::regex handle(R"((graph|profile)#\d+)");
    for (std::sregex_iterator it(line.begin(), line.end(), handle), end;
         it != end; ++it)
      EXPECT_EQ(owners_.emplace(it->str(), thread).first->second, thread)
          << line;
  }

  std::map<std::string, int> owners_;
  std::map<int, Lines> calls_;
};

// The bytes of both tensors of each round, as they were in each call.
void expectBytes(const Lines& calls, int thread) {
  std::map<std::string, int> seen;
  for (const std::string& line : calls) {
    const std::string function = line.substr(0, line.find('('));
    if (line.find("data=") == std::string::npos ||
        line.find("_weights") == std::string::npos)
      continue;
    std::string bytes = bytesOf(thread, seen[function]++);
    if (function == "graphExecute") std::reverse(bytes.begin(), bytes.end());
    EXPECT_NE(line.find("data=" + dataText(bytes)), std::string::npos) << line;
    if (function == "tensorCreateContextTensor") continue;
    const std::string half = bytes.substr(0, bytes.size() / 2);
    EXPECT_NE(line.find("data=" + dataText(half)), std::string::npos) << line;
  }
  EXPECT_EQ(seen["tensorCreateContextTensor"], kRounds);
  EXPECT_EQ(seen["graphAddNode"], kRounds);
  EXPECT_EQ(seen["graphExecute"], kRounds);
}

TEST(Threads, EachThreadsCallsAreReplayedInItsOrderWithItsBytes) {
  const TraceByThread expected(
      callsOf([](const Api& api) { runWorkers(api, false); }));
  SaverLibrary saver;
  runWorkers(saver.api(), true);
  ASSERT_TRUE(saver.unload());
  const Lines calls = replayedCalls(saver.directory());
  const TraceByThread replayed(calls);
  ASSERT_EQ(replayed.calls().size(), kThreads + 1U);
  EXPECT_EQ(replayed.calls(), expected.calls());
  for (const auto& [thread, lines] : replayed.calls())
    if (thread >= 0) expectBytes(lines, thread);
  std::cout << calls.size() << " calls of " << kThreads << " threads\n";
}

// Files are switched while others record: each call is in one of the programs,
// with its bytes beside it.
TEST(Threads, SwitchesOfFilesLeaveCallsWhole) {
  constexpr int kSwitches = 30;
  StartedSession c;
  std::atomic<bool> stop = false;
  std::atomic<int> executions = 0;
  std::vector<std::thread> threads;
  for (char letter = 'a'; letter < 'e'; ++letter) {
    threads.emplace_back([&, letter] {
      std::string bytes(100, letter);
      while (!stop) {
        EXPECT_EQ(c.execute(c.graph, {tensorWithData(bytes.data(), 100)}), 0U);
        ++executions;
      }
    });
  }
  Lines names = {"saver_output.c"};
  for (int i = 0; i < kSwitches; ++i) {
    // Some executions for each pair of files.
    for (const int before = executions; executions < before + 5;)
      std::this_thread::yield();
    names.push_back(std::to_string(i) + ".c");
    const std::string data = names.back() + ".bin";
    EXPECT_EQ(
        c.saver.initialize({filesOption(names.back().c_str(), data.c_str())}),
        0U);
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  c.saver.unload();
  std::size_t found = 0;
  for (const std::string& name : names) {
    const std::string text = readFile(c.saver.directory() / name);
    const std::string data =
        readFile(c.saver.directory() /
                 (name == names[0] ? "params.bin" : name + ".bin"));
    found += countOf(text, "graphExecute(");
    EXPECT_EQ(bytesRead(text), data.size()) << name;
    for (std::size_t at = 0; at + 100 <= data.size(); at += 100)
      EXPECT_EQ(data.substr(at, 100), std::string(100, data[at])) << name;
    EXPECT_EQ(countOf(text, "fclose(fp)"), 1U) << name;
    EXPECT_TRUE(text.ends_with("0 : error;\n}\n")) << name;
  }
  EXPECT_EQ(found, static_cast<std::size_t>(executions));
}

// Two plugins of a client, each with its own reference to the library.
TEST(Threads, TheLastOfTwoReferencesEndsTheRecording) {
  SaverLibrary saver;
  std::atomic<int> finished = 0;
  const auto plugin = [&](int number) {
    void* reference = dlopen(KIV_SAVER_LIBRARY, RTLD_NOW);
    for (int i = 0; i < 50; ++i)
      EXPECT_EQ(saver.api().propertyHasCapability(
                    static_cast<uint32_t>(number * 100 + i)),
                0U);
    // Both unload at the same time.
    ++finished;
    while (finished != 3) std::this_thread::yield();
    dlclose(reference);
  };
  std::thread first(plugin, 1);
  std::thread second(plugin, 2);
  while (finished != 2) std::this_thread::yield();
  // From here on the two references are the only ones.
  EXPECT_FALSE(saver.unload());
  ++finished;
  first.join();
  second.join();
  EXPECT_EQ(dlopen(KIV_SAVER_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
  EXPECT_EQ(countOf(saver.modelText(), "fclose(fp)"), 1U);
  EXPECT_EQ(replayedCalls(saver.directory()).size(), 100U);
}

// A client ends while its threads go on calling, and one logs.
TEST(Threads, ExitInTheMidstOfCallsOfOtherThreadsEndsTheRecording) {
  constexpr int kCallers = kIsSanitized ? 16 : 64;
  const SaverLibrary saver;
  EXPECT_EQ(inChild([&] {
              static std::atomic<int> calls = 0;
              saver.api().logCreate(
                  [](const char*, KivLog_Level_t, uint64_t, va_list) {},
                  KIV_LOG_LEVEL_ERROR, nullptr);
              std::thread([&api = saver.api()] {
                for (;;) api.backendCreate(nullptr, nullptr, nullptr);
              }).detach();
              for (int i = 0; i < kCallers; ++i) {
                std::thread([&api = saver.api()] {
                  for (;;) {
                    api.propertyHasCapability(1);
                    ++calls;
                  }
                }).detach();
              }
              while (calls < kCallers * 10) std::this_thread::yield();
              return 7;
            }),
            7);
  const std::string text = saver.modelText();
  EXPECT_TRUE(text.ends_with("0 : error;\n}\n"));
  EXPECT_EQ(countOf(text, "fclose(fp)"), 1U);
  EXPECT_EQ(replayedCalls(saver.directory()).size(),
            countOf(text, "propertyHasCapability("));
}

// Threads that are cancelled finish the call that they are in.
TEST(Threads, CancelledThreadsLeaveCallsWhole) {
  SaverLibrary saver;
  const auto call = [](void* api) -> void* {
    for (;; pthread_testcancel())
      static_cast<const Api*>(api)->propertyHasCapability(1);
  };
  for (int i = 0; i < 10; ++i) {
    pthread_t thread{};
    const auto before = saver.modelText().size();
    ASSERT_EQ(
        pthread_create(&thread, nullptr, call, const_cast<Api*>(&saver.api())),
        0);
    while (saver.modelText().size() == before) std::this_thread::yield();
    EXPECT_EQ(pthread_cancel(thread), 0);
    void* result = nullptr;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
  }
  saver.unload();
  EXPECT_EQ(replayedCalls(saver.directory()).size(),
            countOf(saver.modelText(), "propertyHasCapability("));
}

}  // namespace
}  // namespace kiv::test
