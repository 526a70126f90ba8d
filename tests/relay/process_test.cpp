#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "particular_backend.h"
#include "support/dynamic_library.h"
#include "support/environment.h"
#include "support/files.h"
#include "support/provider.h"
#include "support/records.h"

// The relay in processes that are forked or killed.
namespace kiv::test {
namespace {

// The exit code of a forked process.
int inFork(const std::function<void()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    body();
    std::_Exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(RelayProcess, ForkedChildGoesOnAndADeadlyCallIsRecorded) {
  const TempDirectory temporary;
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", temporary.path() / "recording");
  setEnvironment("KIV_RELAY_BACKEND", KIV_PARTICULAR_BACKEND);
  const DynamicLibrary relay(KIV_RELAY_LIBRARY);
  const auto& api = interfaceOf(relay);
  const DynamicLibrary real(KIV_PARTICULAR_BACKEND);
  auto& particular =
      *real.function<ParticularBackendFn_t>("particularBackend")();
  const auto recording = [&](const char* file) {
    return readFile(temporary.path() / "recording" / file);
  };

  // The session begins in the first child, and not in this process.
  EXPECT_EQ(inFork([&] {
              const Objects objects = createObjects(api);
              particular.isDeadly = true;
              float value = 0;
              Kiv_Tensor_t tensor = tensorWithData(&value, sizeof value);
              api.graphExecute(objects.graph, &tensor, 1, &tensor, 1, nullptr,
                               nullptr);
            }),
            9);
  EXPECT_NE(recording("saver_output.c").find("graphExecute("),
            std::string::npos);

  const Objects objects = createObjects(api);
  const std::string text = recording("saver_output.c");
  const std::string answers = recording("answers.json");
  EXPECT_EQ(inFork([&] {
              particular.finalizeCode = KIV_GRAPH_ERROR_INVALID_TENSOR;
              if (api.graphFinalize(objects.graph, nullptr, nullptr) !=
                  KIV_GRAPH_ERROR_INVALID_TENSOR)
                std::_Exit(1);
            }),
            0);
  EXPECT_EQ(recording("saver_output.c"), text);
  EXPECT_EQ(recording("answers.json"), answers);
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", "");
  setEnvironment("KIV_RELAY_BACKEND", "");
}

}  // namespace
}  // namespace kiv::test
