#include <gtest/gtest.h>

#include "library/started_session.h"

namespace kiv::test {
namespace {

namespace fs = std::filesystem;

// An entry called with nothing but null and zero.
struct NullCall {
  const char* name;
  Code (*call)(const Api& api);
  // While the files cannot be opened; other than 4000 for entries that answer
  // before the session starts.
  Code withoutFiles;
  Code code;
  const char* message;
};

constexpr const char* kContextOut = "Provided context handle pointer is NULL";
constexpr const char* kContextIsNull = "Provided context handle is NULL";
constexpr const char* kGraph = "Provided graph handle is NULL";
constexpr const char* kTensor = "Provided tensor ptr is NULL";
constexpr const char* kProfile = "Provided profile handle is NULL";
constexpr const char* kDeviceIsNull = "Provided device handle is NULL";

#define KIV_CALL(name, ...) \
#name, [](const Api& api) { return api.name(__VA_ARGS__); }

// In slot order. The codes of null handles differ between entries.
const NullCall kNullCalls[] = {
    {KIV_CALL(propertyHasCapability, 0), 4000, 0, nullptr},
    {KIV_CALL(backendCreate, nullptr, nullptr, nullptr), 4004, 4004,
     "Provided backend handle pointer is NULL"},
    {KIV_CALL(backendSetConfig, nullptr, nullptr), 4000, 0, nullptr},
    {KIV_CALL(backendGetApiVersion, nullptr), 4004, 4004, nullptr},
    {KIV_CALL(backendGetBuildId, nullptr), 4004, 4004, nullptr},
    {KIV_CALL(backendRegisterOpPackage, nullptr, nullptr, nullptr, nullptr),
     4000, 0, nullptr},
    {KIV_CALL(backendGetSupportedOperations, nullptr, nullptr, nullptr), 4000,
     0, nullptr},
    {KIV_CALL(backendValidateOpConfig, nullptr, emptyOpConfig(nullptr)), 4000,
     0, nullptr},
    {KIV_CALL(backendFree, nullptr), 4000, 4999,
     "Could not free backend handle"},
    {KIV_CALL(contextCreate, nullptr, nullptr, nullptr, nullptr), 4000, 5000,
     kContextOut},
    {KIV_CALL(contextSetConfig, nullptr, nullptr), 4000, 5002, kContextIsNull},
    {KIV_CALL(contextGetBinarySize, nullptr, nullptr), 4000, 5002,
     kContextIsNull},
    {KIV_CALL(contextGetBinary, nullptr, nullptr, 0, nullptr), 4000, 5002,
     kContextIsNull},
    {KIV_CALL(contextCreateFromBinary, nullptr, nullptr, nullptr, nullptr, 0,
              nullptr, nullptr),
     4000, 5000, kContextOut},
    {KIV_CALL(contextFree, nullptr, nullptr), 4000, 5002, kContextIsNull},
    {KIV_CALL(graphCreate, nullptr, nullptr, nullptr, nullptr), 4000, 5002,
     kContextIsNull},
    {KIV_CALL(graphCreateSubgraph, nullptr, nullptr, nullptr), 4000, 6001,
     kGraph},
    {KIV_CALL(graphSetConfig, nullptr, nullptr), 4000, 6001, kGraph},
    {KIV_CALL(graphAddNode, nullptr, emptyOpConfig(nullptr)), 4000, 6001,
     kGraph},
    {KIV_CALL(graphFinalize, nullptr, nullptr, nullptr), 4000, 6001, kGraph},
    {KIV_CALL(graphRetrieve, nullptr, nullptr, nullptr), 4000, 5002,
     kContextIsNull},
    {KIV_CALL(graphExecute, nullptr, nullptr, 1, nullptr, 1, nullptr, nullptr),
     4000, 6001, kGraph},
    {KIV_CALL(graphExecuteAsync, nullptr, nullptr, 0, nullptr, 0, nullptr,
              nullptr, nullptr, nullptr),
     1000, 1000, nullptr},
    {KIV_CALL(tensorCreateContextTensor, nullptr, nullptr), 7004, 7004,
     kTensor},
    {KIV_CALL(tensorCreateGraphTensor, nullptr, nullptr), 7004, 7004, kTensor},
    {KIV_CALL(profileCreate, nullptr, 0, nullptr), 4000, 1004,
     "Provided profile handle pointer is NULL"},
    {KIV_CALL(profileSetConfig, nullptr, nullptr), 4000, 12000, kProfile},
    {KIV_CALL(profileGetEvents, nullptr, nullptr, nullptr), 4000, 12000,
     kProfile},
    {KIV_CALL(profileGetSubEvents, 0, nullptr, nullptr), 4000, 0, nullptr},
    {KIV_CALL(profileGetEventData, 0, nullptr), 4000, 0, nullptr},
    {KIV_CALL(profileGetExtendedEventData, 0, nullptr), 4000, 0, nullptr},
    {KIV_CALL(profileFree, nullptr), 4000, 12000, kProfile},
    {KIV_CALL(memRegister, nullptr, nullptr, 0, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(memDeRegister, nullptr, 0), 1000, 1000, nullptr},
    {KIV_CALL(deviceGetPlatformInfo, nullptr, nullptr), 4000, 0, nullptr},
    {KIV_CALL(deviceFreePlatformInfo, nullptr, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(deviceGetInfrastructure, nullptr), 4000, 0, nullptr},
    {KIV_CALL(deviceCreate, nullptr, nullptr, nullptr), 4000, 1004,
     "Provided device handle pointer is NULL"},
    {KIV_CALL(deviceSetConfig, nullptr, nullptr), 4000, 14000, kDeviceIsNull},
    {KIV_CALL(deviceGetInfo, nullptr, nullptr), 4000, 14000, kDeviceIsNull},
    {KIV_CALL(deviceFree, nullptr), 4000, 14000, kDeviceIsNull},
    {KIV_CALL(signalCreate, nullptr, nullptr, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(signalSetConfig, nullptr, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(signalTrigger, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(signalFree, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(errorGetMessage, 0, nullptr), 4000, 1000, nullptr},
    {KIV_CALL(errorGetLongMessage, 0, nullptr), 4000, 1000, nullptr},
    {KIV_CALL(errorFreeLongMessage, nullptr), 4000, 1000, nullptr},
    {KIV_CALL(graphPrepareEnvironment, nullptr, nullptr, 0), 6001, 6001,
     nullptr},
    {KIV_CALL(graphReleaseEnvironment, nullptr, nullptr, 0), 6001, 6001,
     nullptr},
    {KIV_CALL(graphGetProperty, nullptr, nullptr), 4000, 6001, kGraph},
    {KIV_CALL(contextValidateBinary, nullptr, nullptr, nullptr, nullptr, 0),
     4000, 0, nullptr},
    {KIV_CALL(contextCreateFromBinaryWithSignal, nullptr, nullptr, nullptr,
              nullptr, 0, nullptr, nullptr, nullptr),
     4000, 5000, kContextOut},
    {KIV_CALL(laterOperation56, nullptr, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(laterOperation57, nullptr, nullptr), 1000, 1000, nullptr},
    {KIV_CALL(laterOperation58, nullptr, nullptr), 1000, 1000, nullptr},
};

std::vector<std::string> errors(const char* message) {
  if (message == nullptr) return {};
  return {"1: " + std::string(message)};
}

TEST(Entry, NullArgumentsInSlotOrder) {
  for (const NullCall& row : kNullCalls) {
    SCOPED_TRACE(row.name);
    const SaverLibrary saver;
    LogCapture log(saver.api());
    EXPECT_EQ(row.call(saver.api()), row.code);
    EXPECT_EQ(log.take(), errors(row.message));
    EXPECT_EQ(fs::exists(saver.directory()), row.withoutFiles == 4000);
  }
}

// With a null argument as well: shows what is checked first.
TEST(Entry, EveryEntryThatRecordsNeedsTheFilesAndTriesAgain) {
  const SaverLibrary saver;
  writeFile(saver.directory(), "in the way");
  LogCapture log(saver.api());
  const std::string cannotOpen = saver.directory().string() + " already exists";
  for (const NullCall& row : kNullCalls) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.call(saver.api()), row.withoutFiles);
    EXPECT_EQ(log.take(), errors(row.withoutFiles == 4000 ? cannotOpen.c_str()
                                                          : row.message));
  }
  EXPECT_EQ(readFile(saver.directory()), "in the way");
  fs::remove(saver.directory());
  EXPECT_EQ(saver.api().propertyHasCapability(1), 0U);
  EXPECT_EQ(
      saver.calls(),
      recorded({validate("propertyHasCapability((KivProperty_Key_t)1)")}));
}

constexpr const char* kNoBackend =
    "No backend associated with the provided handle";
constexpr const char* kNoContext =
    "No context associated with the provided handle";
constexpr const char* kNoGraph = "No graph associated with the provided handle";
constexpr const char* kNoProfile =
    "No profile associated with the provided handle";
constexpr const char* kNoDevice =
    "No device associated with the provided handle";

#define KIV_FAILS(code, message, name, ...)                            \
  failing(                                                             \
      #name "(" #__VA_ARGS__ ")",                                      \
      [](StartedSession& c) { return c.api.name(__VA_ARGS__); }, code, \
      message)

// The same for a call that gives no handle: 0 is left where it would have gone.
#define KIV_CREATES_NOT(code, message, name, ...)    \
  failing(                                           \
      #name "(" #__VA_ARGS__ ")",                    \
      [](StartedSession& c) {                        \
        void* handle = kUnknown;                     \
        void** const out = &handle;                  \
        const Code result = c.api.name(__VA_ARGS__); \
        EXPECT_EQ(handle, nullptr);                  \
        return result;                               \
      },                                             \
      code, message)

const KivContext_Config_t** badConfigs() {
  static List list = {configOf<KivContext_Config_t>(1),
                      configOf<KivContext_Config_t>(99)};
  return list;
}

constexpr const char* kOption = "Unknown config option provided: 99";
constexpr const char* kNoBinary =
    "Failed to write context binary to disk, ensure binaryBufferSize matches "
    "the actual buffer size.";

TEST(Entry, UnknownHandles) {
  static Kiv_Tensor_t tensor = emptyTensor();
  Kiv_OpConfig_t version2 = emptyOpConfig("op");
  version2.version = static_cast<Kiv_OpConfigVersion_t>(2);
  check({
      KIV_FAILS(5002, kNoContext, contextSetConfig, kUnknown, nullptr),
      KIV_FAILS(5002, kNoContext, contextGetBinarySize, kUnknown, nullptr),
      KIV_FAILS(5002, kNoContext, contextGetBinary, kUnknown, nullptr, 0,
                nullptr),
      KIV_FAILS(5002, std::string(kNoContext) + ".", contextFree, kUnknown,
                kUnknown),
      KIV_FAILS(6001, kNoContext, graphCreate, kUnknown, nullptr, nullptr,
                nullptr),
      KIV_FAILS(6001, kNoContext, graphRetrieve, kUnknown, nullptr, nullptr),
      KIV_FAILS(6001, kContextIsNull, tensorCreateContextTensor, nullptr,
                &tensor),
      KIV_FAILS(5002, kNoContext, tensorCreateContextTensor, kUnknown, &tensor),
      KIV_FAILS(6001, kGraph, tensorCreateGraphTensor, nullptr, &tensor),
      KIV_FAILS(6001, kNoGraph, tensorCreateGraphTensor, kUnknown, &tensor),
      KIV_FAILS(6001, kNoGraph, graphCreateSubgraph, kUnknown, nullptr,
                nullptr),
      KIV_FAILS(6001, kNoGraph, graphSetConfig, kUnknown, nullptr),
      KIV_FAILS(6001, kNoGraph, graphAddNode, kUnknown, emptyOpConfig("op")),
      KIV_FAILS(6001, kNoGraph, graphFinalize, kUnknown, kUnknown, nullptr),
      KIV_FAILS(6001, kNoGraph, graphExecute, kUnknown, nullptr, 1, nullptr, 0,
                kUnknown, nullptr),
      KIV_FAILS(12000, kNoProfile, profileSetConfig, kUnknown, nullptr),
      KIV_FAILS(12000, kNoProfile, profileGetEvents, kUnknown, nullptr,
                nullptr),
      KIV_FAILS(12000, std::string(kNoProfile) + ".", profileFree, kUnknown),
      KIV_FAILS(14000, kNoDevice, deviceSetConfig, kUnknown, nullptr),
      KIV_FAILS(14000, kNoDevice, deviceGetInfo, kUnknown, nullptr),
      KIV_FAILS(14000, kNoDevice, deviceFree, kUnknown),
      KIV_FAILS(4011, kNoBackend, backendSetConfig, kUnknown, nullptr),
      KIV_FAILS(4011, kNoBackend, backendRegisterOpPackage, kUnknown, "", "",
                ""),
      KIV_FAILS(4011, kNoBackend, backendGetSupportedOperations, kUnknown,
                nullptr, nullptr),
      KIV_FAILS(4011, kNoBackend, backendValidateOpConfig, kUnknown,
                emptyOpConfig("op")),
      KIV_FAILS(4011, kNoBackend, backendFree, kUnknown),
      KIV_FAILS(4011, kNoBackend, contextValidateBinary, kUnknown, kUnknown,
                nullptr, nullptr, 1),
      KIV_FAILS(14000, kNoDevice, contextValidateBinary, c.backend, kUnknown,
                nullptr, nullptr, 1),
      KIV_FAILS(5002, kNoBinary, contextValidateBinary, nullptr, nullptr,
                nullptr, nullptr, 1),
      KIV_FAILS(12000, kNoProfile, graphFinalize, c.graph, kUnknown, nullptr),
      KIV_FAILS(12000, kNoProfile, graphExecute, c.graph, nullptr, 0, nullptr,
                0, kUnknown, nullptr),
      failing(
          "validate: the op config first",
          [&](StartedSession& c) {
            return c.api.backendValidateOpConfig(kUnknown, version2);
          },
          1000, "Unsupported opconfig version: 2.\n"),
      // Backend, device, configs, profile and binary, in this order.
      KIV_CREATES_NOT(4011, kNoBackend, contextCreate, kUnknown, kUnknown,
                      badConfigs(), out),
      KIV_CREATES_NOT(14000, kNoDevice, contextCreate, c.backend, kUnknown,
                      badConfigs(), out),
      KIV_CREATES_NOT(5000, kOption, contextCreate, c.backend, c.device,
                      badConfigs(), out),
      KIV_CREATES_NOT(14000, kNoDevice, contextCreateFromBinary, nullptr,
                      kUnknown, nullptr, "b", 1, out, kUnknown),
      KIV_CREATES_NOT(12000, kNoProfile, contextCreateFromBinary, nullptr,
                      nullptr, nullptr, nullptr, 1, out, kUnknown),
      KIV_CREATES_NOT(5005, kNoBinary, contextCreateFromBinary, nullptr,
                      nullptr, nullptr, nullptr, 1, out, nullptr),
      KIV_CREATES_NOT(14000, kNoDevice, contextCreateFromBinaryWithSignal,
                      nullptr, kUnknown, nullptr, nullptr, 1, out, nullptr,
                      nullptr),
      KIV_CREATES_NOT(5005, kNoBinary, contextCreateFromBinaryWithSignal,
                      nullptr, nullptr, nullptr, nullptr, 1, out, nullptr,
                      nullptr),
      KIV_CREATES_NOT(4011, kNoBackend, profileCreate, kUnknown, 1, out),
      KIV_CREATES_NOT(
          1004, kOption, deviceCreate, nullptr,
          (List<KivDevice_Config_t>{configOf<KivDevice_Config_t>(1),
                                    configOf<KivDevice_Config_t>(99)}),
          out),
  });
}

TEST(Entry, GraphNamesAndOutPointers) {
  static Kiv_GraphHandle_t out;
  constexpr const char* kMissing =
      "Provided graph handle or graph name is NULL";
  constexpr const char* kSubMissing =
      "Provided subgraph handle or subgraph name is NULL";
  constexpr const char* kTaken =
      "Graph with name g already exists within the context";
  check({
      KIV_FAILS(6000, kMissing, graphCreate, c.context, nullptr, nullptr, &out),
      KIV_FAILS(6000, kMissing, graphCreate, c.context, "g", nullptr, nullptr),
      KIV_FAILS(6003, kTaken, graphCreate, c.context, "g", nullptr, &out),
      KIV_FAILS(6000, kSubMissing, graphCreateSubgraph, c.graph, nullptr, &out),
      KIV_FAILS(6000, kSubMissing, graphCreateSubgraph, c.graph, "g", nullptr),
      KIV_FAILS(6003, kTaken, graphCreateSubgraph, c.graph, "g", &out),
      KIV_FAILS(6000, kMissing, graphRetrieve, c.context, nullptr, &out),
      KIV_FAILS(6000, kMissing, graphRetrieve, c.context, "g", nullptr),
  });
  EXPECT_EQ(out, nullptr);
}

TEST(Entry, LoggerNeedsNoSession) {
  const SaverLibrary saver;
  const Api& api = saver.api();
  const auto level = [](int number) {
    return static_cast<KivLog_Level_t>(number);
  };
  Kiv_LogHandle_t logger = nullptr;
  EXPECT_EQ(api.logSetLogLevel(nullptr, level(0)), 11002U);
  EXPECT_EQ(api.logFree(nullptr), 11002U);
  EXPECT_EQ(api.logCreate(nullptr, level(0), &logger), 11003U);
  EXPECT_EQ(api.logCreate(nullptr, level(6), &logger), 11003U);
  EXPECT_EQ(logger, nullptr);
  EXPECT_EQ(api.logCreate(nullptr, level(5), &logger), 0U);
  EXPECT_EQ(logger, reinterpret_cast<void*>(1));
  EXPECT_EQ(api.logCreate(nullptr, level(1), &logger), 0U);
  EXPECT_EQ(api.logSetLogLevel(kUnknown, level(0)), 11003U);
  EXPECT_EQ(api.logSetLogLevel(kUnknown, level(5)), 0U);
  EXPECT_EQ(api.logFree(kUnknown), 0U);
  EXPECT_EQ(api.logFree(nullptr), 0U);
  EXPECT_EQ(api.logFree(nullptr), 11002U);
  EXPECT_FALSE(fs::exists(saver.directory()));
}

}  // namespace
}  // namespace kiv::test
