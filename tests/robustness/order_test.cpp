#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "robustness/in_child.h"
#include "robustness/replayed_calls.h"
#include "support/file_size_limit.h"
#include "support/sanitized.h"

// Things in an order that nobody expects.
namespace kiv::test {
namespace {

bool hasOneFooter(const std::string& text) {
  return countOf(text, "fclose(fp)") == 1 && text.ends_with(kFooterEnd);
}

// A client may load the library again and again; nothing is left of the last
// time, also of objects that it did not free, and nothing that a fork calls.
TEST(Order, RecordingsOfOneProcessAreAlike) {
  std::string texts[3];
  for (std::string& text : texts) {
    StartedSession c;
    Kiv_LogHandle_t logger = nullptr;
    c.api.logCreate(nullptr, KIV_LOG_LEVEL_ERROR, &logger);
    ASSERT_TRUE(c.saver.unload());
    EXPECT_EQ(inChild([] { return 3; }), 3);
    text = c.saver.modelText();
    EXPECT_TRUE(hasOneFooter(text));
  }
  EXPECT_EQ(texts[1], texts[0]);
  EXPECT_EQ(texts[2], texts[0]);
}

// A child that a client forks has nothing to do with its recording, whichever
// way it ends.
TEST(Order, ForkedChildLeavesTheRecordingAlone) {
  SaverLibrary saver;
  ASSERT_EQ(saver.api().propertyHasCapability(1), 0U);
  const std::string before = saver.modelText();
  EXPECT_EQ(inChild([] { return 3; }), 3);
  EXPECT_EQ(saver.modelText(), before);
  EXPECT_EQ(inChild([&] { return saver.unload() ? 3 : 0; }), 3);
  EXPECT_EQ(saver.modelText(), before);
  // Its calls are refused rather than written amidst the client's.
  EXPECT_EQ(inChild([&] {
              Kiv_ContextHandle_t out = nullptr;
              const bool refused =
                  saver.api().propertyHasCapability(2) == 4000 &&
                  saver.api().contextCreate(nullptr, nullptr, nullptr, &out) ==
                      4000;
              return refused ? 0 : 1;
            }),
            0);
  EXPECT_EQ(saver.modelText(), before);
  ASSERT_EQ(saver.api().propertyHasCapability(3), 0U);
  saver.unload();
  EXPECT_TRUE(hasOneFooter(saver.modelText()));
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)", "propertyHasCapability(3)"}));
}

// A child that lives on has the parent's files open, too.
TEST(Order, ForkedChildDoesNotKeepTheFiles) {
  SaverLibrary saver;
  ASSERT_EQ(saver.api().propertyHasCapability(1), 0U);
  const pid_t child = fork();
  if (child == 0)
    for (;;) pause();
  EXPECT_EQ(saver.initialize({filesOption("saver_output.c", "params.bin")}),
            0U);
  EXPECT_EQ(kill(child, SIGKILL), 0);
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

// The parent's threads are in the midst of calls, and hold locks, when the
// child comes into being without them.
TEST(Order, ForkInTheMidstOfCallsOfOtherThreads) {
  SaverLibrary saver;
  std::atomic<bool> stop = false;
  std::atomic<std::size_t> calls = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (; !stop; ++calls) saver.api().propertyHasCapability(1);
    });
  }
  while (calls < 100) std::this_thread::yield();
  for (int i = 0; i < (kIsSanitized ? 4 : 20); ++i)
    EXPECT_EQ(inChild([&] {
                return saver.api().propertyHasCapability(2) == 4000 ? 0 : 1;
              }),
              0);
  stop = true;
  for (std::thread& thread : threads) thread.join();
  saver.unload();
  EXPECT_TRUE(hasOneFooter(saver.modelText()));
  EXPECT_EQ(countOf(saver.modelText(), "Capability("), calls);
}

constexpr auto kNoLimit = static_cast<std::size_t>(-1);

// What a client's log callback does with the next message.
std::function<void()> onMessage;

void callback(const char*, KivLog_Level_t, uint64_t, va_list) {
  if (const auto action = std::exchange(onMessage, nullptr)) action();
}

TEST(Order, CallbackExitsTheProcess) {
  const SaverLibrary saver;
  EXPECT_EQ(inChild([&] {
              saver.api().logCreate(callback, KIV_LOG_LEVEL_WARN, nullptr);
              saver.api().propertyHasCapability(1);
              onMessage = [] { std::exit(5); };
              saver.api().graphFinalize(nullptr, nullptr, nullptr);
              return 0;
            }),
            5);
  EXPECT_TRUE(hasOneFooter(saver.modelText()));
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)"}));
}

