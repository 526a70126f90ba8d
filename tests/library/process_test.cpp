#include <gtest/gtest.h>

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

}  // namespace
}  // namespace kiv::test
