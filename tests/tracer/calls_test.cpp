#include <gtest/gtest.h>

#include <cstring>

#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

using Table = KivInterface_Implementation_t;

class Client {
 public:
  explicit Client(const Table& api) : api_(api) {}

  // Calls each function once, those of the logger with `logger`.
  void callEverything(Kiv_LogHandle_t logger) {
    open(logger);
    buildAndExecute();
    profile();
    useOptionalParts();
    close(logger);
  }

 private:
  void check(Kiv_ErrorHandle_t status) { EXPECT_EQ(status, 0u); }

  void open(Kiv_LogHandle_t logger) {
    check(api_.propertyHasCapability(5));
    Kiv_ApiVersion_t version = {};
    check(api_.backendGetApiVersion(&version));
    EXPECT_EQ(version.coreApiVersion.majorVersion, KIV_CORE_API_VERSION_MAJOR);
    const char* text = nullptr;
    check(api_.backendGetBuildId(&text));
    EXPECT_NE(text, nullptr);
    check(api_.logCreate(nullptr, KIV_LOG_LEVEL_INFO, &log_));
    EXPECT_NE(log_, nullptr);
    check(api_.logSetLogLevel(log_, KIV_LOG_LEVEL_ERROR));
    check(api_.backendCreate(logger, nullptr, &backend_));
    check(api_.backendSetConfig(backend_, nullptr));
    check(api_.backendRegisterOpPackage(backend_, "a.so", nullptr, "CPU"));
    uint32_t count = 9;
    const KivBackend_OperationName_t* operations = &operation_;
    check(api_.backendGetSupportedOperations(backend_, &count, &operations));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(operations, nullptr);
    check(api_.backendValidateOpConfig(backend_, {}));
    check(api_.deviceCreate(logger, nullptr, &device_));
    check(api_.deviceSetConfig(device_, nullptr));
    check(api_.deviceGetPlatformInfo(logger, &platform_));
    ASSERT_EQ(platform_->version, KIV_DEVICE_PLATFORM_INFO_VERSION_1);
    check(api_.deviceFreePlatformInfo(logger, platform_));
    check(api_.deviceGetInfo(device_, &platform_));
    check(api_.deviceGetInfrastructure(nullptr));
    check(api_.contextCreate(backend_, device_, nullptr, &context_));
    check(api_.contextSetConfig(context_, nullptr));
    check(api_.contextGetBinarySize(context_, nullptr));
    check(api_.contextGetBinary(context_, nullptr, 0, nullptr));
    check(api_.contextValidateBinary(backend_, device_, nullptr, "ab", 2));
  }

  void buildAndExecute() {
    check(api_.graphCreate(context_, "g", nullptr, &graph_));
    check(api_.graphCreateSubgraph(graph_, "s", nullptr));
    check(api_.graphSetConfig(graph_, nullptr));
    Kiv_Tensor_t tensor = {};
    check(api_.tensorCreateContextTensor(context_, &tensor));
    check(api_.tensorCreateGraphTensor(graph_, &tensor));
    check(api_.graphAddNode(graph_, {}));
    check(api_.profileCreate(backend_, 2, &profile_));
    check(api_.signalCreate(backend_, nullptr, &signal_));
    check(api_.graphFinalize(graph_, profile_, signal_));
    check(api_.graphRetrieve(context_, "g", &graph_));
    check(api_.graphExecute(graph_, &tensor, 1, &tensor, 1, profile_, nullptr));
    bool isNotified = false;
    check(api_.graphExecuteAsync(
        graph_, nullptr, 0, nullptr, 0, nullptr, signal_,
        [](void* argument, Kiv_ErrorHandle_t) {
          *static_cast<bool*>(argument) = true;
        },
        &isNotified));
    EXPECT_TRUE(isNotified);
    Kiv_ContextHandle_t context = nullptr;
    check(api_.contextCreateFromBinary(nullptr, nullptr, nullptr, "ab", 2,
                                       &context, profile_));
    check(api_.contextCreateFromBinaryWithSignal(
        nullptr, nullptr, nullptr, "ab", 2, &context, nullptr, signal_));
  }

