#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

#include "robustness/replay.h"

// A client that is killed loses at most the call that it was in.
namespace kiv::test {
namespace {

constexpr int kKills = kFewerRuns ? 40 : 200;
constexpr int kReplays = kFewerRuns ? 3 : 10;

// Shared with the client: how many of its calls have come back.
struct Progress {
  std::atomic<std::uint32_t> calls;
};

class SharedProgress {
 public:
  SharedProgress()
      : progress_(static_cast<Progress*>(
            mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                 MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedProgress() { munmap(progress_, sizeof(Progress)); }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;

  std::atomic<std::uint32_t>& calls() { return progress_->calls; }

 private:
  Progress* progress_;
};

// The same calls each time. Some bring much data or much text, so that a kill
// can meet a write halfway.
void record(const Api& api, const std::function<void(Code)>& returned) {
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;
  returned(api.contextCreate(nullptr, nullptr, nullptr, &context));
  returned(api.graphCreate(context, "g", nullptr, &graph));
  std::vector<Kiv_ScaleOffset_t> scales(800, Kiv_ScaleOffset_t{0.1F, -5});
  std::string pattern;
  for (int i = 0; pattern.size() < 210'000; ++i) pattern += std::to_string(i);
  for (int round = 0; round < 32; ++round) {
    const auto size = static_cast<uint32_t>(round % 4 == 3 ? 200'000 : 100);
    std::string bytes = pattern.substr(static_cast<std::size_t>(round), size);
    Kiv_Tensor_t tensor = tensorWithData(bytes.data(), size);
    if (round % 4 == 1) {
      tensor.v1.quantizeParams.quantizationEncoding =
          KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
      tensor.v1.quantizeParams.axisScaleOffsetEncoding = {
          0, static_cast<uint32_t>(scales.size()), scales.data()};
    }
    returned(api.tensorCreateGraphTensor(graph, &tensor));
    Kiv_OpConfig_t node = emptyOpConfig("node");
    node.v1.numInputs = 1;
    node.v1.inputTensors = &tensor;
    returned(api.graphAddNode(graph, node));
    returned(api.graphExecute(graph, &tensor, 1, nullptr, 0, nullptr, nullptr));
    returned(api.propertyHasCapability(static_cast<uint32_t>(round)));
  }
  returned(api.contextFree(context, nullptr));
}

// The recording of a client that lives, and where both files ended behind each
// of its calls; [0] is before the first.
struct Reference {
  std::string text;
  std::string data;
  std::vector<std::size_t> textEnds = {0};
  std::vector<std::size_t> dataEnds = {0};
  Lines calls;

  Reference() {
    SaverLibrary saver;
    record(saver.api(), [&](Code code) {
      EXPECT_EQ(code, 0U);
      textEnds.push_back(std::filesystem::file_size(saver.modelPath()));
      dataEnds.push_back(std::filesystem::file_size(saver.dataPath()));
    });
    text = saver.modelText();
    data = saver.data();
    saver.unload();
    calls = replay(saver.directory());
    EXPECT_EQ(calls.size(), textEnds.size() - 1);
  }
};

// Lets a client record into the library's directory and kills it a moment
// after some call; returns how many of its calls had come back.
std::uint32_t killClient(const SaverLibrary& saver, std::uint32_t afterCall,
                         std::uint32_t delay) {
  SharedProgress progress;
  const pid_t client = fork();
  if (client == 0) {
    record(saver.api(), [&](Code) { ++progress.calls(); });
    for (;;) pause();
  }
  while (progress.calls() < afterCall) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::microseconds(delay));
  kill(client, SIGKILL);
  int status = 0;
  EXPECT_EQ(waitpid(client, &status, 0), client);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  return progress.calls();
}

// What a kill left of the call that was under way.
struct Found {
  int betweenCalls = 0;
  int dataOnly = 0;
  int textInPart = 0;
  int wholeCall = 0;
};

TEST(Kill, EveryCallThatReturnedIsRecordedWhole) {
  const char* wanted = std::getenv("KIV_SEED");
  const unsigned seed =
      wanted == nullptr
          ? std::random_device{}()
          : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
  std::cout << "KIV_SEED=" << seed << '\n';
  std::mt19937 random(seed);
  const Reference reference;
  const auto lastCall =
      static_cast<std::uint32_t>(reference.textEnds.size() - 1);
  Found found;
  for (int i = 0; i < kKills; ++i) {
    SCOPED_TRACE("kill " + std::to_string(i));
    const SaverLibrary saver;
    const auto upTo = [&random](std::uint32_t last) {
      return std::uniform_int_distribution<std::uint32_t>(0, last)(random);
    };
    const std::uint32_t after = upTo(lastCall);
    const std::uint32_t returned = killClient(saver, after, upTo(300));
    const std::string text = saver.modelText();
    const std::string data = saver.data();
    // The next call may be there in part, or whole; nothing else.
    const std::uint32_t next = std::min(returned + 1, lastCall);
    ASSERT_GE(text.size(), reference.textEnds[returned]);
    ASSERT_GE(data.size(), reference.dataEnds[returned]);
    ASSERT_LE(text.size(), reference.textEnds[next]);
    ASSERT_LE(data.size(), reference.dataEnds[next]);
    ASSERT_TRUE(reference.text.starts_with(text));
    ASSERT_TRUE(reference.data.starts_with(data));
    // Text is never there without all of its bytes.
    const bool anyText = text.size() > reference.textEnds[returned];
    if (anyText && returned > 0) {
      ASSERT_EQ(data.size(), reference.dataEnds[next]);
    }

    if (anyText && text.size() == reference.textEnds[next]) {
      ++found.wholeCall;
    } else if (anyText) {
      ++found.textInPart;
    } else if (data.size() > reference.dataEnds[returned]) {
      ++found.dataOnly;
    } else {
      ++found.betweenCalls;
    }
    if (i % (kKills / kReplays) != 0 || returned == 0) continue;
    const std::size_t whole =
        text.size() == reference.textEnds[next] ? next : returned;
    EXPECT_EQ(replay(saver.directory()),
              Lines(reference.calls.begin(),
                    reference.calls.begin() + static_cast<long>(whole)));
  }
  std::cout << kKills << " kills: " << found.betweenCalls
            << " left the calls that had returned, " << found.dataOnly
            << " bytes of the next too, " << found.textInPart
            << " part of its text, " << found.wholeCall << " all of it\n";
}

}  // namespace
}  // namespace kiv::test
