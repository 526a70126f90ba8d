#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <memory>
#include <thread>

#include "particular_backend.h"
#include "support/dynamic_library.h"
#include "support/environment.h"
#include "support/files.h"
#include "support/options.h"
#include "support/provider.h"
#include "support/records.h"

// The relay on a backend whose answers are unlike a recorder's.
namespace kiv::test {
namespace {

namespace fs = std::filesystem;

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + 1))
    ++count;
  return count;
}

class RelayTest : public testing::Test {
 protected:
  RelayTest() {
    setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", directory().generic_string());
  }
  ~RelayTest() override {
    for (const char* name : {"KIV_SAVER_OUTPUT_DIRECTORY", "KIV_RELAY_BACKEND",
                             "KIV_RELAY_KEEP_OUTPUTS", "KIV_RELAY_KEEP_BYTES"})
      setEnvironment(name, "");
  }

  void load(const char* backend = KIV_PARTICULAR_BACKEND) {
    setEnvironment("KIV_RELAY_BACKEND", backend);
    relay_ = std::make_unique<DynamicLibrary>(KIV_RELAY_LIBRARY);
    api_ = &interfaceOf(*relay_);
    real_ = std::make_unique<DynamicLibrary>(backend);
  }
  const KivInterface_Implementation_t& api() const { return *api_; }
  const DynamicLibrary& relay() const { return *relay_; }
  ParticularBackend& real() const {
    return *real_->function<ParticularBackendFn_t>("particularBackend")();
  }

  fs::path directory() const { return temporary_.path() / "recording"; }
  std::string modelText() const {
    return readFile(directory() / "saver_output.c");
  }
  // Without the first one.
  std::string answers() const {
    const std::string text = readFile(directory() / "answers.json");
    return text.substr(text.find('\n') + 1);
  }
  void unload() {
    real_->unload();
    relay_->unload();
  }

  // A float, with its id if it was created.
  Kiv_Tensor_t tensor(const char* name, float& value) const {
    Kiv_Tensor_t made =
        tensorWithData(&value, sizeof value, KIV_DATA_TYPE_FLOAT_32);
    made.v1.name = name;
    return made;
  }
  Kiv_Tensor_t created(Kiv_GraphHandle_t graph, const char* name,
                       float& value) const {
    Kiv_Tensor_t made = tensor(name, value);
    EXPECT_EQ(api().tensorCreateGraphTensor(graph, &made), KIV_SUCCESS);
    return made;
  }

 private:
  TempDirectory temporary_;
  std::unique_ptr<DynamicLibrary> relay_;
  std::unique_ptr<DynamicLibrary> real_;
  const KivInterface_Implementation_t* api_ = nullptr;
};

TEST_F(RelayTest, ShowsTheRealProvider) {
  load();
  const KivInterface_t& provider = providerOf(relay());
  EXPECT_EQ(provider.backendId, KIV_BACKEND_ID_GPU);
  EXPECT_STREQ(provider.providerName, "PARTICULAR \"one\"");
  EXPECT_EQ(provider.apiVersion.backendApiVersion.minorVersion, 8u);
  EXPECT_EQ(api().contextSetConfig, nullptr);
  EXPECT_EQ(api().signalCreate, nullptr);

  const Objects objects = createObjects(api());
  std::uint32_t count = 0;
  api().backendGetSupportedOperations(objects.backend, &count, nullptr);
  EXPECT_EQ(count, 42u);
  EXPECT_NE(modelText().find("#include \"GPU/"), std::string::npos);
  EXPECT_EQ(readFile(directory() / "answers.json"),
            "{\"backend\": {\"library\": \"" KIV_PARTICULAR_BACKEND
            "\", \"provider\": \"PARTICULAR \\\"one\\\"\", \"id\": 4, "
            "\"api_version\": \"2.3.1\", \"backend_version\": \"7.8.9\"}, "
            "\"recording\": \"saver_output.c\", \"keeps_outputs\": false}\n");
}

TEST_F(RelayTest, NoBackendNoProvider) {
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  for (const char* path : {"", "/no/such/library", KIV_RELAY_LIBRARY}) {
    setEnvironment("KIV_RELAY_BACKEND", path);
    const DynamicLibrary library(KIV_RELAY_LIBRARY);
    EXPECT_EQ(library.function<KivInterface_GetProvidersFn_t>(
                  "KivInterface_getProviders")(&providers, &count),
              KIV_BACKEND_ERROR_CANNOT_INITIALIZE)
        << path;
  }
}

TEST_F(RelayTest, UnloadsTheRealBackend) {
  load();
  (void)createObjects(api());
  unload();
  EXPECT_FALSE(DynamicLibrary::isLoaded(KIV_RELAY_LIBRARY));
  EXPECT_EQ(DynamicLibrary::isLoaded(KIV_PARTICULAR_BACKEND), KIV_STAYS_LOADED);
  EXPECT_NE(modelText().find("return error"), std::string::npos);
}

