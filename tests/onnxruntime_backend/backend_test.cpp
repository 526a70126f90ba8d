#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <set>
#include <thread>

#include "small_network.h"
#include "support/environment.h"
#include "support/provider.h"
#include "support/records.h"

namespace kiv::test {
namespace {

using testing::HasSubstr;

// Large enough for the weights to lie outside the model.
constexpr std::uint32_t kLarge = 1000;

class Backend : public OnnxRuntimeTest {
 protected:
  // The status of a call and the message that it left.
  void expect(Kiv_ErrorHandle_t actual, Kiv_ErrorHandle_t status,
              const std::string& message) {
    EXPECT_EQ(actual, status) << message;
    EXPECT_THAT(messages(), HasSubstr(message));
  }
};

TEST_F(Backend, RefusesWhatDoesNotFitAndSaysWhy) {
  const SmallNetwork network(api(), createContext(), "add", 4);
  Floats four(4, 2);
  Floats three(3);
  Floats five(5);
  expect(network.execute(four, four), KIV_GRAPH_ERROR_INVALID_ARGUMENT,
         "1: graphExecute: the graph \"add\" is not finalized");
  ASSERT_EQ(network.finalize(), KIV_SUCCESS);
  expect(network.finalize(), KIV_CONTEXT_ERROR_GENERAL, "is finalized");
  expect(network.execute(four, three), KIV_GRAPH_ERROR_INVALID_TENSOR,
         "tensor \"z\" is computed with the shape [4], 16 bytes; its buffer "
         "has 12");
  EXPECT_EQ(three, Floats(3));
  expect(network.execute(four, five), KIV_GRAPH_ERROR_INVALID_TENSOR,
         "its buffer has 20");
  EXPECT_EQ(five, Floats(5));
  expect(network.execute(three, three), KIV_CONTEXT_ERROR_GENERAL,
         "ONNX Runtime, Run: Got invalid dimensions for input: x");

  std::uint32_t size = 4;
  Kiv_Tensor_t in = network.input(size, four);
  Kiv_Tensor_t out = network.output(size, four);
  const auto execute = [&](std::uint32_t inputs) {
    return api().graphExecute(network.graph(), &in, inputs, &out, 1, nullptr,
                              nullptr);
  };
  expect(execute(0), KIV_GRAPH_ERROR_INVALID_ARGUMENT,
         "the graph's input \"x\" is not given");
  in.v1.clientBuf.dataSize = 12;
  expect(execute(1), KIV_GRAPH_ERROR_INVALID_TENSOR,
         "tensor \"x\" takes 16 bytes of data, its buffer has 12");
  in = network.input(size, four);
  out.v1.dataType = KIV_DATA_TYPE_INT_32;
  expect(execute(1), KIV_GRAPH_ERROR_INVALID_TENSOR,
         "its record names another one");
  out.v1.id = 77;
  out.v1.name = "q";
  expect(execute(1), KIV_GRAPH_ERROR_INVALID_ARGUMENT,
         "tensor \"q\" is no output of the graph");
  in.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  expect(execute(1), KIV_GRAPH_ERROR_INVALID_TENSOR, "memory handle");
}

TEST_F(Backend, RefusesTensorsAndNodesThatCannotBeBuilt) {
  const Kiv_ContextHandle_t context = createContext();
  const SmallNetwork network(api(), context, "add", 4);
  const auto create = [&](Kiv_Tensor_t tensor) {
    return api().tensorCreateGraphTensor(network.graph(), &tensor);
  };
  std::uint32_t size = 4;
  Floats three(3);
  expect(create(vectorTensor("w2", KIV_TENSOR_TYPE_STATIC, size, &three)),
         KIV_GRAPH_ERROR_INVALID_TENSOR, "takes 16 bytes");
  expect(create(vectorTensor("x", KIV_TENSOR_TYPE_INPUT, size)),
         KIV_TENSOR_ERROR_ALREADY_EXISTS, "there is a tensor \"x\" already");
  Kiv_Tensor_t tensor = emptyTensor();
  tensor.v1.dataType = KIV_DATA_TYPE_STRING;
  expect(create(tensor), KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE, "1544");
  tensor.v1.dataType = KIV_DATA_TYPE_SFIXED_POINT_8;
  expect(create(tensor), KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE, "fixed-point");
  tensor = emptyTensor();
  setNumber(tensor.version, 9);
  expect(create(tensor), KIV_COMMON_ERROR_NOT_SUPPORTED, "is of version 9");
  EXPECT_EQ(api().tensorCreateGraphTensor(context, &tensor),
            KIV_GRAPH_ERROR_INVALID_HANDLE);

  // Another graph's tensor, and an operator that does not exist.
  Kiv_GraphHandle_t other = nullptr;
  ASSERT_EQ(api().graphCreate(context, "other", nullptr, &other), KIV_SUCCESS);
  Kiv_Tensor_t input = network.input(size, three);
  Kiv_OpConfig_t config = emptyOpConfig("node");
  config.v1.packageName = "ai.onnx";
  config.v1.typeName = "Relu";
  config.v1.numInputs = 1;
  config.v1.inputTensors = &input;
  expect(api().graphAddNode(other, config), KIV_GRAPH_ERROR_INVALID_TENSOR,
         "created neither in the graph nor in its context");
  expect(api().backendValidateOpConfig(backend(), config),
         KIV_BACKEND_ERROR_INVALID_ARGUMENT, "Relu does not give 0 outputs");
  expect(api().graphCreate(context, "add", nullptr, &other),
         KIV_GRAPH_ERROR_NAME_TAKEN, "there is a graph \"add\" already");
  const SmallNetwork unknown(api(), context, "unknown", 4, "NoSuchOperator");
  expect(unknown.finalize(), KIV_CONTEXT_ERROR_GENERAL,
         "No Op registered for NoSuchOperator with domain_version of 13");
}

TEST_F(Backend, ExecutesOneGraphOnTwoThreads) {
  constexpr std::uint32_t kSize = 1 << 18;
  const SmallNetwork network(api(), createContext(), "add", kSize);
  ASSERT_EQ(network.finalize(), KIV_SUCCESS);
  const auto work = [&](float start) {
    int wrong = 0;
    for (int i = 0; i < 50; ++i) {
      Floats x(kSize, start + static_cast<float>(i));
      Floats z(kSize);
      const bool isRight =
          network.execute(x, z) == KIV_SUCCESS && z == SmallNetwork::sum(x);
      wrong += isRight ? 0 : 1;
    }
    return wrong;
  };
  auto other = std::async(std::launch::async, work, 1000.0F);
  EXPECT_EQ(work(0), 0);
  EXPECT_EQ(other.get(), 0);
}

// The argument of a notification, which frees the context: the execution's
// status, and whether the call has returned.
struct Notified {
  const Api& api;
  Kiv_ContextHandle_t context;
  std::promise<void> returned;
  std::promise<Kiv_ErrorHandle_t> status;
};

TEST_F(Backend, ExecutesAsynchronously) {
  const Kiv_ContextHandle_t context = createContext();
  const SmallNetwork network(api(), context, "add", kLarge);
  ASSERT_EQ(network.finalize(), KIV_SUCCESS);
  Floats x(kLarge, 5);
  Floats z(kLarge);
  std::uint32_t size = kLarge;
  Notified notified{api(), context, {}, {}};
  {
    // Records may go once the call returns, buffers may not.
    const Kiv_Tensor_t in = network.input(size, x);
    Kiv_Tensor_t out = network.output(size, z);
    const auto notify = [](void* argument, Kiv_ErrorHandle_t status) {
      auto& self = *static_cast<Notified*>(argument);
      EXPECT_EQ(self.returned.get_future().wait_for(std::chrono::seconds(10)),
                std::future_status::ready);
      EXPECT_EQ(self.api.contextFree(self.context, nullptr), KIV_SUCCESS);
      self.status.set_value(status);
    };
    ASSERT_EQ(api().graphExecuteAsync(network.graph(), &in, 1, &out, 1, nullptr,
                                      nullptr, notify, &notified),
              KIV_SUCCESS);
    notified.returned.set_value();
  }
  EXPECT_EQ(notified.status.get_future().get(), KIV_SUCCESS);
  EXPECT_EQ(z, SmallNetwork::sum(x));
  EXPECT_EQ(network.execute(x, z), KIV_GRAPH_ERROR_INVALID_HANDLE);
}

class Binary : public Backend {
 protected:
  std::vector<std::uint8_t> binaryOf(Kiv_ContextHandle_t context) {
    Kiv_ContextBinarySize_t size = 0;
    EXPECT_EQ(api().contextGetBinarySize(context, &size), KIV_SUCCESS);
    std::vector<std::uint8_t> binary(size);
    EXPECT_EQ(api().contextGetBinary(context, binary.data(), size, &size),
              KIV_SUCCESS);
    EXPECT_EQ(size, binary.size());
    return binary;
  }

