#include <gtest/gtest.h>

#include "library/started_session.h"

// What recorded calls leave with the client, and texts that the golden session
// does not have.
namespace kiv::test {
namespace {

TEST(Recorder, Calls) {
  static void* out;
  check({
      {"backends count from one and end",
       [](StartedSession& c) {
         EXPECT_EQ(c.api.backendCreate(kUnknown, nullptr, &out), 0U);
         EXPECT_EQ(c.backend, reinterpret_cast<void*>(1));
         EXPECT_EQ(out, reinterpret_cast<void*>(2));
         List bad = {configOf<KivBackend_Config_t>(99)};
         EXPECT_EQ(c.api.backendCreate(nullptr, bad, &out), 4004U);
         EXPECT_EQ(out, reinterpret_cast<void*>(2)) << "it is left as it is";
         EXPECT_EQ(c.api.backendFree(c.backend), 0U);
         EXPECT_EQ(c.api.backendFree(c.backend), 4011U);
         return c.api.backendFree(nullptr);
       },
       4999,
       {"1: Unknown config option provided: 99",
        "1: No backend associated with the provided handle",
        "1: Could not free backend handle"},
       recorded({"const KivBackend_Config_t* backend_1_config_0[] = {NULL};",
                 "Kiv_BackendHandle_t backend_1;",
                 validate("backendCreate(loghandle, backend_1_config_0, "
                          "&backend_1)"),
                 "", validate("backendFree(backend_0)"), "",
                 validate("backendFree(NULL)")}),
       ""},
      {"an empty list of a new context is none",
       [](StartedSession& c) {
         return c.api.contextCreate(nullptr, nullptr,
                                    List<KivContext_Config_t>{}, &out);
       },
       0,
       {},
       recorded({"Kiv_ContextHandle_t context_1;",
                 validate("contextCreate(NULL, NULL, NULL, &context_1)")}),
       ""},
      {"a skipped record leaves nothing but the array",
       [](StartedSession& c) {
         auto custom = configOf<KivContext_Config_t>(0);
         custom.customConfig = kUnknown;
         return c.api.contextSetConfig(c.context, List{custom});
       },
       0,
       {"2: Custom config provided without specifying backend ID, provide a "
        "backend ID via KivSaver_Initialize() to record custom configs."},
       recorded({"const KivContext_Config_t* context_0_config_0[] = {NULL};",
                 validate("contextSetConfig(context_0, context_0_config_0)")}),
       ""},
      {"variables of sizes get counters",
       [](StartedSession& c) {
         Kiv_ContextBinarySize_t size = 7;
         EXPECT_EQ(c.api.contextGetBinarySize(c.context, &size), 4950U);
         EXPECT_EQ(c.api.contextGetBinarySize(c.context, &size), 4950U);
         EXPECT_EQ(size, 7U);
         return 0;
       },
       0,
       {},
       recorded({"Kiv_ContextBinarySize_t context_0_binaryBufferSize;",
                 validate("contextGetBinarySize(context_0, "
                          "&context_0_binaryBufferSize)"),
                 "", "Kiv_ContextBinarySize_t context_0_binaryBufferSize_0;",
                 validate("contextGetBinarySize(context_0, "
                          "&context_0_binaryBufferSize_0)")}),
       ""},
      {"a context is freed once, and with its graphs",
       [](StartedSession& c) {
         EXPECT_EQ(c.api.contextFree(c.context, c.profile), 0U);
         EXPECT_EQ(c.api.graphFinalize(c.graph, nullptr, nullptr), 6001U);
         return c.api.contextFree(c.context, nullptr);
       },
       5002,
       {"1: No graph associated with the provided handle",
        "1: No context associated with the provided handle."},
       recorded({validate("contextFree(context_0, profile_0)")}),
       ""},
      {"a device stays known, a profile does not",
       [](StartedSession& c) {
         EXPECT_EQ(c.api.deviceFree(c.device), 0U);
         EXPECT_EQ(c.api.deviceFree(c.device), 0U);
         EXPECT_EQ(c.api.profileFree(c.profile), 0U);
         return c.api.profileFree(c.profile);
       },
       12000,
       {"1: No profile associated with the provided handle."},
       recorded({validate("deviceFree(device_0)"), "",
                 validate("deviceFree(device_0)"), "",
                 validate("profileFree(profile_0)")}),
       ""},
      {"a profile without backend",
       [](StartedSession& c) {
         return c.api.profileCreate(nullptr, 4000000000, &out);
       },
       0,
       {},
       recorded({"Kiv_ProfileHandle_t profile_1;",
                 validate("profileCreate(NULL, "
                          "(KivProfile_Level_t)4000000000, &profile_1)")}),
       ""},
  });
}

// The context is gone either way.
TEST(Recorder, AContextIsFreedWithAnUnknownProfile) {
  StartedSession c;
  LogCapture log(c.api);
  EXPECT_EQ(c.api.contextFree(c.context, kUnknown), 0U);
  const std::vector<std::string> messages = log.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_TRUE(messages[0].starts_with("2: ")) << messages[0];
  EXPECT_EQ(c.newText(), recorded({validate("contextFree(context_0, NULL)")}));
  EXPECT_EQ(c.api.contextSetConfig(c.context, nullptr), 5002U);
}

TEST(Recorder, ListsAreReportedEmptyAndOtherResultsStay) {
  StartedSession c;
  uint32_t count = 7;
  const KivBackend_OperationName_t operation{};
  const auto* operations = &operation;
  EXPECT_EQ(c.api.backendGetSupportedOperations(nullptr, &count, &operations),
            0U);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(operations, nullptr);
  for (const bool sub : {false, true}) {
    const KivProfile_EventId_t id = 1;
    const KivProfile_EventId_t* list = &id;
    count = 7;
    EXPECT_EQ(sub ? c.api.profileGetSubEvents(~0ULL, &list, &count)
                  : c.api.profileGetEvents(c.profile, &list, &count),
              0U);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(count, 0U);
  }
  const KivDevice_PlatformInfo_t info{};
  const auto* infos = &info;
  EXPECT_EQ(c.api.deviceGetInfo(c.device, &infos), 0U);
  EXPECT_EQ(c.api.deviceGetPlatformInfo(nullptr, &infos), 0U);
  EXPECT_EQ(infos, &info);
  Kiv_ContextBinarySize_t size = 7;
  EXPECT_EQ(c.api.contextGetBinary(c.context, nullptr, 1, &size), 4950U);
  EXPECT_EQ(size, 7U);
}

}  // namespace
}  // namespace kiv::test