// The client has the real ids, the recording variables for them.
TEST_F(RelayTest, IdsAreTranslated) {
  load();
  const Objects objects = createObjects(api());
  float value = 0;
  Kiv_Tensor_t inContext = tensor("c", value);
  api().tensorCreateContextTensor(objects.context, &inContext);
  Kiv_Tensor_t inGraph = created(objects.graph, "g", value);
  EXPECT_EQ(inContext.v1.id, 9000u);
  EXPECT_EQ(inGraph.v1.id, 8999u);

  Kiv_Param_t param{};
  param.paramType = KIV_PARAM_TYPE_TENSOR;
  param.tensorParam = inGraph;
  Kiv_OpConfig_t node = emptyOpConfig("node");
  node.v1.numInputs = node.v1.numOutputs = node.v1.numParams = 1;
  node.v1.inputTensors = &inGraph;
  node.v1.outputTensors = &inContext;
  node.v1.params = &param;
  api().graphAddNode(objects.graph, node);
  api().graphExecute(objects.graph, &inContext, 1, &inGraph, 1, nullptr,
                     nullptr);
  EXPECT_EQ(real().nodeInput, 8999u);
  EXPECT_EQ(inGraph.v1.id, 8999u);
  EXPECT_EQ(countOf(modelText(), "graph_a_tensor_0.v1.id"), 3u);
  EXPECT_EQ(countOf(modelText(), "context_0_tensor_0.v1.id"), 2u);
}

// A handle is that of the last object that had it, and of none when it is
// freed, although the recorder's own handles come again, too.
TEST_F(RelayTest, HandlesComeAgain) {
  load();
  const Objects first = createObjects(api(), "first");
  api().contextFree(first.context, nullptr);
  const Objects second = createObjects(api(), "second");
  ASSERT_EQ(first.context, second.context);
  ASSERT_NE(first.graph, second.graph);
  EXPECT_EQ(countOf(modelText(), "contextCreate(backend_1"), 1u);
  api().graphFinalize(first.graph, nullptr, nullptr);
  EXPECT_EQ(answers(),
            "{\"not_recorded\": {\"after_call\": 7, \"function\": "
            "\"graphFinalize\", \"code\": 6001}}\n");
  const Objects third = createObjects(api(), "third");
  ASSERT_EQ(first.graph, third.graph);
  api().graphFinalize(third.graph, nullptr, nullptr);
  EXPECT_EQ(countOf(modelText(), "graphFinalize(third"), 1u);
}

TEST_F(RelayTest, ListsWhatOneOfBothRefuses) {
  load();
  const Objects objects = createObjects(api());
  real().finalizeCode = KIV_GRAPH_ERROR_INVALID_TENSOR;
  EXPECT_EQ(api().graphFinalize(objects.graph, nullptr, nullptr),
            KIV_GRAPH_ERROR_INVALID_TENSOR);
  // Refused by both: there is nothing to be said.
  EXPECT_EQ(api().graphFinalize(nullptr, nullptr, nullptr),
            KIV_GRAPH_ERROR_INVALID_TENSOR);
  EXPECT_NE(api().tensorCreateGraphTensor(objects.graph, nullptr), KIV_SUCCESS);
  real().finalizeCode = KIV_SUCCESS;
  float value = 0;
  Kiv_Tensor_t odd = tensor("odd", value);
  odd.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  EXPECT_EQ(api().tensorCreateGraphTensor(objects.graph, &odd), KIV_SUCCESS);
  EXPECT_EQ(api().memRegister(objects.context, nullptr, 0, nullptr),
            KIV_SUCCESS);
  EXPECT_EQ(answers(),
            "{\"call\": 4, \"function\": \"graphFinalize\", \"code\": 6004}\n"
            "{\"not_recorded\": {\"after_call\": 4, \"function\": "
            "\"tensorCreateGraphTensor\", \"code\": 6004}}\n"
            "{\"not_recorded\": {\"after_call\": 4, \"function\": "
            "\"memRegister\", \"code\": 1000}}\n");

  // Its id is taken for no other tensor's.
  const Kiv_Tensor_t next = created(objects.graph, "next", value);
  Kiv_OpConfig_t node = emptyOpConfig("node");
  odd.v1.memType = KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER;
  node.v1.numInputs = 1;
  node.v1.inputTensors = &odd;
  api().graphAddNode(objects.graph, node);
  EXPECT_NE(odd.v1.id, next.v1.id);
  EXPECT_EQ(countOf(modelText(), ".v1.id"), 0u);
}

TEST_F(RelayTest, TheApplicationRunsWithoutARecording) {
  writeFile(directory(), "a file where the directory would be");
  load();
  const Objects objects = createObjects(api());
  EXPECT_NE(objects.graph, nullptr);
  float value = 3;
  float result = 0;
  const Kiv_Tensor_t input = created(objects.graph, "in", value);
  Kiv_Tensor_t output = created(objects.graph, "out", result);
  EXPECT_EQ(api().graphExecute(objects.graph, &input, 1, &output, 1, nullptr,
                               nullptr),
            KIV_SUCCESS);
  EXPECT_EQ(result, 6);
}