  Kiv_ErrorHandle_t load(const std::vector<std::uint8_t>& binary,
                         Kiv_ContextHandle_t& context,
                         const KivContext_Config_t** configs = nullptr) {
    return api().contextCreateFromBinary(backend(), nullptr, configs,
                                         binary.data(), binary.size(), &context,
                                         nullptr);
  }
};

TEST_F(Binary, HoldsGraphsWithTheirData) {
  const Kiv_ContextHandle_t context = createContext();
  const SmallNetwork small(api(), context, "small", 4);
  const SmallNetwork large(api(), context, "large", kLarge);
  Kiv_ContextBinarySize_t size = 0;
  ASSERT_EQ(small.finalize(), KIV_SUCCESS);
  expect(api().contextGetBinarySize(context, &size), KIV_CONTEXT_ERROR_GENERAL,
         "the graph \"large\" is not finalized");
  ASSERT_EQ(large.finalize(), KIV_SUCCESS);
  std::vector<std::uint8_t> binary = binaryOf(context);
  expect(
      api().contextGetBinary(context, binary.data(), binary.size() - 1, &size),
      KIV_CONTEXT_ERROR_GENERAL, "the buffer has");
  EXPECT_EQ(size, 0U);
  ASSERT_EQ(api().contextFree(context, nullptr), KIV_SUCCESS);

  const char* const names[] = {"large", nullptr};
  KivContext_Config_t config{};
  config.option = KIV_CONTEXT_CONFIG_ENABLE_GRAPHS;
  config.enableGraphs = names;
  const KivContext_Config_t* configs[] = {&config, nullptr};
  Kiv_ContextHandle_t loaded = nullptr;
  ASSERT_EQ(load(binary, loaded, configs), KIV_SUCCESS);
  // The loaded context has its own copy.
  binary.assign(binary.size(), 0);
  Kiv_GraphHandle_t graph = nullptr;
  expect(api().graphRetrieve(loaded, "small", &graph),
         KIV_GRAPH_ERROR_INVALID_ARGUMENT, "has no graph \"small\"");
  ASSERT_EQ(api().graphRetrieve(loaded, "large", &graph), KIV_SUCCESS);
  Floats x(kLarge, 3);
  Floats z(kLarge);
  EXPECT_EQ(large.execute(graph, x, z), KIV_SUCCESS);
  EXPECT_EQ(z, SmallNetwork::sum(x));
  EXPECT_EQ(api().contextFree(loaded, nullptr), KIV_SUCCESS);
}

TEST_F(Binary, IsRefusedWhereItIsDamaged) {
  const Kiv_ContextHandle_t context = createContext();
  const SmallNetwork network(api(), context, "large", kLarge);
  ASSERT_EQ(network.finalize(), KIV_SUCCESS);
  const std::vector<std::uint8_t> binary = binaryOf(context);
  const auto refused = [&](const std::vector<std::uint8_t>& bytes,
                           const std::string& why) {
    Kiv_ContextHandle_t loaded = nullptr;
    expect(load(bytes, loaded), KIV_CONTEXT_ERROR_BINARY, why);
    EXPECT_EQ(loaded, nullptr);
    EXPECT_EQ(api().contextValidateBinary(backend(), nullptr, nullptr,
                                          bytes.data(), bytes.size()),
              KIV_CONTEXT_ERROR_INVALID_HANDLE);
    messages();
  };
  EXPECT_EQ(api().contextValidateBinary(backend(), nullptr, nullptr,
                                        binary.data(), binary.size()),
            KIV_SUCCESS);
  refused({}, "was not written by this library");
  refused({binary.begin(), binary.begin() + 20}, "is cut");
  refused({binary.begin(), binary.end() - 4},
          "has a tensor whose data is not there");
  // Data at an address or in a file, where only the binary's own is taken.
  const std::string location = "location";
  const auto at = std::search(binary.begin(), binary.end(), location.begin(),
                              location.end());
  ASSERT_NE(at, binary.end());
  std::vector<std::uint8_t> elsewhere = binary;
  // "location", its field's tag and length, then "data".
  elsewhere[static_cast<std::size_t>(at - binary.begin()) + 10] = 'D';
  refused(elsewhere, "names data that lies elsewhere");
}

TEST_F(Backend, ProfilesEachStepAndNode) {
  Kiv_ProfileHandle_t profile = nullptr;
  ASSERT_EQ(
      api().profileCreate(backend(), KIV_PROFILE_LEVEL_DETAILED, &profile),
      KIV_SUCCESS);
  const SmallNetwork network(api(), createContext(), "add", kLarge);
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(network.finalize(profile), KIV_SUCCESS);
  const std::chrono::duration<double, std::micro> finalizing =
      std::chrono::steady_clock::now() - start;
  Floats x(kLarge);
  ASSERT_EQ(network.execute(x, x, profile), KIV_SUCCESS);
  ASSERT_EQ(network.execute(x, x, profile), KIV_SUCCESS);
  const KivProfile_EventId_t* events = nullptr;
  std::uint32_t count = 0;
  ASSERT_EQ(api().profileGetEvents(profile, &events, &count), KIV_SUCCESS);
  std::string text;
  for (std::uint32_t i = 0; i < count; ++i) {
    KivProfile_EventData_t data{};
    ASSERT_EQ(api().profileGetEventData(events[i], &data), KIV_SUCCESS);
    EXPECT_EQ(data.unit, KIV_PROFILE_EVENT_UNIT_MICROSECONDS);
    text += std::string(data.identifier) + ":";
    const KivProfile_EventId_t* below = nullptr;
    std::uint32_t belowCount = 0;
    ASSERT_EQ(api().profileGetSubEvents(events[i], &below, &belowCount),
              KIV_SUCCESS);
    std::uint64_t sum = 0;
    for (std::uint32_t j = 0; j < belowCount; ++j) {
      KivProfile_ExtendedEventData_t part{};
      ASSERT_EQ(api().profileGetExtendedEventData(below[j], &part),
                KIV_SUCCESS);
      EXPECT_GT(part.timestamp, 0U);
      text += std::string(" ") + part.identifier + ",";
      sum += part.value;
    }
    EXPECT_LE(sum, data.value + belowCount);
    text += "\n";
  }
  EXPECT_EQ(text,
            "finalize add: build model, create session,\n"
            "execute add: compute, copy outputs,\n"
            "execute add: compute, copy outputs,\n"
            "nodes add: node (Add),\n");
  const KivProfile_EventId_t event = events[0];
  KivProfile_EventData_t data{};
  ASSERT_EQ(api().profileGetEventData(event, &data), KIV_SUCCESS);
  EXPECT_LE(static_cast<double>(data.value), finalizing.count());
  EXPECT_GT(static_cast<double>(data.value), finalizing.count() / 1000);
  ASSERT_EQ(api().profileFree(profile), KIV_SUCCESS);
  EXPECT_EQ(api().profileGetEventData(event, nullptr),
            KIV_PROFILE_ERROR_GENERAL);
}

// Tensors of the context serve several graphs, in which others have the same
// names.
TEST_F(Backend, SharesTensorsOfTheContext) {
  const Kiv_ContextHandle_t context = createContext();
  std::uint32_t size = 4;
  Floats ones(4, 1);
  Kiv_Tensor_t inputs[] = {
      vectorTensor("x", KIV_TENSOR_TYPE_INPUT, size),
      vectorTensor(nullptr, KIV_TENSOR_TYPE_STATIC, size, &ones)};
  for (Kiv_Tensor_t& tensor : inputs)
    ASSERT_EQ(api().tensorCreateContextTensor(context, &tensor), KIV_SUCCESS);
  for (const char* type : {"Add", "Sub"}) {
    Kiv_GraphHandle_t graph = nullptr;
    ASSERT_EQ(api().graphCreate(context, type, nullptr, &graph), KIV_SUCCESS);
    Kiv_Tensor_t output = vectorTensor("z", KIV_TENSOR_TYPE_OUTPUT, size);
    ASSERT_EQ(api().tensorCreateGraphTensor(graph, &output), KIV_SUCCESS);
    Kiv_OpConfig_t config = emptyOpConfig("node");
    config.v1.packageName = "ai.onnx";
    config.v1.typeName = type;
    config.v1.numInputs = 2;
    config.v1.inputTensors = inputs;
    config.v1.numOutputs = 1;
    config.v1.outputTensors = &output;
    ASSERT_EQ(api().graphAddNode(graph, config), KIV_SUCCESS);
    ASSERT_EQ(api().graphFinalize(graph, nullptr, nullptr), KIV_SUCCESS);
    Floats x(4, 5);
    Floats z(4);
    Kiv_Tensor_t in = vectorTensor(nullptr, KIV_TENSOR_TYPE_INPUT, size, &x);
    in.v1.id = inputs[0].v1.id;
    output.v1.clientBuf = {z.data(), 16};
    ASSERT_EQ(api().graphExecute(graph, &in, 1, &output, 1, nullptr, nullptr),
              KIV_SUCCESS);
    EXPECT_EQ(z, Floats(4, std::string(type) == "Add" ? 6.0F : 4.0F));
  }
}

TEST_F(Backend, TakesTheOperatorSetFromOptions) {
  Kiv_ContextHandle_t context = nullptr;
  ASSERT_EQ(api().contextCreate(nullptr, nullptr, nullptr, &context),
            KIV_SUCCESS);
  expect(
      SmallNetwork(api(), context, "add", 4).finalize(), KIV_SUCCESS,
      "2: graphAddNode: no platform option onnx.opset names an operator set, "
      "so 19 is taken");
  EXPECT_EQ(api().contextFree(context, nullptr), KIV_SUCCESS);
  KivBackend_Config_t config{};
  config.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
  const KivBackend_Config_t* configs[] = {&config, nullptr};
  config.platformOption = "other:1";
  EXPECT_EQ(api().backendSetConfig(backend(), configs), KIV_SUCCESS);
  config.platformOption = "onnx.opset:x";
  expect(api().backendSetConfig(backend(), configs),
         KIV_BACKEND_ERROR_INVALID_ARGUMENT, "names no operator set");
  // No set of that number exists.
  config.platformOption = "onnx.opset:1000";
  ASSERT_EQ(api().backendSetConfig(backend(), configs), KIV_SUCCESS);
  expect(SmallNetwork(api(), createContext(), "add", 4).finalize(),
         KIV_CONTEXT_ERROR_GENERAL, "ONNX Runtime, CreateSession");
}

TEST_F(Backend, ListsOperators) {
  std::uint32_t count = 0;
  const KivBackend_OperationName_t* operations = nullptr;
  ASSERT_EQ(api().backendGetSupportedOperations(backend(), &count, &operations),
            KIV_SUCCESS);
  std::set<std::string> names;
  for (std::uint32_t i = 0; i < count; ++i) {
    names.insert(std::string(operations[i].packageName) + " " +
                 operations[i].name);
  }
  EXPECT_EQ(names.size(), count);
  EXPECT_TRUE(names.contains("ai.onnx Conv"));
  EXPECT_TRUE(names.contains("ai.onnx.ml Scaler"));
  EXPECT_FALSE(names.contains("ai.onnx.preview.training Adam"));
}

// Needs no ONNX Runtime, and says so where there is none.
TEST(NoOnnxRuntime, IsReportedWhenTheBackendIsCreated) {
  const DynamicLibrary library(KIV_BACKEND_LIBRARY);
  const Api& api = interfaceOf(library);
  LogCapture log(api);
  const std::pair<const char*, const char*> rows[] = {
      {"/nowhere/libonnxruntime.so",
       "1: backendCreate: cannot load ONNX Runtime from KIV_ONNXRUNTIME"},
      {KIV_BACKEND_LIBRARY,
       "1: backendCreate: the library of ONNX Runtime has no OrtGetApiBase"}};
  for (const auto& [path, message] : rows) {
    setEnvironment("KIV_ONNXRUNTIME", path);
    Kiv_BackendHandle_t backend = nullptr;
    EXPECT_EQ(api.backendCreate(nullptr, nullptr, &backend),
              KIV_BACKEND_ERROR_CANNOT_INITIALIZE);
    const std::vector<std::string> messages = log.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_THAT(messages[0], HasSubstr(message));
  }
}

}  // namespace
}  // namespace kiv::test
