// What no client should pass. Each call must come back with a status, and one
// that fails must leave the recording as it was.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "GPU/KivGpuContext.h"
#include "hostile/random_caller.h"
#include "support/log_capture.h"
#include "support/records.h"
#include "support/saver_library.h"

namespace kiv::test {
namespace {

using Code = Kiv_ErrorHandle_t;

constexpr std::uint32_t kMost = 0xFFFFFFFF;

// Records that refer to everything that records can refer to.
struct Records {
  std::uint32_t dims[2] = {1, 2};
  std::uint8_t flags[2] = {0, 1};
  std::uint8_t data[8] = {};
  Kiv_ScaleOffset_t pairs[2] = {{1, 0}, {2, 0}};
  float scales[2] = {1, 2};
  std::int32_t offsets[2] = {0, 1};
  Kiv_Tensor_t input = tensor(KIV_TENSOR_VERSION_1);
  Kiv_Tensor_t output = tensor(KIV_TENSOR_VERSION_2);
  Kiv_Param_t params[2] = {};
  Kiv_OpConfig_t op = emptyOpConfig("op");
  KivDevice_CoreInfo_t core{KIV_DEVICE_CORE_INFO_VERSION_1, {}};
  KivDevice_HardwareDeviceInfo_t device{
      KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1, {{0, 0, 1, &core, nullptr}}};
  KivDevice_PlatformInfo_t platform{KIV_DEVICE_PLATFORM_INFO_VERSION_1,
                                    {{1, &device}}};
  const char* graphNames[2] = {"g", nullptr};
  KivGpuContext_CustomConfig_t gpu{};
  KivBackend_Config_t forBackend{};
  KivContext_Config_t forContext[5] = {};
  KivDevice_Config_t forDevice{};
  KivGraph_Config_t forGraph{KIV_GRAPH_CONFIG_OPTION_PRIORITY, {}};
  KivProfile_Config_t forProfile{KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS, {}};

  Kiv_Tensor_t tensor(Kiv_TensorVersion_t version) {
    Kiv_Tensor_t result = emptyTensor(version, KIV_DATA_TYPE_INT_32);
    result.v1.name = "t";
    result.v1.rank = 2;
    result.v1.dimensions = dims;
    result.v1.clientBuf = {data, sizeof(data)};
    if (version == KIV_TENSOR_VERSION_2) result.v2.isDynamicDimensions = flags;
    return result;
  }

  Records() {
    auto& axis = input.v1.quantizeParams;
    axis.quantizationEncoding = KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
    axis.axisScaleOffsetEncoding = {0, 2, pairs};
    auto& bwAxis = output.v2.quantizeParams;
    bwAxis.quantizationEncoding =
        KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET;
    bwAxis.bwAxisScaleOffsetEncoding = {4, 0, 2, scales, offsets};
    params[0].name = "p";
    params[0].scalarParam.dataType = KIV_DATA_TYPE_STRING;
    params[0].scalarParam.stringValue = "s";
    params[1].paramType = KIV_PARAM_TYPE_TENSOR;
    params[1].tensorParam = tensor(KIV_TENSOR_VERSION_1);
    op.v1 = {"op", "package", "type", 2, params, 1, &input, 1, &output};
    gpu.option = KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR;
    gpu.kernelRepoDir = "d";
    forBackend.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
    forBackend.platformOption = "k:v";
    forContext[0].customConfig = &gpu;
    forContext[1].option = KIV_CONTEXT_CONFIG_OPTION_OEM_STRING;
    forContext[1].oemString = "o";
    forContext[2].option = KIV_CONTEXT_CONFIG_ENABLE_GRAPHS;
    forContext[2].enableGraphs = graphNames;
    forContext[3].option = KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH;
    forContext[4].option = KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING;
    forDevice.option = KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO;
    forDevice.hardwareInfo = &platform;
  }
};

class BadInput : public ::testing::Test {
 protected:
  // For the GPU backend, so that custom configs are recorded.
  BadInput() {
    saver.initialize({backendOption(KIV_BACKEND_ID_GPU)});
    objects = createObjects(api);
    api.profileCreate(nullptr, kMost, &profile);
    api.deviceCreate(nullptr, nullptr, &device);
  }

  // Whether a call succeeds; one that fails must have left no trace.
  bool isAccepted(const std::function<Code()>& call) {
    const auto text = std::filesystem::file_size(saver.modelPath());
    const auto bytes = std::filesystem::file_size(saver.dataPath());
    const Code code = call();
    if (code == KIV_SUCCESS) return true;
    EXPECT_TRUE(code >= 1000 && code <= 14999) << code;
    EXPECT_EQ(std::filesystem::file_size(saver.modelPath()), text) << code;
    EXPECT_EQ(std::filesystem::file_size(saver.dataPath()), bytes) << code;
    return false;
  }