TEST_F(RelayTest, KeepsOutputsUpToTheLimit) {
  setEnvironment("KIV_RELAY_KEEP_OUTPUTS", "1");
  setEnvironment("KIV_RELAY_KEEP_BYTES", "10");
  load();
  const Objects objects = createObjects(api());
  float value = 1.5;
  float result = 0;
  const Kiv_Tensor_t input = created(objects.graph, "in", value);
  Kiv_Tensor_t output = created(objects.graph, "out", result);
  for (int i = 0; i < 4; ++i)
    api().graphExecute(objects.graph, &input, 1, &output, 1, nullptr, nullptr);
  EXPECT_EQ(readFile(directory() / "outputs" / "outputs.txt"),
            "graph_a/0/out.npy\ngraph_a/1/out.npy\n");
  const std::string array =
      readFile(directory() / "outputs" / "graph_a" / "1" / "out.npy");
  const float kept = 3;
  EXPECT_EQ(std::memcmp(&array[array.size() - sizeof kept], &kept, sizeof kept),
            0);
  EXPECT_EQ(answers(),
            "{\"outputs_dropped\": {\"call\": 8, \"reason\": \"the limit of 10 "
            "bytes is reached\"}}\n");
}

// What a client's notification receives.
struct Notified {
  int count = 0;
  Kiv_ErrorHandle_t status = 0;
  float result = 0;
};

TEST_F(RelayTest, AsynchronousExecutionsAreKeptWhenTheyEnd) {
  setEnvironment("KIV_RELAY_KEEP_OUTPUTS", "1");
  load();
  const Objects objects = createObjects(api());
  float value = 1.5;
  Notified notified;
  const KivGraph_NotifyFn_t note = [](void* argument, Kiv_ErrorHandle_t code) {
    auto& seen = *static_cast<Notified*>(argument);
    ++seen.count;
    seen.status = code;
    seen.result = 0;
  };
  const auto start = [&] {
    // The client's records do not outlive the call.
    std::string name = "out";
    const Kiv_Tensor_t input = tensor("in", value);
    Kiv_Tensor_t output = tensor(name.c_str(), notified.result);
    EXPECT_EQ(api().graphExecuteAsync(objects.graph, &input, 1, &output, 1,
                                      nullptr, nullptr, note, &notified),
              KIV_SUCCESS);
    name = "gone";
    output = {};
  };
  start();
  EXPECT_FALSE(fs::exists(directory() / "outputs" / "graph_a"));
  real().notify(KIV_SUCCESS);
  EXPECT_EQ(notified.count, 1);
  const std::string array =
      readFile(directory() / "outputs" / "graph_a" / "0" / "out.npy");
  ASSERT_GT(array.size(), sizeof(float));
  const float kept = 3;
  EXPECT_EQ(std::memcmp(&array[array.size() - sizeof kept], &kept, sizeof kept),
            0);

  start();
  real().notify(KIV_GRAPH_ERROR_INVALID_TENSOR);
  EXPECT_EQ(notified.status, KIV_GRAPH_ERROR_INVALID_TENSOR);
  EXPECT_EQ(
      answers(),
      "{\"recorded_as\": {\"call\": 4, \"function\": \"graphExecuteAsync\", "
      "\"as\": \"graphExecute\"}}\n"
      "{\"recorded_as\": {\"call\": 5, \"function\": \"graphExecuteAsync\", "
      "\"as\": \"graphExecute\"}}\n"
      "{\"call\": 5, \"function\": \"graphExecuteAsync\", \"code\": 6004}\n");
}

// Executions that wait for one another come to an end, and each has a number of
// its own.
TEST_F(RelayTest, NoLockIsHeldDuringTheRealCall) {
  setEnvironment("KIV_RELAY_KEEP_OUTPUTS", "1");
  load();
  real().executionsToMeet = 4;
  const Objects objects = createObjects(api());
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      float value = 1;
      float result = 0;
      const Kiv_Tensor_t input = tensor("in", value);
      Kiv_Tensor_t output = tensor("out", result);
      api().graphExecute(objects.graph, &input, 1, &output, 1, nullptr,
                         nullptr);
    });
  for (std::thread& thread : threads) thread.join();
  for (const char* number : {"0", "1", "2", "3"})
    EXPECT_TRUE(fs::exists(directory() / "outputs" / "graph_a" / number));
}

int messages = 0;

TEST_F(RelayTest, TheLoggerIsTheRealBackends) {
  load();
  Kiv_LogHandle_t logger = nullptr;
  api().logCreate(
      [](const char*, KivLog_Level_t, uint64_t, va_list) { ++messages; },
      KIV_LOG_LEVEL_DEBUG, &logger);
  (void)createObjects(api());
  EXPECT_EQ(messages, 1);
  // The recorder has much to say of this.
  api().graphFinalize(&messages, nullptr, nullptr);
  EXPECT_EQ(messages, 1);
}

}  // namespace
}  // namespace kiv::test
