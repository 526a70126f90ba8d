#include <gtest/gtest.h>

#include <algorithm>

#include "recording/recording.h"
#include "recording/replayer.h"
#include "recording/text_client.h"
#include "support/records.h"
#include "support/saver_library.h"
#include "tracer/tracer_run.h"

namespace kiv::test {
namespace {

using namespace recording;

using Client = std::function<void(const KivInterface_Implementation_t&)>;

// What a client's calls are on Tracer, and what those of its recording are.
struct Comparison {
  std::string direct;
  std::string replayed;
  bool isAmbiguous = false;
  std::string problems;
};

Comparison compare(const Client& client) {
  Comparison result;
  {
    const TracerRun run;
    client(run.api());
    result.direct = run.text();
  }
  SaverLibrary saver;
  client(saver.api());
  saver.unload();
  const auto recording = Recording::open(saver.directory()).recording;
  for (const Problem& problem : recording->problems()) {
    result.isAmbiguous |= problem.severity == Severity::kAmbiguous;
    result.problems += toString(problem) + "\n";
  }
  const TracerRun run;
  std::string why;
  const auto backend = Backend::load(KIV_TRACER_LIBRARY, why);
  const ReplayResult replay = Replayer(*recording, {}, *backend).run({});
  if (replay.refusal) result.problems += toString(*replay.refusal);
  if (replay.fault) result.problems += toString(*replay.fault);
  result.replayed = run.text();
  return result;
}

// Where two readings are whole the wrong one may be taken, but never in
// silence, and that is rare.
TEST(RecordingTexts, PiecesOfRecordingsAreReadBack) {
  constexpr unsigned kSessions = 200;
  unsigned equal = 0;
  for (unsigned seed = 1; seed <= kSessions; ++seed) {
    const Comparison texts =
        compare([seed](const auto& api) { runTextSession(api, seed); });
    if (texts.direct == texts.replayed) {
      ++equal;
      continue;
    }
    EXPECT_TRUE(texts.isAmbiguous) << "seed " << seed << "\n" << texts.problems;
  }
  EXPECT_GT(equal, kSessions * 85 / 100);
}

Client graphWithTensor(const char* name) {
  return [name](const KivInterface_Implementation_t& api) {
    const Objects objects = createObjects(api);
    Kiv_Tensor_t tensor = emptyTensor();
    tensor.v1.name = name;
    api.tensorCreateGraphTensor(objects.graph, &tensor);
    api.graphFinalize(objects.graph, nullptr, nullptr);
  };
}

TEST(RecordingTexts, NamesWithQuotesHaveOneReading) {
  for (const char* name :
       {R"({"1": "1_minute_timer", "2": "2_hour_timer"})", "a\\", "\"",
        "a\", NULL};\n\r\n", "\n   VALIDATE(error, interface.graphFree(g));\n",
        "#if 0\n\"", "\"};\n   }\n}\n"}) {
    const Comparison texts = compare(graphWithTensor(name));
    EXPECT_EQ(texts.direct, texts.replayed);
    EXPECT_EQ(texts.problems, "") << name;
  }
}

// A compiler would take the rest of the name for a comment, or for a record of
// the same name.
TEST(RecordingTexts, ATextThatHoldsAStatementsEndIsReportedAndReadBack) {
  const std::string end =
      "x\", (Kiv_TensorType_t)0, 0, (Kiv_DataType_t)562, "
      "graph_a_tensor_0_quantizeParams, 0, NULL, (Kiv_TensorMemType_t)0, "
      "graph_a_tensor_0_clientBuf};\n   ";
  for (const char* behind :
       {"// ", "Kiv_TensorV1_t graph_a_tensor_0_v1 = {0, \"y"}) {
    const std::string name = end + behind;
    const Comparison texts = compare(graphWithTensor(name.c_str()));
    EXPECT_EQ(texts.direct, texts.replayed);
    EXPECT_TRUE(texts.isAmbiguous) << behind;
  }
}

// {"a", "b", "c", "d", 0, ...} has three texts: the variable's name says where
// the first ends, and texts that are named again where the others do.
TEST(RecordingTexts, TheRestOfTheRecordingChoosesBetweenReadings) {
  const Comparison texts = compare([](const auto& api) {
    const Objects objects = createObjects(api);
    for (const char* name : {"a\", \"b", "plain", "a"}) {
      Kiv_OpConfig_t node = emptyOpConfig(name);
      node.v1.packageName = name[1] == '\0' ? "p\", \"q" : "pkg";
      node.v1.typeName = "Conv";
      api.graphAddNode(objects.graph, node);
    }
  });
  EXPECT_EQ(texts.direct, texts.replayed);
  EXPECT_TRUE(texts.isAmbiguous);
}

}  // namespace
}  // namespace kiv::test
