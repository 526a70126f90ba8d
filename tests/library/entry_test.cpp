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
constexpr const char* kContext = "Provided context handle is NULL";
constexpr const char* kGraph = "Provided graph handle is NULL";
constexpr const char* kTensor = "Provided tensor ptr is NULL";
constexpr const char* kProfile = "Provided profile handle is NULL";
constexpr const char* kDevice = "Provided device handle is NULL";

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
    {KIV_CALL(contextSetConfig, nullptr, nullptr), 4000, 5002, kContext},
    {KIV_CALL(contextGetBinarySize, nullptr, nullptr), 4000, 5002, kContext},
    {KIV_CALL(contextGetBinary, nullptr, nullptr, 0, nullptr), 4000, 5002,
     kContext},
    {KIV_CALL(contextCreateFromBinary, nullptr, nullptr, nullptr, nullptr, 0,
              nullptr, nullptr),
     4000, 5000, kContextOut},
    {KIV_CALL(contextFree, nullptr, nullptr), 4000, 5002, kContext},
    {KIV_CALL(graphCreate, nullptr, nullptr, nullptr, nullptr), 4000, 5002,
     kContext},
    {KIV_CALL(graphCreateSubgraph, nullptr, nullptr, nullptr), 4000, 6001,
     kGraph},
    {KIV_CALL(graphSetConfig, nullptr, nullptr), 4000, 6001, kGraph},
    {KIV_CALL(graphAddNode, nullptr, emptyOpConfig(nullptr)), 4000, 6001,
     kGraph},
    {KIV_CALL(graphFinalize, nullptr, nullptr, nullptr), 4000, 6001, kGraph},
    {KIV_CALL(graphRetrieve, nullptr, nullptr, nullptr), 4000, 5002, kContext},
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
    {KIV_CALL(deviceSetConfig, nullptr, nullptr), 4000, 14000, kDevice},
    {KIV_CALL(deviceGetInfo, nullptr, nullptr), 4000, 14000, kDevice},
    {KIV_CALL(deviceFree, nullptr), 4000, 14000, kDevice},
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

#define KIV_ROW(name, ...)    \
#name "(" #__VA_ARGS__ ")", \
      [](StartedSession & c) { return c.api.name(__VA_ARGS__); }

// The call gives no handle but leaves 0 where it would have gone.
template <typename Create>
Code leavingNull(Create&& create) {
  void* handle = kUnknown;
  const Code code = create(&handle);
  EXPECT_EQ(handle, nullptr);
  return code;
}

