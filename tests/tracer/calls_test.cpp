#include <gtest/gtest.h>

#include <algorithm>

#include "golden/golden_session.h"
#include "tracer_run.h"

namespace kiv::test {
namespace {

// Every function that a recording may hold, with every option and record.
TEST(TracerCalls, ShowsTheGoldenSession) {
  const TracerRun run("KIV_TRACER_CUSTOM", "gpu");
  for (const Kiv_ErrorHandle_t status : runGoldenSession(run.api())) {
    EXPECT_EQ(status, KIV_SUCCESS);
  }
  EXPECT_EQ(run.text(), readFile(KIV_GOLDEN_TRACE));
}

TEST(TracerCalls, ShowsSignalsAndMemoryWhichNoRecordingHolds) {
  const TracerRun run;
  const auto& api = run.api();
  Kiv_ContextHandle_t context = nullptr;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_SignalHandle_t signal = nullptr;
  api.logCreate(nullptr, KIV_LOG_LEVEL_INFO, nullptr);  // shows on request
  api.signalCreate(nullptr, nullptr, &signal);
  api.profileCreate(nullptr, 1, &profile);
  uint32_t count = 9;
  api.profileGetEvents(profile, nullptr, &count);
  EXPECT_EQ(count, 0u);
  api.contextCreateFromBinaryWithSignal(nullptr, nullptr, nullptr, "a", 1,
                                        &context, profile, signal);
  api.graphFinalize(nullptr, nullptr, signal);
  api.graphExecute(nullptr, nullptr, 0, nullptr, 0, nullptr, signal);
  bool isNotified = false;
  const auto notify = [](void* argument, Kiv_ErrorHandle_t status) {
    *static_cast<bool*>(argument) = status == KIV_SUCCESS;
  };
  api.graphExecuteAsync(nullptr, nullptr, 0, nullptr, 0, nullptr, signal,
                        notify, &isNotified);
  EXPECT_TRUE(isNotified);
  const KivMem_Descriptor_t pieces[] = {{3}, {4}};
  Kiv_MemHandle_t memory[2] = {};
  api.memRegister(context, pieces, 2, memory);
  std::swap(memory[0], memory[1]);
  api.memDeRegister(memory, 2);
  EXPECT_EQ(run.text(), R"(signalCreate(null, [], out) -> signal#0
profileCreate(null, 1, out) -> profile#0
profileGetEvents(profile#0, null, out)
contextCreateFromBinaryWithSignal(null, null, [], 1:af63dc4c8601ec8c, 1, out, profile#0, signal#0) -> context#0
graphFinalize(null, null, signal#0)
graphExecute(null, [], 0, [], 0, null, signal#0)
graphExecuteAsync(null, [], 0, [], 0, null, signal#0, <set>, <set>)
memRegister(context#0, [{kind=3}, {kind=4}], 2, out) -> [mem#0, mem#1]
memDeRegister([mem#1, mem#0], 2)
)");
}

TEST(TracerCalls, ShowsCallsOfTheLoggerOnRequest) {
  const TracerRun run("KIV_TRACER_LOG", "1");
  Kiv_LogHandle_t log = nullptr;
  run.api().logCreate(nullptr, KIV_LOG_LEVEL_INFO, &log);
  run.api().logSetLogLevel(log, KIV_LOG_LEVEL_ERROR);
  run.api().backendCreate(log, nullptr, nullptr);
  run.api().logFree(log);
  EXPECT_EQ(run.text(),
            "logCreate(null, 3, out) -> log#0\n"
            "logSetLogLevel(log#0, 1)\n"
            "backendCreate(log, [], null)\n"
            "logFree(log#0)\n");
}

class TracerHandles : public testing::Test {
 protected:
  Kiv_ContextHandle_t createContext() {
    Kiv_ContextHandle_t context = nullptr;
    api_.contextCreate(nullptr, nullptr, nullptr, &context);
    return context;
  }

  Kiv_GraphHandle_t retrieve(Kiv_ContextHandle_t context, const char* name) {
    Kiv_GraphHandle_t graph = nullptr;
    api_.graphRetrieve(context, name, &graph);
    return graph;
  }

  std::string traceOfFree(Kiv_ContextHandle_t context) {
    api_.contextFree(context, nullptr);
    return run_.lastLine();
  }

  TracerRun run_;
  const KivInterface_Implementation_t& api_ = run_.api();
};

TEST_F(TracerHandles, AreCountedByKindAndKeptWhenFreed) {
  const Kiv_ContextHandle_t first = createContext();
  Kiv_BackendHandle_t backend = nullptr;
  api_.backendCreate(nullptr, nullptr, &backend);
  api_.contextCreate(nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(run_.lastLine(), "contextCreate(null, null, [], null)");
  const Kiv_ContextHandle_t second = createContext();
  EXPECT_EQ(traceOfFree(second), "contextFree(context#1, null)");
  EXPECT_EQ(traceOfFree(second), "contextFree(context#1, null)");
  EXPECT_EQ(traceOfFree(first), "contextFree(context#0, null)");
  // Those of another kind, and what was never handed out.
  for (void* other : {backend, static_cast<void*>(&backend),
                      static_cast<void*>(static_cast<char*>(second) + 1)}) {
    EXPECT_EQ(traceOfFree(other), "contextFree(context?, null)");
  }
}

TEST_F(TracerHandles, AreRetrievedByContextAndName) {
  const Kiv_ContextHandle_t context = createContext();
  const Kiv_ContextHandle_t other = createContext();
  Kiv_GraphHandle_t graph = nullptr;
  Kiv_GraphHandle_t subgraph = nullptr;
  api_.graphCreate(context, "g", nullptr, &graph);
  api_.graphCreateSubgraph(graph, "sub", &subgraph);
  EXPECT_EQ(retrieve(context, "sub"), subgraph);
  EXPECT_EQ(retrieve(context, "g"), graph);
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(context#0, \"g\", out) -> graph#0");

  api_.graphRetrieve(other, "g", nullptr);
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(context#1, \"g\", null)");
  const Kiv_GraphHandle_t made = retrieve(other, "g");
  EXPECT_EQ(run_.lastLine(), "graphRetrieve(context#1, \"g\", out) -> graph#2");
  EXPECT_EQ(retrieve(other, "g"), made);
}

TEST_F(TracerHandles, OfTensorsAreIdsThatAreWrittenBack) {
  Kiv_Tensor_t tensors[2] = {};
  tensors[0].version = KIV_TENSOR_VERSION_1;
  tensors[1].version = KIV_TENSOR_VERSION_2;
  api_.tensorCreateContextTensor(nullptr, &tensors[0]);
  api_.tensorCreateGraphTensor(nullptr, &tensors[1]);
  EXPECT_EQ(tensors[0].v1.id, 1u);
  EXPECT_EQ(tensors[1].v2.id, 2u);
  api_.tensorCreateGraphTensor(nullptr, nullptr);
  EXPECT_EQ(run_.lastLine(), "tensorCreateGraphTensor(null, null)");
}

TEST_F(TracerHandles, OfContextsGiveABinaryWithinTheBuffer) {
  const Kiv_ContextHandle_t context = createContext();
  const std::string binary = "KIV_TRACER binary of context#0";
  Kiv_ContextBinarySize_t written = 0;
  for (const Kiv_ContextBinarySize_t size : {3u, 30u, 31u}) {
    std::string buffer(31, '#');
    api_.contextGetBinary(context, buffer.data(), size, &written);
    EXPECT_EQ(written, std::min<Kiv_ContextBinarySize_t>(size, 30));
    EXPECT_EQ(buffer, binary.substr(0, size) + std::string(31 - written, '#'));
  }
  EXPECT_EQ(run_.lastLine(), "contextGetBinary(context#0, out, 31, out) -> 30");
  api_.contextGetBinary(context, nullptr, 3, nullptr);
  EXPECT_EQ(run_.lastLine(), "contextGetBinary(context#0, null, 3, null)");
}

}  // namespace
}  // namespace kiv::test