// The message tells of a call that was written in part, which must not be what
// the recording ends with. There is room again for a footer.
TEST(Order, CallbackExitsInTheMidstOfAWrite) {
  for (const bool textFails : {true, false}) {
    SCOPED_TRACE(textFails ? "text" : "data");
    const SaverLibrary saver;
    EXPECT_EQ(inChild([&] {
                saver.api().logCreate(callback, KIV_LOG_LEVEL_WARN, nullptr);
                const std::string large(textFails ? 1 : 100'000, 'x');
                saver.api().contextValidateBinary(nullptr, nullptr, nullptr,
                                                  large.data(), large.size());
                const FileSizeLimit full(textFails
                                             ? saver.modelText().size() + 9
                                             : large.size() + 9);
                onMessage = [] {
                  const FileSizeLimit room(kNoLimit);
                  std::exit(5);
                };
                saver.api().contextValidateBinary(nullptr, nullptr, nullptr,
                                                  large.data(), large.size());
                return 0;
              }),
              5);
    EXPECT_EQ(replayedCalls(saver.directory()).size(), 1U);
    EXPECT_EQ(bytesRead(saver.modelText()), saver.data().size());
  }
}

// A call that has begun is recorded whole before the end.
TEST(Order, ExitWaitsForACallUnderWay) {
  const SaverLibrary saver;
  EXPECT_EQ(inChild([&] {
              saver.api().logCreate(callback, KIV_LOG_LEVEL_WARN, nullptr);
              static std::atomic<bool> isUnderWay = false;
              onMessage = [] {
                isUnderWay = true;
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
              };
              std::thread([&api = saver.api()] {
                Kiv_ContextHandle_t context = nullptr;
                api.contextCreate(nullptr, nullptr, nullptr, &context);
                // Warned of before it is written.
                api.contextFree(context, kUnknown);
              }).detach();
              while (!isUnderWay) std::this_thread::yield();
              return 5;
            }),
            5);
  EXPECT_TRUE(hasOneFooter(saver.modelText()));
  EXPECT_EQ(replayedCalls(saver.directory()).size(), 2U);
}

// A call that never ends keeps the end waiting, but not forever.
TEST(Order, ExitBesideACallThatHangs) {
  const SaverLibrary saver;
  EXPECT_EQ(inChild([&] {
              saver.api().logCreate(callback, KIV_LOG_LEVEL_WARN, nullptr);
              static std::atomic<bool> hangs = false;
              onMessage = [] {
                for (hangs = true;;) pause();
              };
              std::thread([&api = saver.api()] {
                api.propertyHasCapability(1);
                api.graphFinalize(nullptr, nullptr, nullptr);
              }).detach();
              while (!hangs) std::this_thread::yield();
              return 5;
            }),
            5);
  EXPECT_TRUE(hasOneFooter(saver.modelText()));
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)"}));
}

// A client that tidies up when something fails does it from here, too: after a
// call that was refused, and after one that could not be written.
TEST(Order, CallbackMakesRecordedCalls) {
  for (const bool writeFails : {false, true}) {
    SCOPED_TRACE(writeFails);
    expectInChild([&] {
      StartedSession c;
      c.api.logCreate(callback, KIV_LOG_LEVEL_WARN, nullptr);
      Code tidied = 1;
      onMessage = [&] {
        const FileSizeLimit room(kNoLimit);
        tidied = c.api.backendFree(c.backend);
      };
      {
        const FileSizeLimit full(writeFails ? c.saver.modelText().size()
                                            : kNoLimit);
        EXPECT_NE(c.api.graphFinalize(writeFails ? c.graph : nullptr, nullptr,
                                      nullptr),
                  0U);
      }
      EXPECT_EQ(tidied, 0U);
      c.saver.unload();
      EXPECT_EQ(replayedCalls(c.saver.directory()).size(), 6U);
    });
  }
}