TEST(Entry, UnknownHandles) {
  static Kiv_Tensor_t tensor = emptyTensor();
  Kiv_OpConfig_t version2 = emptyOpConfig("op");
  version2.version = static_cast<Kiv_OpConfigVersion_t>(2);
  void* const none = nullptr;
  check({
      failing(KIV_ROW(contextSetConfig, kUnknown, nullptr), 5002, kNoContext),
      failing(KIV_ROW(contextGetBinarySize, kUnknown, nullptr), 5002,
              kNoContext),
      failing(KIV_ROW(contextGetBinary, kUnknown, nullptr, 0, nullptr), 5002,
              kNoContext),
      failing(KIV_ROW(contextFree, kUnknown, kUnknown), 5002,
              std::string(kNoContext) + "."),
      failing(KIV_ROW(graphCreate, kUnknown, nullptr, nullptr, nullptr), 6001,
              kNoContext),
      failing(KIV_ROW(graphRetrieve, kUnknown, nullptr, nullptr), 6001,
              kNoContext),
      failing(KIV_ROW(tensorCreateContextTensor, nullptr, &tensor), 6001,
              kContext),
      failing(KIV_ROW(tensorCreateContextTensor, kUnknown, &tensor), 5002,
              kNoContext),
      failing(KIV_ROW(tensorCreateGraphTensor, nullptr, &tensor), 6001, kGraph),
      failing(KIV_ROW(tensorCreateGraphTensor, kUnknown, &tensor), 6001,
              kNoGraph),
      failing(KIV_ROW(graphCreateSubgraph, kUnknown, nullptr, nullptr), 6001,
              kNoGraph),
      failing(KIV_ROW(graphSetConfig, kUnknown, nullptr), 6001, kNoGraph),
      failing(KIV_ROW(graphAddNode, kUnknown, emptyOpConfig("op")), 6001,
              kNoGraph),
      failing(KIV_ROW(graphFinalize, kUnknown, kUnknown, nullptr), 6001,
              kNoGraph),
      failing(KIV_ROW(graphExecute, kUnknown, nullptr, 1, nullptr, 0, kUnknown,
                      nullptr),
              6001, kNoGraph),
      failing(KIV_ROW(profileSetConfig, kUnknown, nullptr), 12000, kNoProfile),
      failing(KIV_ROW(profileGetEvents, kUnknown, nullptr, nullptr), 12000,
              kNoProfile),
      failing(KIV_ROW(profileFree, kUnknown), 12000,
              std::string(kNoProfile) + "."),
      failing(KIV_ROW(deviceSetConfig, kUnknown, nullptr), 14000, kNoDevice),
      failing(KIV_ROW(deviceGetInfo, kUnknown, nullptr), 14000, kNoDevice),
      failing(KIV_ROW(deviceFree, kUnknown), 14000, kNoDevice),
      failing(KIV_ROW(backendSetConfig, kUnknown, nullptr), 4011, kNoBackend),
      failing(KIV_ROW(backendRegisterOpPackage, kUnknown, "", "", ""), 4011,
              kNoBackend),
      failing(
          KIV_ROW(backendGetSupportedOperations, kUnknown, nullptr, nullptr),
          4011, kNoBackend),
      failing(KIV_ROW(backendValidateOpConfig, kUnknown, emptyOpConfig("op")),
              4011, kNoBackend),
      failing(KIV_ROW(backendFree, kUnknown), 4011, kNoBackend),
      failing(KIV_ROW(contextValidateBinary, kUnknown, kUnknown, nullptr,
                      nullptr, 1),
              4011, kNoBackend),
      failing(KIV_ROW(contextValidateBinary, c.backend, kUnknown, nullptr,
                      nullptr, 1),
              14000, kNoDevice),
      failing(KIV_ROW(graphFinalize, c.graph, kUnknown, nullptr), 12000,
              kNoProfile),
      failing(KIV_ROW(graphExecute, c.graph, nullptr, 0, nullptr, 0, kUnknown,
                      nullptr),
              12000, kNoProfile),
      failing(
          "validate: the op config first",
          [&](StartedSession& c) {
            return c.api.backendValidateOpConfig(kUnknown, version2);
          },
          1000, "Unsupported opconfig version: 2.\n"),
      failing(
          "contextCreate: the backend first",
          [](StartedSession& c) {
            return leavingNull([&](void** out) {
              return c.api.contextCreate(kUnknown, kUnknown, nullptr, out);
            });
          },
          4011, kNoBackend),
      failing(
          "contextCreate: the device before the configs",
          [](StartedSession& c) {
            List list = {configOf<KivContext_Config_t>(99)};
            return leavingNull([&](void** out) {
              return c.api.contextCreate(c.backend, kUnknown, list, out);
            });
          },
          14000, kNoDevice),
      failing(
          "contextCreateFromBinary: the profile",
          [none](StartedSession& c) {
            return leavingNull([&](void** out) {
              return c.api.contextCreateFromBinary(none, none, nullptr, "b", 1,
                                                   out, kUnknown);
            });
          },
          12000, kNoProfile),
      failing(
          "profileCreate",
          [](StartedSession& c) {
            return leavingNull([&](void** out) {
              return c.api.profileCreate(kUnknown, 1, out);
            });
          },
          4011, kNoBackend),
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
      failing(KIV_ROW(graphCreate, c.context, nullptr, nullptr, &out), 6000,
              kMissing),
      failing(KIV_ROW(graphCreate, c.context, "g", nullptr, nullptr), 6000,
              kMissing),
      failing(KIV_ROW(graphCreate, c.context, "g", nullptr, &out), 6003,
              kTaken),
      failing(KIV_ROW(graphCreateSubgraph, c.graph, nullptr, &out), 6000,
              kSubMissing),
      failing(KIV_ROW(graphCreateSubgraph, c.graph, "g", nullptr), 6000,
              kSubMissing),
      failing(KIV_ROW(graphCreateSubgraph, c.graph, "g", &out), 6003, kTaken),
      failing(KIV_ROW(graphRetrieve, c.context, nullptr, &out), 6000, kMissing),
      failing(KIV_ROW(graphRetrieve, c.context, "g", nullptr), 6000, kMissing),
  });
  EXPECT_EQ(out, nullptr);
}

// The first record of each list is good: nothing of it is written either.
TEST(Entry, ConfigErrorsWriteNothing) {
  constexpr const char* kOption = "Unknown config option provided: 99";
  constexpr auto version = static_cast<KivDevice_PlatformInfoVersion_t>(2);
  check({
      failing(
          "backend",
          [](StartedSession& c) {
            List list = {configOf<KivBackend_Config_t>(2),
                         configOf<KivBackend_Config_t>(99)};
            Kiv_BackendHandle_t out = kUnknown;
            const Code code = c.api.backendCreate(nullptr, list, &out);
            EXPECT_EQ(out, kUnknown);
            return code;
          },
          4004, kOption),
      failing(
          "context",
          [](StartedSession& c) {
            List list = {configOf<KivContext_Config_t>(1),
                         configOf<KivContext_Config_t>(99)};
            return c.api.contextSetConfig(c.context, list);
          },
          5000, kOption),
      failing(
          "device",
          [](StartedSession& c) {
            List list = {configOf<KivDevice_Config_t>(1),
                         configOf<KivDevice_Config_t>(99)};
            return leavingNull([&](void** out) {
              return c.api.deviceCreate(nullptr, list, out);
            });
          },
          1004, kOption),
      failing(
          "platform info",
          [](StartedSession& c) {
            KivDevice_PlatformInfo_t info{};
            info.version = version;
            auto config = configOf<KivDevice_Config_t>(1);
            config.hardwareInfo = &info;
            return c.api.deviceSetConfig(c.device, List{config});
          },
          1000, "Unsupported platformInfo version: 2"),
      failing(
          "graph: 1 and 2 are no options",
          [](StartedSession& c) {
            List list = {configOf<KivGraph_Config_t>(3),
                         configOf<KivGraph_Config_t>(1)};
            return c.api.graphSetConfig(c.graph, list);
          },
          6000, "Unknown config option provided: 1"),
      failing(
          "profile",
          [](StartedSession& c) {
            List list = {configOf<KivProfile_Config_t>(1),
                         configOf<KivProfile_Config_t>(99)};
            return c.api.profileSetConfig(c.profile, list);
          },
          1004, kOption),
  });
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