  void profile() {
    const KivProfile_EventId_t* events = &event_;
    uint32_t count = 9;
    check(api_.profileSetConfig(profile_, nullptr));
    check(api_.profileGetEvents(profile_, &events, &count));
    EXPECT_EQ(events, nullptr);
    EXPECT_EQ(count, 0u);
    check(api_.profileGetSubEvents(7, nullptr, &count));
    KivProfile_EventData_t data;
    check(api_.profileGetEventData(7, &data));
    EXPECT_STREQ(data.identifier, "");
    check(api_.profileGetExtendedEventData(7, nullptr));
    check(api_.profileFree(profile_));
  }

  void useOptionalParts() {
    const KivMem_Descriptor_t pieces[] = {{3}, {4}};
    Kiv_MemHandle_t memory[2] = {};
    check(api_.memRegister(context_, pieces, 2, memory));
    check(api_.memDeRegister(memory, 2));
    const KivSignal_Config_t option = {6};
    const KivSignal_Config_t* options[] = {&option, nullptr};
    check(api_.signalSetConfig(signal_, options));
    check(api_.signalTrigger(signal_));
    check(api_.signalFree(signal_));
    const char* text = nullptr;
    check(api_.errorGetMessage(1004, &text));
    EXPECT_NE(text, nullptr);
    check(api_.errorGetLongMessage(1004, &text));
    check(api_.errorFreeLongMessage(text));
    const KivGraph_EnvironmentDescriptor_t part = {1};
    const KivGraph_EnvironmentDescriptor_t* parts[] = {&part, nullptr};
    check(api_.graphPrepareEnvironment(graph_, parts, 2));
    check(api_.graphReleaseEnvironment(graph_, nullptr, 2));
    KivGraph_Property_t property = {8};
    KivGraph_Property_t* target = &property;
    check(api_.graphGetProperty(graph_, &target));
    check(api_.laterOperation56(graph_, nullptr));
    check(api_.laterOperation57(&property, &property));
    check(api_.laterOperation58(nullptr, nullptr));
  }

  void close(Kiv_LogHandle_t logger) {
    check(api_.contextFree(context_, nullptr));
    check(api_.deviceFree(device_));
    check(api_.backendFree(backend_));
    check(api_.logFree(logger));
  }

  const Table& api_;
  const KivBackend_OperationName_t operation_ = {};
  const KivProfile_EventId_t event_ = 0;
  Kiv_LogHandle_t log_ = nullptr;
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_DeviceHandle_t device_ = nullptr;
  const KivDevice_PlatformInfo_t* platform_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
  Kiv_GraphHandle_t graph_ = nullptr;
  Kiv_ProfileHandle_t profile_ = nullptr;
  Kiv_SignalHandle_t signal_ = nullptr;
};

constexpr char kTraceOfEverything[] =
    R"(propertyHasCapability(5)
