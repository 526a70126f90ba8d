#include <gtest/gtest.h>

#include <cstring>

#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

class HandleTest : public testing::Test {
 protected:
  Kiv_ContextHandle_t createContext() {
    Kiv_ContextHandle_t context = nullptr;
    EXPECT_EQ(api_.contextCreate(nullptr, nullptr, nullptr, &context), 0u);
    return context;
  }

  Kiv_GraphHandle_t retrieve(Kiv_ContextHandle_t context, const char* name) {
    Kiv_GraphHandle_t graph = nullptr;
    EXPECT_EQ(api_.graphRetrieve(context, name, &graph), 0u);
    return graph;
  }

  std::string traceOfFree(Kiv_ContextHandle_t context) {
    EXPECT_EQ(api_.contextFree(context, nullptr), 0u);
    return run_.lastLine();
  }

  TracerRun run_;
  const KivInterface_Implementation_t& api_ = run_.api();
};

TEST_F(HandleTest, CountsEachKindFromZeroAndKeepsFreedOnes) {
  const Kiv_ContextHandle_t first = createContext();
  Kiv_BackendHandle_t backend = nullptr;
  api_.backendCreate(nullptr, nullptr, &backend);
  EXPECT_EQ(run_.lastLine(), "backendCreate(log, [], out) -> backend#0");
  const Kiv_ContextHandle_t second = createContext();
  EXPECT_EQ(traceOfFree(second), "contextFree(context#1, null)");
  EXPECT_EQ(traceOfFree(second), "contextFree(context#1, null)");
  EXPECT_EQ(traceOfFree(first), "contextFree(context#0, null)");
}

TEST_F(HandleTest, AcceptsHandlesItNeverGaveOut) {
  Kiv_BackendHandle_t backend = nullptr;
  api_.backendCreate(nullptr, nullptr, &backend);
  EXPECT_EQ(traceOfFree(&backend), "contextFree(context?, null)");
  EXPECT_EQ(traceOfFree(reinterpret_cast<void*>(1)),
            "contextFree(context?, null)");
  EXPECT_EQ(traceOfFree(backend), "contextFree(context?, null)");
  EXPECT_EQ(traceOfFree(nullptr), "contextFree(null, null)");
}

TEST_F(HandleTest, MakesNoneForANullTarget) {
  api_.contextCreate(nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(run_.lastLine(), "contextCreate(null, null, [], null)");
  api_.graphRetrieve(nullptr, "g", nullptr);
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(null, \"g\", null)");
  EXPECT_EQ(traceOfFree(createContext()), "contextFree(context#0, null)");
}

TEST_F(HandleTest, RetrievesAContextsGraphsByName) {
  const Kiv_ContextHandle_t context = createContext();
  const Kiv_ContextHandle_t other = createContext();
  Kiv_GraphHandle_t graph = nullptr;
  Kiv_GraphHandle_t subgraph = nullptr;
  api_.graphCreate(context, "g", nullptr, &graph);
  api_.graphCreateSubgraph(graph, "sub", &subgraph);
  EXPECT_EQ(run_.lastLine(),
            "graphCreateSubgraph(graph#0, \"sub\", out) -> graph#1");
  EXPECT_EQ(retrieve(context, "g"), graph);
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(context#0, \"g\", out) -> graph#0");
  EXPECT_EQ(retrieve(context, "sub"), subgraph);

  const Kiv_GraphHandle_t made = retrieve(other, "g");
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(context#1, \"g\", out) -> graph#2");
  EXPECT_EQ(retrieve(other, "g"), made);
}

TEST_F(HandleTest, GivesAContextsBinaryWithinTheBuffer) {
  const Kiv_ContextHandle_t context = createContext();
  Kiv_ContextBinarySize_t size = 0;
  EXPECT_EQ(api_.contextGetBinarySize(context, &size), 0u);
  EXPECT_EQ(run_.lastLine(), "contextGetBinarySize(context#0, out) -> 30");
  ASSERT_EQ(size, 30u);

  std::string buffer(size + 1, '#');
  Kiv_ContextBinarySize_t written = 0;
  api_.contextGetBinary(context, buffer.data(), size + 1, &written);
  EXPECT_EQ(run_.lastLine(), "contextGetBinary(context#0, out, 31, out) -> 30");
  EXPECT_EQ(buffer, "KIV_TRACER binary of context#0#");
  buffer.assign(buffer.size(), '#');
  api_.contextGetBinary(context, buffer.data(), 3, &written);
  EXPECT_EQ(written, 3u);
  EXPECT_EQ(buffer.substr(0, 4), "KIV#");
  api_.contextGetBinary(context, nullptr, 3, nullptr);
  EXPECT_EQ(run_.lastLine(), "contextGetBinary(context#0, null, 3, null)");
}

TEST_F(HandleTest, ShowsBinariesByLengthAndHash) {
  api_.contextValidateBinary(nullptr, nullptr, nullptr, "a", 1);
  EXPECT_EQ(run_.lastLine(),
            "contextValidateBinary(null, null, [], 1:af63dc4c8601ec8c, 1)");
  api_.contextValidateBinary(nullptr, nullptr, nullptr, nullptr, 1);
  EXPECT_EQ(run_.lastLine(), "contextValidateBinary(null, null, [], null, 1)");
  const std::string empty =
      "contextValidateBinary(null, null, [], 0:cbf29ce484222325, 0)";
  api_.contextValidateBinary(nullptr, nullptr, nullptr, "a", 0);
  EXPECT_EQ(run_.lastLine(), empty);
  api_.contextValidateBinary(nullptr, nullptr, nullptr, nullptr, 0);
  EXPECT_EQ(run_.lastLine(), empty);
}

}  // namespace
}  // namespace kiv::tracer::test
