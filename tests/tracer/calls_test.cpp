#include <gtest/gtest.h>

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

// Handles are counted by kind, and known when they were freed.
TEST(TracerCalls, ShowsWhatNobodyWasGiven) {
  const TracerRun run;
  Kiv_ContextHandle_t context = nullptr;
  Kiv_BackendHandle_t backend = nullptr;
  run.api().contextCreate(nullptr, nullptr, nullptr, &context);
  run.api().backendCreate(nullptr, nullptr, &backend);
  for (int i = 0; i < 2; ++i) {
    run.api().contextFree(context, nullptr);
    EXPECT_EQ(run.lastLine(), "contextFree(context#0, null)");
  }
  for (void* other : {backend, static_cast<void*>(&backend),
                      static_cast<void*>(static_cast<char*>(context) + 1)}) {
    run.api().contextFree(other, nullptr);
    EXPECT_EQ(run.lastLine(), "contextFree(context?, null)");
  }
}

}  // namespace
}  // namespace kiv::test