// A client that goes into the background closes whatever is open.
TEST(Order, ClientClosesAllDescriptors) {
  for (const int choice : {0, 1, 2, 3}) {
    SCOPED_TRACE(choice);
    const bool writeFooter = choice < 2;
    const bool callsBetween = choice % 2 == 0;
    expectInChild([&] {
      SaverLibrary saver;
      const std::vector<Option> files = {filesOption("a.c", "a.bin"),
                                         footerOption(writeFooter)};
      EXPECT_EQ(saver.initialize(files), 0U);
      EXPECT_EQ(saver.api().propertyHasCapability(1), 0U);
      closefrom(3);
      // Its own files get the lowest numbers now.
      const std::filesystem::path own = saver.directory() / "own";
      writeFile(own, "client's");
      for (int i = 3; i < 10; ++i) EXPECT_EQ(open(own.c_str(), O_RDWR), i);
      // The old files cannot be ended as they should.
      EXPECT_EQ(callsBetween ? saver.api().propertyHasCapability(1)
                             : saver.initialize(files),
                callsBetween ? 1999U : 4999U);
      EXPECT_EQ(saver.initialize(files), 0U);
      EXPECT_EQ(readFile(own), "client's");
      EXPECT_EQ(lseek(9, 0, SEEK_CUR), 0) << "it is still open";
      EXPECT_EQ(saver.api().propertyHasCapability(2), 0U);
      EXPECT_TRUE(saver.unload());
      const std::string text = readFile(saver.directory() / "a.c");
      EXPECT_EQ(hasOneFooter(text), writeFooter);
      EXPECT_NE(text.find("(KivProperty_Key_t)2"), std::string::npos);
    });
  }
}

const Api* exitingApi;

TEST(Order, ExitWritesTheFooterAndLateCallsAreRefused) {
  const TempDirectory temp;
  EXPECT_EQ(inChild([&] {
              // Runs last, when the library's session has ended.
              std::atexit([] {
                const bool refused =
                    exitingApi->propertyHasCapability(2) == 4000 &&
                    exitingApi->errorGetMessage(0, nullptr) == 4000 &&
                    exitingApi->backendCreate(nullptr, nullptr, nullptr) ==
                        4004;
                _exit(refused ? 0 : 1);
              });
              // Lives on until the end of the process.
              static const auto* saver = new SaverLibrary;
              std::filesystem::remove(saver->directory().parent_path());
              const std::string path = temp.path().string();
              saver->initialize({directoryOption(path.c_str())});
              exitingApi = &saver->api();
              createObjects(*exitingApi);
              std::atexit([] { exitingApi->propertyHasCapability(1); });
              return 2;
            }),
            0);
  const std::string text = readFile(temp.path() / "saver_output.c");
  EXPECT_TRUE(text.ends_with("0 : error;\n}\n")) << text;
  EXPECT_NE(text.find("(KivProperty_Key_t)1"), std::string::npos);
  EXPECT_EQ(text.find("(KivProperty_Key_t)2"), std::string::npos);
}

// A callback that calls the logger's functions in the midst of a message.
const Api* callbackApi;
std::vector<std::string>* callbackFormats;

void reenter(const char* format, KivLog_Level_t level, uint64_t, va_list) {
  callbackFormats->push_back(std::to_string(level) + ": " + format);
  Kiv_LogHandle_t logger = nullptr;
  callbackApi->logSetLogLevel(nullptr, KIV_LOG_LEVEL_ERROR);
  callbackApi->logCreate(reenter, KIV_LOG_LEVEL_WARN, &logger);
  callbackApi->logFree(logger);
}

TEST(Order, CallbackMayCallTheLoggerAndGetsRawFormats) {
  EXPECT_EQ(
      inChild([] {
        std::vector<std::string> formats;
        callbackFormats = &formats;
        StartedSession c;
        callbackApi = &c.api;
        Kiv_LogHandle_t logger = nullptr;
        c.api.logCreate(reenter, KIV_LOG_LEVEL_WARN, &logger);
        c.createGraph("g", &c.graph);
        {
          const FileSizeLimit full(c.saver.modelText().size());
          c.api.propertyHasCapability(0);
        }
        const std::vector<std::string> expected = {
            "1: Graph with name %s already exists within the context",
            "1: Size of string written(%ld) does not match size of original "
            "string(%ld)"};
        EXPECT_EQ(formats, expected);
        EXPECT_EQ(c.api.logFree(logger), 0U);
        EXPECT_EQ(c.api.logFree(logger), 11002U);
        return ::testing::Test::HasFailure() ? 1 : 0;
      }),
      0);
}

}  // namespace
}  // namespace kiv::test
