#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <locale>
#include <thread>

#include "library/client.h"

// The library within a process: its locale, its end, its logger.
namespace kiv::test {
namespace {

class CommaPunctuation : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Numbers of every kind, named letters beyond ASCII.
std::string localeSession() {
  Client c;
  Kiv_Tensor_t tensor = emptyTensor();
  uint32_t dimensions[] = {1234567};
  tensor.v1.rank = 1;
  tensor.v1.dimensions = dimensions;
  tensor.v1.quantizeParams.quantizationEncoding =
      KIV_QUANTIZATION_ENCODING_SCALE_OFFSET;
  tensor.v1.quantizeParams.scaleOffsetEncoding = {0.1F, -12345};
  EXPECT_EQ(c.api.tensorCreateGraphTensor(c.graph, &tensor), 0U);
  EXPECT_EQ(c.api.graphAddNode(c.graph, emptyOpConfig("n\xE9\xC3\xA9")), 0U);
  return c.newText();
}

TEST(Process, TextIsTheSameInEveryLocale) {
  const std::string expected = localeSession();
  EXPECT_NE(expected.find("{0.100000001, -12345}"), std::string::npos);
  EXPECT_NE(expected.find("n_0_v1"), std::string::npos);
  const std::locale before = std::locale::global(
      std::locale(std::locale::classic(), new CommaPunctuation));
  EXPECT_EQ(localeSession(), expected);
  std::locale::global(before);
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE.ISO-8859-1"}) {
    if (std::setlocale(LC_ALL, name) == nullptr) continue;
    EXPECT_EQ(localeSession(), expected) << name;
  }
  std::setlocale(LC_ALL, "C");
}

const Api* exitingApi;

TEST(Process, ExitWritesTheFooterAndLateCallsAreRefused) {
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
              KivSaver_Config_t directory{};
              directory.outputDirectory = path.c_str();
              saver->initialize({&directory});
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

TEST(Process, CallbackMayCallTheLoggerAndGetsRawFormats) {
  EXPECT_EQ(
      inChild([] {
        std::vector<std::string> formats;
        callbackFormats = &formats;
        Client c;
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

TEST(Process, MessagesAboveTheLevelAreDropped) {
  const SaverLibrary saver;
  LogCapture log(saver.api(), KIV_LOG_LEVEL_ERROR);
  KivSaver_Config_t directory{};
  EXPECT_EQ(saver.initialize({&directory}), 0U);
  EXPECT_TRUE(log.take().empty());
  saver.api().logSetLogLevel(nullptr, KIV_LOG_LEVEL_WARN);
  EXPECT_EQ(saver.initialize({&directory}), 0U);
  EXPECT_EQ(log.take().size(), 1U);
}

TEST(Process, CallsFromManyThreadsStayWhole) {
  Client c;
  std::vector<std::thread> threads;
  for (char letter = 'a'; letter < 'e'; ++letter) {
    threads.emplace_back([&c, letter] {
      char data[] = {letter, letter, letter};
      for (int i = 0; i < 25; ++i) {
        Kiv_Tensor_t tensor = tensorWithData(data, 3);
        c.api.tensorCreateContextTensor(c.context, &tensor);
        c.execute(c.graph, {tensor});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string data = c.newData();
  ASSERT_EQ(data.size(), 4U * 25 * 2 * 3);
  for (std::size_t i = 0; i < data.size(); i += 3)
    EXPECT_EQ(data.substr(i, 3), std::string(3, data[i]));
  // All ids and numbers are there once.
  const std::string text = c.newText();
  for (int i = 0; i < 100; ++i) {
    const std::string number = std::to_string(i);
    EXPECT_NE(text.find("&context_0_tensor_" + number + ")"),
              std::string::npos);
    EXPECT_NE(text.find("g_inputTensors_" + number + ", 1"), std::string::npos);
  }
}

}  // namespace
}  // namespace kiv::test