  // Passes the records to everything that takes them; whether all goes well.
  bool useRecords() {
    bool areAccepted = true;
    const auto call = [&](auto function, auto... arguments) {
      if (!isAccepted([&] { return function(arguments...); }))
        areAccepted = false;
    };
    const auto set = [&]<typename Config>(auto function, void* handle,
                                          const Config& config) {
      const Config* list[] = {&config, nullptr};
      call(function, handle, list);
    };
    const Kiv_OpConfigV1_t& op = records.op.v1;
    Kiv_Tensor_t inGraph = records.output;
    Kiv_Tensor_t inContext = records.input;
    call(api.graphAddNode, objects.graph, records.op);
    call(api.backendValidateOpConfig, objects.backend, records.op);
    call(api.graphExecute, objects.graph, op.inputTensors, op.numInputs,
         op.outputTensors, op.numOutputs, nullptr, nullptr);
    call(api.tensorCreateGraphTensor, objects.graph, &inGraph);
    call(api.tensorCreateContextTensor, objects.context, &inContext);
    set(api.backendSetConfig, objects.backend, records.forBackend);
    for (const KivContext_Config_t& config : records.forContext)
      set(api.contextSetConfig, objects.context, config);
    set(api.graphSetConfig, objects.graph, records.forGraph);
    set(api.profileSetConfig, profile, records.forProfile);
    set(api.deviceSetConfig, device, records.forDevice);
    return areAccepted;
  }

  // The same with another value in one of their fields.
  template <typename Value>
  bool useWith(void* field, Value value) {
    Value kept;
    std::memcpy(&kept, field, sizeof(kept));
    std::memcpy(field, &value, sizeof(value));
    const bool areAccepted = useRecords();
    std::memcpy(field, &kept, sizeof(kept));
    return areAccepted;
  }

  // The session goes on, so its program has no end yet.
  bool recordingCompiles() const {
    const std::filesystem::path program = saver.directory() / "ended.c";
    writeFile(program, saver.modelText() + "}\n");
    const std::string command =
        "cc -std=gnu11 -w -fsyntax-only -I" KIV_INCLUDE_DIR " '" +
        program.string() + "'";
    return std::system(command.c_str()) == 0;
  }