backendCreate(log, [], out) -> backend#0
backendSetConfig(backend#0, [])
backendRegisterOpPackage(backend#0, "a.so", null, "CPU")
backendGetSupportedOperations(backend#0, out, out)
backendValidateOpConfig(backend#0, {version=0})
deviceCreate(log, [], out) -> device#0
deviceSetConfig(device#0, [])
deviceGetPlatformInfo(log, out)
deviceFreePlatformInfo(log, {version=1, count=1, devices=[{version=1, id=0, type=0, count=2, cores=[{version=1, id=0, type=0}, {version=1, id=1, type=0}]}]})
deviceGetInfo(device#0, out)
deviceGetInfrastructure(null)
contextCreate(backend#0, device#0, [], out) -> context#0
contextSetConfig(context#0, [])
contextGetBinarySize(context#0, null)
contextGetBinary(context#0, null, 0, null)
contextValidateBinary(backend#0, device#0, [], 2:089c4407b545986a, 2)
graphCreate(context#0, "g", [], out) -> graph#0
graphCreateSubgraph(graph#0, "s", null)
graphSetConfig(graph#0, [])
tensorCreateContextTensor(context#0, {version=0})
tensorCreateGraphTensor(graph#0, {version=0})
graphAddNode(graph#0, {version=0})
profileCreate(backend#0, 2, out) -> profile#0
signalCreate(backend#0, [], out) -> signal#0
graphFinalize(graph#0, profile#0, signal#0)
graphRetrieve(context#0, "g", out) -> graph#0
graphExecute(graph#0, [{version=0}], 1, [{version=0}], 1, profile#0, null)
graphExecuteAsync(graph#0, [], 0, [], 0, null, signal#0, <set>, <set>)
contextCreateFromBinary(null, null, [], 2:089c4407b545986a, 2, out, profile#0) -> context#1
contextCreateFromBinaryWithSignal(null, null, [], 2:089c4407b545986a, 2, out, null, signal#0) -> context#2
profileSetConfig(profile#0, [])
profileGetEvents(profile#0, out, out)
profileGetSubEvents(7, null, out)
profileGetEventData(7, out)
profileGetExtendedEventData(7, null)
profileFree(profile#0)
memRegister(context#0, [{kind=3}, {kind=4}], 2, out) -> [mem#0, mem#1]
memDeRegister([mem#0, mem#1], 2)
signalSetConfig(signal#0, [{option=6}])
signalTrigger(signal#0)
signalFree(signal#0)
errorGetMessage(1004, out)
errorGetLongMessage(1004, out)
errorFreeLongMessage("no long message")
graphPrepareEnvironment(graph#0, [{version=1}, null], 2)
graphReleaseEnvironment(graph#0, null, 2)
graphGetProperty(graph#0, [{key=8}])
laterOperation56(graph#0, null)
laterOperation57(handle?, <set>)
laterOperation58(null, null)
contextFree(context#0, null)
deviceFree(device#0)
backendFree(backend#0)
)";

TEST(CallsTest, FillsTheTableUpToTheReservedSlots) {
  const TracerRun run;
  void* slots[69];
  static_assert(sizeof slots == sizeof run.api());
  std::memcpy(slots, &run.api(), sizeof slots);
  for (int slot = 0; slot < 59; ++slot) EXPECT_NE(slots[slot], nullptr) << slot;
  for (int slot = 59; slot < 69; ++slot) {
    EXPECT_EQ(slots[slot], nullptr) << slot;
  }
  EXPECT_STREQ(run.provider().providerName, "KIV_TRACER");
  EXPECT_EQ(run.provider().backendId, 100u);
}

// The second run has a logger, which the trace does not tell.
TEST(CallsTest, TracesEveryCallAlikeInEveryRun) {
  for (void* logger :
       {static_cast<void*>(nullptr), reinterpret_cast<void*>(1)}) {
    const TracerRun run;
    Client(run.api()).callEverything(logger);
    EXPECT_EQ(run.text(), kTraceOfEverything);
  }
}

TEST(CallsTest, ShowsCallsOfTheLoggerOnRequest) {
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

TEST(CallsTest, LeavesTheBuffersOfAnExecutionAlone) {
  const TracerRun run;
  uint8_t bytes[] = {1, 2, 3};
  Kiv_Tensor_t output = {};
  output.version = KIV_TENSOR_VERSION_1;
  output.v1.dataType = KIV_DATA_TYPE_UINT_8;
  output.v1.id = 12;
  output.v1.clientBuf = {bytes, sizeof bytes};
  run.api().graphExecute(nullptr, nullptr, 0, &output, 1, nullptr, nullptr);
  const std::string line = run.lastLine();
  EXPECT_NE(line.find("[{version=1, id=12,"), std::string::npos) << line;
  EXPECT_NE(line.find("data=3:d0aa6218672cf5ab}]"), std::string::npos) << line;
  EXPECT_EQ(bytes[0] + bytes[1] + bytes[2], 6);
}

}  // namespace
}  // namespace kiv::tracer::test
