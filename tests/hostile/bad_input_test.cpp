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
    codes.insert(code);
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
    call(api.tensorCreateGraphTensor, objects.graph, &inGraph);
    call(api.tensorCreateContextTensor, objects.context, &inContext);
    set(api.backendSetConfig, objects.backend, records.forBackend);
    for (const KivContext_Config_t& config : records.forContext)
      set(api.contextSetConfig, objects.context, config);
    set(api.graphSetConfig, objects.graph, records.forGraph);
    set(api.profileSetConfig, profile, records.forProfile);
    set(api.deviceSetConfig, device, records.forDevice);
    // It has codes of its own for tensors that are not there.
    const std::set<Code> others = codes;
    call(api.graphExecute, objects.graph, op.inputTensors, op.numInputs,
         op.outputTensors, op.numOutputs, nullptr, nullptr);
    codes = others;
    return areAccepted;
  }

  // The same with another value in one of their fields.
  template <typename Value>
  bool useWith(void* field, Value value) {
    Value kept;
    std::memcpy(&kept, field, sizeof(kept));
    std::memcpy(field, &value, sizeof(value));
    codes.clear();
    const bool areAccepted = useRecords();
    std::memcpy(field, &kept, sizeof(kept));
    return areAccepted;
  }

  // Whether a value in a field is accepted, or refused with this code and a
  // message that begins so by each call that sees it.
  template <typename Value>
  bool isTakenAs(void* field, Value value, Code code,
                 const std::string& message) {
    LogCapture log(api);
    if (useWith(field, value)) return code == KIV_SUCCESS;
    bool isLogged = false;
    for (const std::string& line : log.take())
      isLogged = isLogged || line.starts_with("1: " + message);
    return codes == std::set<Code>{code} && isLogged;
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
  // The codes of calls that were refused.
  std::set<Code> codes;
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
    std::uint32_t* count = nullptr;
    // Elsewhere null stands for nothing, whatever the count says.
    Code code = KIV_SUCCESS;
    const char* message = "";
  };
  constexpr const char* kNoElements = "An op config counts ";
  constexpr const char* kNoEncodings = "Quantization parameters count ";
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
      {"dimensions", &input.dimensions, &input.rank},
      {"data", &input.clientBuf.data, &input.clientBuf.dataSize},
      {"devices", &r.platform.v1.hwDevices, &r.platform.v1.numHwDevices},
      {"cores", &r.device.v1.cores, &r.device.v1.numCores},
      {"parameters", &op.params, &op.numParams, 4004, kNoElements},
      {"inputs", &op.inputTensors, &op.numInputs, 4004, kNoElements},
      {"outputs", &op.outputTensors, &op.numOutputs, 4004, kNoElements},
      {"pairs", &axis.scaleOffset, &axis.numScaleOffsets, 1000, kNoEncodings},
      {"scales", &bwAxis.scales, &bwAxis.numElements, 1000, kNoEncodings},
      {"offsets", &bwAxis.offsets, &bwAxis.numElements, 1000, kNoEncodings}};
  for (const Pointer& pointer : pointers) {
    std::uint32_t& counter = pointer.count == nullptr ? none : *pointer.count;
    const std::uint32_t kept = counter;
    for (const std::uint32_t count : {0U, 1U, kMost}) {
      counter = count;
      EXPECT_TRUE(isTakenAs<void*>(pointer.field, nullptr,
                                   count == 0 ? Code{0} : pointer.code,
                                   pointer.message))
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
  setNumber(level, number);
  return api.logCreate(nullptr, level, nullptr);
}

TEST_F(BadInput, EnumsAtTheirBorders) {
  Records& r = records;
  Kiv_TensorV1_t& tensor = r.input.v1;
  struct Enum {
    const char* what;
    void* field;
    std::uint32_t lastKnown;
    // Elsewhere any number is passed on.
    Code code = KIV_SUCCESS;
    const char* message = "";
  };
  constexpr const char* kOption = "Unknown config option provided: ";
  constexpr const char* kType = "Invalid Kiv_DataType_t provided: ";
  const Enum enums[] = {
      {"op version", &r.op.version, 1, 1000, "Unsupported opconfig version: "},
      {"parameter", &r.params[0].paramType, 1, 4004,
       "Invalid Kiv_ParamType_t provided: "},
      {"scalar", &r.params[0].scalarParam.dataType, 0x608, 4004, kType},
      {"tensor version", &r.input.version, 2, 1000,
       "Unsupported tensor version"},
      {"tensor type", &tensor.type, 5},
      {"data format", &tensor.dataFormat, 1},
      {"data type", &tensor.dataType, 0x608, 7999, kType},
      {"memory", &tensor.memType, 0, 6004, "Failed to parse Kiv_Tensor_t"},
      {"definition", &tensor.quantizeParams.encodingDefinition, 1},
      {"encoding", &tensor.quantizeParams.quantizationEncoding, 3, 1000,
       "Unsupported quantization encoding: "},
      {"sparse layout", &r.output.v2.sparseParams.type, 0},
      {"backend option", &r.forBackend.option, 2, 4004, kOption},
      {"context option", &r.forContext[3].option, 7, 5000, kOption},
      {"queue", &r.forContext[3].asyncExeQueueDepth.type, 0, 5000,
       "Unknown or unsupported async execution queue depth type: "},
      {"report", &r.forContext[4].errorConfig.reportingLevel, 2},
      {"GPU option", &r.gpu.option, 3},
      {"device option", &r.forDevice.option, 1, 1004, kOption},
      {"platform version", &r.platform.version, 1, 1000,
       "Unsupported platformInfo version: "},
      {"device version", &r.device.version, 1, 1000,
       "Unsupported deviceInfo version: "},
      {"core version", &r.core.version, 1, 1000,
       "Unsupported coreInfo version: "},
      {"graph option", &r.forGraph.option, 3, 6000, kOption},
      {"graph priority", &r.forGraph.priority, 200},
      {"profile option", &r.forProfile.option, 1, 1004, kOption}};
  for (const Enum& row : enums) {
    for (const std::uint32_t number :
         {row.lastKnown + 1, 0x7FFFFFFEU, 0x80000000U, kMost})
      EXPECT_TRUE(isTakenAs(row.field, number, row.code, row.message))
          << row.what << ' ' << number;
  }
  // Types of tensors that no scalar has.
  for (const std::uint32_t type :
       {0x064U, 0x164U, 0x264U, 0x304U, 0x308U, 0x316U, 0x332U, 0x404U, 0x408U,
        0x416U, 0x432U, 0U})
    EXPECT_TRUE(isTakenAs(&r.params[0].scalarParam.dataType, type, 4004,
                          kType + std::to_string(type)))
        << type;
  // Between the options of graphs there are two that are none.
  EXPECT_TRUE(isTakenAs(&r.forGraph.option, 1U, 6000, kOption));
  for (const std::uint32_t number : {7U, 0x7FFFFFFFU, 0x80000000U, kMost}) {
    KivSaver_Config_t option{};
    setNumber(option.option, number);
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
  }
  EXPECT_EQ(api.profileFree(profile), 0U);
  EXPECT_EQ(api.deviceFree(device), 0U);
  EXPECT_EQ(api.contextFree(objects.context, nullptr), 0U);
  EXPECT_EQ(api.backendFree(objects.backend), 0U);
}

}  // namespace
}  // namespace kiv::test
