#include <gtest/gtest.h>

#include <thread>

#include "library/started_session.h"
#include "support/comma_locale.h"

// The library within a process: its locale, its end, its logger.
namespace kiv::test {
namespace {

// Numbers of every kind, named letters beyond ASCII.
std::string localeSession() {
  StartedSession c;
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
  const CommaLocale locale;
  EXPECT_EQ(localeSession(), expected);
}

TEST(Process, MessagesAboveTheLevelAreDropped) {
  const SaverLibrary saver;
  LogCapture log(saver.api(), KIV_LOG_LEVEL_ERROR);
  EXPECT_EQ(saver.initialize({directoryOption(nullptr)}), 0U);
  EXPECT_TRUE(log.take().empty());
  saver.api().logSetLogLevel(nullptr, KIV_LOG_LEVEL_WARN);
  EXPECT_EQ(saver.initialize({directoryOption(nullptr)}), 0U);
  EXPECT_EQ(log.take().size(), 1U);
}

TEST(Process, CallsFromManyThreadsStayWhole) {
  StartedSession c;
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
