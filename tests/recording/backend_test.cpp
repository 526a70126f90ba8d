#include "recording/backend.h"

#include <gtest/gtest.h>

#include "recording/replayer.h"
#include "support/environment.h"
#include "support/files.h"

namespace kiv::test {
namespace {

using namespace recording;

std::string whyNot(const char* library, const char* odd) {
  setEnvironment("KIV_ODD", odd);
  std::string why;
  const bool isLoaded = Backend::load(library, why).has_value();
  setEnvironment("KIV_ODD", "");
  return isLoaded ? "it was loaded" : why;
}

TEST(RecordingBackend, IsRefusedWithTheReason) {
  EXPECT_EQ(whyNot(KIV_ODD_BACKEND, "refuses").substr(0, 54),
            "the library refuses to list its providers with 4000 (K");
  EXPECT_EQ(whyNot(KIV_ODD_BACKEND, "lists nothing"),
            "the library lists no providers");
  EXPECT_EQ(whyNot(KIV_BORROWING_LIBRARY, ""),
            "the library has no KivInterface_getProviders of its own");
  const std::string missing = whyNot("/nowhere/libBackend.so", "");
  EXPECT_NE(missing.find("/nowhere/libBackend.so"), std::string::npos);
}

// The compiled program would jump to address 0.
TEST(RecordingBackend, IsRefusedWithoutTheFunctionsThatAreCalled) {
  std::string why;
  const auto backend = Backend::load(KIV_ODD_BACKEND, why);
  const auto recording = Recording::parse(
      "   VALIDATE(error, interface.graphFinalize(NULL, NULL, NULL));\n\n"
      "   VALIDATE(error, interface.backendFree(NULL));\n\n");
  const auto problems = Replayer(*recording, {}, *backend).check();
  ASSERT_EQ(problems.size(), 2U);
  EXPECT_EQ(problems[0].message,
            "the backend lacks backendFree, which the recording calls");
}

}  // namespace
}  // namespace kiv::test