  SaverLibrary saver;
  const KivInterface_Implementation_t& api = saver.api();
  Objects objects;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_DeviceHandle_t device = nullptr;
  Records records;
};

TEST_F(BadInput, EachPointerIsNullInItsTurn) {
  Records& r = records;
  Kiv_OpConfigV1_t& op = r.op.v1;
  Kiv_TensorV1_t& inParam = r.params[1].tensorParam.v1;
  Kiv_TensorV1_t& input = r.input.v1;
  auto& axis = input.quantizeParams.axisScaleOffsetEncoding;
  auto& bwAxis = r.output.v2.quantizeParams.bwAxisScaleOffsetEncoding;
  struct Pointer {
    const char* what;
    void* field;
    bool isOptional = true;
    std::uint32_t* count = nullptr;
  };
  std::uint32_t none = 0;
  const Pointer pointers[] = {
      {"op name", &op.name},
      {"package", &op.packageName},
      {"type", &op.typeName},
      {"parameter name", &r.params[0].name},
      {"text", &r.params[0].scalarParam.stringValue},
      {"dimensions in a parameter", &inParam.dimensions},
      {"data in a parameter", &inParam.clientBuf.data},
      {"tensor name", &input.name},
      {"flags", &r.output.v2.isDynamicDimensions},
      {"platform option", &r.forBackend.platformOption},
      {"custom config", &r.forContext[0].customConfig},
      {"kernel directory", &r.gpu.kernelRepoDir},
      {"OEM text", &r.forContext[1].oemString},
      {"graph names", &r.forContext[2].enableGraphs},
      {"first graph name", &r.graphNames[0]},
      {"platform", &r.forDevice.hardwareInfo},
      {"dimensions", &input.dimensions, true, &input.rank},
      {"data", &input.clientBuf.data, true, &input.clientBuf.dataSize},
      {"devices", &r.platform.v1.hwDevices, true, &r.platform.v1.numHwDevices},
      {"cores", &r.device.v1.cores, true, &r.device.v1.numCores},
      {"parameters", &op.params, false, &op.numParams},
      {"inputs", &op.inputTensors, false, &op.numInputs},
      {"outputs", &op.outputTensors, false, &op.numOutputs},
      {"pairs", &axis.scaleOffset, false, &axis.numScaleOffsets},
      {"scales", &bwAxis.scales, false, &bwAxis.numElements},
      {"offsets", &bwAxis.offsets, false, &bwAxis.numElements}};
  for (const Pointer& pointer : pointers) {
    std::uint32_t& counter = pointer.count == nullptr ? none : *pointer.count;
    const std::uint32_t kept = counter;
    for (const std::uint32_t count : {0U, 1U, kMost}) {
      counter = count;
      EXPECT_EQ(useWith<void*>(pointer.field, nullptr),
                pointer.isOptional || count == 0)
          << pointer.what << ' ' << count;
    }
    counter = kept;
  }
  EXPECT_TRUE(recordingCompiles());
}

// Reads the enum as whatever it is.
__attribute__((no_sanitize("undefined"))) Code createLogger(
    const KivInterface_Implementation_t& api, std::uint32_t number) {
  KivLog_Level_t level{};
  setEnum(level, number);
  return api.logCreate(nullptr, level, nullptr);
}

TEST_F(BadInput, EnumsAtTheirBorders) {
  Records& r = records;
  Kiv_TensorV1_t& tensor = r.input.v1;
  struct Enum {
    const char* what;
    void* field;
    std::uint32_t lastKnown;
    bool isPassedOn;
  };
  const Enum enums[] = {
      {"op version", &r.op.version, 1, false},
      {"parameter", &r.params[0].paramType, 1, false},
      {"scalar", &r.params[0].scalarParam.dataType, 0x608, false},
      {"tensor version", &r.input.version, 2, false},
      {"tensor type", &tensor.type, 5, true},
      {"data format", &tensor.dataFormat, 1, true},
      {"data type", &tensor.dataType, 0x608, false},
      {"memory", &tensor.memType, 0, false},
      {"definition", &tensor.quantizeParams.encodingDefinition, 1, true},
      {"encoding", &tensor.quantizeParams.quantizationEncoding, 3, false},
      {"sparse layout", &r.output.v2.sparseParams.type, 0, true},
      {"backend option", &r.forBackend.option, 2, false},
      {"context option", &r.forContext[3].option, 7, false},
      {"queue", &r.forContext[3].asyncExeQueueDepth.type, 0, false},
      {"report", &r.forContext[4].errorConfig.reportingLevel, 2, true},
      {"GPU option", &r.gpu.option, 3, true},
      {"device option", &r.forDevice.option, 1, false},
      {"platform version", &r.platform.version, 1, false},
      {"device version", &r.device.version, 1, false},
      {"core version", &r.core.version, 1, false},
      {"graph option", &r.forGraph.option, 3, false},
      {"graph priority", &r.forGraph.priority, 200, true},
      {"profile option", &r.forProfile.option, 1, false}};
  for (const Enum& row : enums) {
    for (const std::uint32_t number :
         {row.lastKnown + 1, 0x7FFFFFFEU, 0x80000000U, kMost})
      EXPECT_EQ(useWith(row.field, number), row.isPassedOn)
          << row.what << ' ' << number;
  }
  for (const std::uint32_t number : {7U, 0x7FFFFFFFU, 0x80000000U, kMost}) {
    KivSaver_Config_t option{};
    setEnum(option.option, number);
    EXPECT_FALSE(isAccepted([&] { return saver.initialize({option}); }));
    EXPECT_FALSE(isAccepted([&] { return createLogger(api, number); }));
  }
  EXPECT_TRUE(recordingCompiles());
}

TEST_F(BadInput, HandlesThatNobodyHas) {
  const Objects freed = createObjects(api, "freed");
  Kiv_ProfileHandle_t freedProfile = nullptr;
  api.profileCreate(nullptr, 1, &freedProfile);
  api.profileFree(freedProfile);
  api.contextFree(freed.context, nullptr);
  api.backendFree(freed.backend);
  void* const within = static_cast<char*>(objects.context) + 1;
  void* const small = reinterpret_cast<void*>(std::uintptr_t{77});
  void* const known[] = {nullptr,         objects.backend, device,
                         objects.context, objects.graph,   profile};
  std::vector<void*> handles(std::begin(known) + 1, std::end(known));
  handles.insert(handles.end(), {freed.backend, freed.context, freed.graph,
                                 freedProfile, within, small, kTrap, &objects});
  Source source({});
  RandomCaller caller(api, source, RandomCaller::Manner::kFair);
  for (void* handle : handles) {
    for (const RandomCaller::Call& call : RandomCaller::fairCalls()) {
      const bool takesHandle = call.with >= 1 && call.with < std::size(known);
      if (!takesHandle || handle == known[call.with]) continue;
      RandomCaller::Object object;
      const auto make = [&] { return call.make(caller, &object, handle); };
      EXPECT_FALSE(isAccepted(make)) << call.name;
    }
    const auto validate = [&](void* backend, void* on) {
      return isAccepted([&] {
        return api.contextValidateBinary(backend, on, nullptr, "b", 1);
      });
    };
    EXPECT_EQ(validate(handle, nullptr), handle == objects.backend);
    EXPECT_EQ(validate(nullptr, handle), handle == device);
    const auto finalize = [&] {
      return api.graphFinalize(objects.graph, handle, nullptr);
    };
    EXPECT_EQ(isAccepted(finalize), handle == profile);
  }
  EXPECT_EQ(api.profileFree(profile), 0U);
  EXPECT_EQ(api.deviceFree(device), 0U);
  EXPECT_EQ(api.contextFree(objects.context, nullptr), 0U);
  EXPECT_EQ(api.backendFree(objects.backend), 0U);
}

TEST_F(BadInput, TextsOfAnyLengthAndOfAnyBytes) {
  Records& r = records;
  const auto use = [&](const std::string& text) {
    const char* name = text.c_str();
    for (const char** field :
         {&r.op.v1.name, &r.op.v1.packageName, &r.op.v1.typeName,
          &r.params[0].name, &r.params[0].scalarParam.stringValue,
          &r.input.v1.name, &r.output.v2.name, &r.graphNames[0],
          &r.gpu.kernelRepoDir, &r.forBackend.platformOption,
          &r.forContext[1].oemString})
      *field = name;
    EXPECT_TRUE(useRecords());
    void* context = nullptr;
    void* graph = nullptr;
    EXPECT_EQ(api.contextCreate(nullptr, nullptr, nullptr, &context), 0U);
    EXPECT_EQ(api.graphCreate(context, name, nullptr, &graph), 0U);
    EXPECT_EQ(api.graphRetrieve(context, name, &graph), 0U);
    EXPECT_EQ(api.backendRegisterOpPackage(nullptr, name, name, name), 0U);
  };
  std::string unsafe;
  std::string safe;
  for (int c = 1; c < 256; ++c) {
    const bool isUnsafe = std::strchr("\"\\\n\r", c) != nullptr;
    (isUnsafe ? unsafe : safe) += static_cast<char>(c);
  }
  for (const std::string& text :
       {std::string(), std::string(1 << 20, 'n'), safe})
    use(text);
  for (const char c : safe) use({c});
  EXPECT_TRUE(recordingCompiles());
  for (const char c : unsafe) {
    LogCapture log(api);
    use({'a', c});
    EXPECT_FALSE(log.take().empty()) << static_cast<int>(c);
  }
}

TEST_F(BadInput, FileNamesThatNoFileCanHave) {
  const std::string longName(1 << 20, 'n');
  const auto areOpened = [&](const char* model, const char* data) {
    const bool isOpened =
        saver.initialize({filesOption(model, data)}) == KIV_SUCCESS;
    const Code written =
        api.contextValidateBinary(nullptr, nullptr, nullptr, "b", 1);
    EXPECT_EQ(written == KIV_SUCCESS, isOpened);
    return isOpened;
  };
  EXPECT_FALSE(areOpened(longName.c_str(), "b"));
  EXPECT_FALSE(areOpened("a", longName.c_str()));
  EXPECT_FALSE(areOpened("", "b"));
  EXPECT_FALSE(areOpened("..", "."));
  EXPECT_FALSE(areOpened("same", "same"));
  EXPECT_TRUE(areOpened("saver_output.c", "params.bin"));
}

TEST_F(BadInput, ATensorIsFoundFromAThousandGraphsBelow) {
  Kiv_Tensor_t tensor = emptyTensor();
  ASSERT_EQ(api.tensorCreateContextTensor(objects.context, &tensor), 0U);
  Kiv_GraphHandle_t graph = objects.graph;
  for (int level = 0; level < 1000; ++level) {
    const std::string name = "level" + std::to_string(level);
    ASSERT_EQ(api.graphCreateSubgraph(graph, name.c_str(), &graph), 0U);
  }
  ASSERT_EQ(api.graphExecute(graph, &tensor, 1, nullptr, 0, nullptr, nullptr),
            0U);
  EXPECT_NE(saver.calls().find("{context_0_tensor_0.v1.id"), std::string::npos);
}

TEST_F(BadInput, TenThousandContextsComeAndGo) {
  std::set<void*> kept;
  for (int i = 0; i < 10'000; ++i) {
    Kiv_ContextHandle_t context = nullptr;
    Kiv_GraphHandle_t graph = nullptr;
    ASSERT_EQ(api.contextCreate(nullptr, nullptr, nullptr, &context), 0U);
    ASSERT_EQ(api.graphCreate(context, "g", nullptr, &graph), 0U);
    if (i % 10 == 0 && kept.insert(context).second) continue;
    ASSERT_EQ(api.contextFree(context, nullptr), 0U);
    EXPECT_EQ(api.graphFinalize(graph, nullptr, nullptr), 6001U);
  }
  for (void* context : kept) EXPECT_EQ(api.contextFree(context, nullptr), 0U);
}

}  // namespace
}  // namespace kiv::test
