#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "library/started_session.h"

namespace kiv::test {
namespace {

namespace fs = std::filesystem;

TEST(Interface, ProviderRecordIsBinaryStable) {
  const SaverLibrary saver;
  const auto* bytes = reinterpret_cast<const char*>(&saver.provider());
  std::array<uint64_t, 74> words{};
  static_assert(sizeof(words) == 592 &&
                sizeof(words) == sizeof(KivInterface_t));
  std::memcpy(words.data(), bytes, sizeof(words));
  EXPECT_EQ(words[0] & 0xFFFFFFFF, 2U);
  EXPECT_STREQ(reinterpret_cast<const char*>(words[1]), "SAVER_ZOR_MELD");
  EXPECT_EQ(words[2], 2 | (uint64_t{29} << 32));
  EXPECT_EQ(words[3], uint64_t{1} << 32);
  EXPECT_EQ(words[4], 1U);
  for (std::size_t slot = 0; slot < 69; ++slot)
    EXPECT_EQ(words[5 + slot] != 0, slot < 59) << "slot " << slot;
  EXPECT_FALSE(fs::exists(saver.directory()));
}

TEST(Interface, GetProvidersWritesNothingWhenRefused) {
  const SaverLibrary saver;
  const auto getProviders =
      saver.library().function<KivInterface_GetProvidersFn_t>(
          "KivInterface_getProviders");
  EXPECT_EQ(getProviders(nullptr, nullptr), 1004U);
  uint32_t count = 77;
  EXPECT_EQ(getProviders(nullptr, &count), 1004U);
  EXPECT_EQ(count, 77U);
  const KivInterface_t** list = nullptr;
  EXPECT_EQ(getProviders(&list, nullptr), 1004U);
  EXPECT_EQ(list, nullptr);
  ASSERT_EQ(getProviders(&list, &count), 0U);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(list[0], &saver.provider());
}

TEST(Interface, VersionAndBuildNeedNoSession) {
  const SaverLibrary saver;
  Kiv_ApiVersion_t version{};
  ASSERT_EQ(saver.api().backendGetApiVersion(&version), 0U);
  const Kiv_ApiVersion_t expected = {{2, 29, 0}, {1, 1, 0}};
  EXPECT_EQ(std::memcmp(&version, &expected, sizeof(version)), 0);
  const char* first = nullptr;
  const char* second = nullptr;
  ASSERT_EQ(saver.api().backendGetBuildId(&first), 0U);
  ASSERT_EQ(saver.api().backendGetBuildId(&second), 0U);
  EXPECT_STREQ(first, "v2.39.0.250925215840_163802");
  EXPECT_EQ(first, second);
  EXPECT_FALSE(fs::exists(saver.directory()));
}

TEST(Interface, StubsCheckTheirArguments) {
  SaverLibrary saver;
  const Api& api = saver.api();
  const LogCapture log(api);
  for (const auto stub :
       {api.graphPrepareEnvironment, api.graphReleaseEnvironment}) {
    const auto call = [&](void* graph, uint32_t version, uint32_t count) {
      const KivGraph_EnvironmentDescriptor_t descriptor{version};
      const KivGraph_EnvironmentDescriptor_t* list[] = {&descriptor};
      return stub(graph, list, count);
    };
    EXPECT_EQ(stub(kUnknown, nullptr, 1), 6000U);
    EXPECT_EQ(call(nullptr, 0, 0), 6001U);
    EXPECT_EQ(call(kUnknown, 0, 0), 6000U);
    EXPECT_EQ(call(kUnknown, 0, 1), 1000U);
    EXPECT_EQ(call(kUnknown, 1, 2), 1000U);
    EXPECT_EQ(call(kUnknown, 2, 1), 6000U);
    EXPECT_EQ(call(kUnknown, 0x80000000, 1), 6000U);
  }
  EXPECT_FALSE(fs::exists(saver.directory()));

  KivGraph_Property_t property{};
  KivGraph_Property_t* pointer = nullptr;
  EXPECT_EQ(api.graphGetProperty(kUnknown, nullptr), 6000U);
  EXPECT_EQ(api.graphGetProperty(kUnknown, &pointer), 0U);
  pointer = &property;
  EXPECT_EQ(api.graphGetProperty(kUnknown, &pointer), 1000U);
  property.key = 1;
  EXPECT_EQ(api.graphGetProperty(kUnknown, &pointer), 6000U);
  EXPECT_EQ(saver.calls(), "");
}

}  // namespace
}  // namespace kiv::test
