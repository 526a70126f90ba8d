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
#include "support/log_capture.h"
#include "support/records.h"
#include "support/saver_library.h"

namespace kiv::test {
namespace {

using Api = KivInterface_Implementation_t;
using Code = Kiv_ErrorHandle_t;

constexpr std::uint32_t kMost = 0xFFFFFFFF;

// A number where an enum stands, which need not be one of the enum's.
void setNumber(void* field, std::uint32_t number) {
  std::memcpy(field, &number, sizeof(number));
}

// The session goes on, so its program has no end yet.
bool compiles(const SaverLibrary& saver) {
  const std::filesystem::path program = saver.directory() / "ended.c";
  writeFile(program, saver.modelText() + "}\n");
  const std::string command =
      "cc -std=gnu11 -w -fsyntax-only -I" KIV_INCLUDE_DIR " '" +
      program.string() + "'";
  return std::system(command.c_str()) == 0;
}

class BadInput : public ::testing::Test {
 protected:
  // The code of a call, which must have left no trace if it failed.
  Code checked(const std::function<Code()>& call) {
    const auto text = std::filesystem::file_size(saver.modelPath());
    const auto data = std::filesystem::file_size(saver.dataPath());
    const Code code = call();
    if (code == KIV_SUCCESS) return code;
    EXPECT_TRUE(code >= 1000 && code <= 14999) << code;
    EXPECT_EQ(std::filesystem::file_size(saver.modelPath()), text) << code;
    EXPECT_EQ(std::filesystem::file_size(saver.dataPath()), data) << code;
    return code;
  }

  // The fixture's session is for the GPU backend, so that custom configs are
  // recorded.
  static bool chooseBackend(const SaverLibrary& saver) {
    KivSaver_Config_t option{};
    option.option = KIV_SAVER_CONFIG_OPTION_BACKEND_ID;
    option.backendId = KIV_BACKEND_ID_GPU;
    return saver.initialize({&option}) == KIV_SUCCESS;
  }

  SaverLibrary saver;
  const Api& api = saver.api();
  const bool isForGpu = chooseBackend(saver);
  Objects objects = createObjects(api);
};

// Records that refer to everything that records can refer to.
struct Records {
  std::uint32_t dims[2] = {1, 2};
  std::uint8_t dynamic[2] = {0, 1};
  std::uint8_t data[8] = {};
  Kiv_ScaleOffset_t pairs[2] = {{1, 0}, {2, 0}};
  float scales[2] = {1, 2};
  std::int32_t offsets[2] = {0, 1};
  Kiv_Tensor_t inputs[1] = {tensor(KIV_TENSOR_VERSION_1)};
  Kiv_Tensor_t outputs[1] = {tensor(KIV_TENSOR_VERSION_2)};
  Kiv_Param_t params[2] = {};
  Kiv_OpConfig_t op = emptyOpConfig("op");
  KivDevice_CoreInfo_t cores[1] = {};
  KivDevice_HardwareDeviceInfo_t devices[1] = {};
  KivDevice_PlatformInfo_t platform{};
  const char* graphNames[2] = {"g", nullptr};
  KivGpuContext_CustomConfig_t gpu{};
  KivBackend_Config_t forBackend{};
  KivContext_Config_t forContext[5] = {};
  KivDevice_Config_t forDevice{};
  KivGraph_Config_t forGraph{};
  KivProfile_Config_t forProfile{};

  Kiv_Tensor_t tensor(Kiv_TensorVersion_t version) {
    Kiv_Tensor_t result = emptyTensor(version, KIV_DATA_TYPE_INT_32);
    result.v1.name = "t";
    result.v1.rank = 2;
    result.v1.dimensions = dims;
    result.v1.clientBuf = {data, sizeof(data)};
    if (version == KIV_TENSOR_VERSION_2)
      result.v2.isDynamicDimensions = dynamic;
    return result;
  }

  Records() {
    auto& axis = inputs[0].v1.quantizeParams;
    axis.quantizationEncoding = KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
    axis.axisScaleOffsetEncoding = {0, 2, pairs};
    auto& bwAxis = outputs[0].v2.quantizeParams;
    bwAxis.quantizationEncoding =
        KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET;
    bwAxis.bwAxisScaleOffsetEncoding = {4, 0, 2, scales, offsets};
    params[0].name = "p";
    params[0].scalarParam.dataType = KIV_DATA_TYPE_STRING;
    params[0].scalarParam.stringValue = "s";
    params[1].paramType = KIV_PARAM_TYPE_TENSOR;
    params[1].tensorParam = tensor(KIV_TENSOR_VERSION_1);
    op.v1 = {"op", "package", "type", 2, params, 1, inputs, 1, outputs};
    cores[0].version = KIV_DEVICE_CORE_INFO_VERSION_1;
    devices[0].version = KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1;
    devices[0].v1 = {0, 0, 1, cores, nullptr};
    platform.version = KIV_DEVICE_PLATFORM_INFO_VERSION_1;
    platform.v1 = {1, devices};
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
    forGraph.option = KIV_GRAPH_CONFIG_OPTION_PRIORITY;
    forProfile.option = KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS;
  }
};

class BadRecords : public BadInput {
 protected:
  // Passes the records to everything that takes them; the first code that is
  // not 0.
  Code use() {
    Code first = KIV_SUCCESS;
    const auto call = [&](const std::function<Code()>& body) {
      const Code code = checked(body);
      if (first == KIV_SUCCESS) first = code;
    };
    call([&] { return api.graphAddNode(objects.graph, records.op); });
    call([&] {
      return api.backendValidateOpConfig(objects.backend, records.op);
    });
    call([&] {
      return api.graphExecute(objects.graph, records.op.v1.inputTensors,
                              records.op.v1.numInputs,
                              records.op.v1.outputTensors,
                              records.op.v1.numOutputs, nullptr, nullptr);
    });
    call([&] {
      Kiv_Tensor_t created = records.outputs[0];
      return api.tensorCreateGraphTensor(objects.graph, &created);
    });
    call([&] {
      Kiv_Tensor_t created = records.inputs[0];
      return api.tensorCreateContextTensor(objects.context, &created);
    });
    call([&] {
      const KivBackend_Config_t* list[] = {&records.forBackend, nullptr};
      return api.backendSetConfig(objects.backend, list);
    });
    for (const KivContext_Config_t& config : records.forContext) {
      call([&] {
        const KivContext_Config_t* list[] = {&config, nullptr};
        return api.contextSetConfig(objects.context, list);
      });
    }
    call([&] {
      const KivGraph_Config_t* list[] = {&records.forGraph, nullptr};
      return api.graphSetConfig(objects.graph, list);
    });
    call([&] {
      const KivProfile_Config_t* list[] = {&records.forProfile, nullptr};
      return api.profileSetConfig(profile, list);
    });
    call([&] {
      Kiv_DeviceHandle_t device = nullptr;
      const KivDevice_Config_t* list[] = {&records.forDevice, nullptr};
      return api.deviceCreate(nullptr, list, &device);
    });
    return first;
  }

  static Kiv_ProfileHandle_t createProfile(const Api& api) {
    Kiv_ProfileHandle_t profile = nullptr;
    EXPECT_EQ(api.profileCreate(nullptr, kMost, &profile), KIV_SUCCESS);
    return profile;
  }

  const Kiv_ProfileHandle_t profile = createProfile(api);
  Records records;
};

TEST_F(BadRecords, EachPointerIsNullInItsTurn) {
  Records& r = records;
  auto& op = r.op.v1;
  auto& bwAxis = r.outputs[0].v2.quantizeParams.bwAxisScaleOffsetEncoding;
  struct Part {
    const char* what;
    void* field;
    Code code;
  };
  const Part parts[] = {
      {"op name", &op.name, 0},
      {"package", &op.packageName, 0},
      {"type", &op.typeName, 0},
      {"parameters", &op.params, 4004},
      {"inputs", &op.inputTensors, 4004},
      {"outputs", &op.outputTensors, 4004},
      {"parameter name", &r.params[0].name, 0},
      {"text", &r.params[0].scalarParam.stringValue, 0},
      {"dimensions in a parameter", &r.params[1].tensorParam.v1.dimensions, 0},
      {"data in a parameter", &r.params[1].tensorParam.v1.clientBuf.data, 0},
      {"tensor name", &r.inputs[0].v1.name, 0},
      {"dimensions", &r.inputs[0].v1.dimensions, 0},
      {"data", &r.inputs[0].v1.clientBuf.data, 0},
      {"flags", &r.outputs[0].v2.isDynamicDimensions, 0},
      {"pairs",
       &r.inputs[0].v1.quantizeParams.axisScaleOffsetEncoding.scaleOffset,
       1000},
      {"scales", &bwAxis.scales, 1000},
      {"offsets", &bwAxis.offsets, 1000},
      {"platform option", &r.forBackend.platformOption, 0},
      {"custom config", &r.forContext[0].customConfig, 0},
      {"kernel directory", &r.gpu.kernelRepoDir, 0},
      {"OEM text", &r.forContext[1].oemString, 0},
      {"graph names", &r.forContext[2].enableGraphs, 0},
      {"first graph name", &r.graphNames[0], 0},
      {"platform", &r.forDevice.hardwareInfo, 0},
      {"devices", &r.platform.v1.hwDevices, 0},
      {"cores", &r.devices[0].v1.cores, 0}};
  ASSERT_EQ(use(), KIV_SUCCESS);
  for (const Part& part : parts) {
    SCOPED_TRACE(part.what);
    void* kept = nullptr;
    std::memcpy(&kept, part.field, sizeof(kept));
    ASSERT_NE(kept, nullptr);
    std::memset(part.field, 0, sizeof(kept));
    EXPECT_EQ(use(), part.code);
    std::memcpy(part.field, &kept, sizeof(kept));
  }
  EXPECT_EQ(use(), KIV_SUCCESS);
  EXPECT_TRUE(compiles(saver));
}

TEST_F(BadRecords, CountsOfNullArrays) {
  Records& r = records;
  auto& op = r.op.v1;
  auto& axis = r.inputs[0].v1.quantizeParams.axisScaleOffsetEncoding;
  auto& bwAxis = r.outputs[0].v2.quantizeParams.bwAxisScaleOffsetEncoding;
  r.outputs[0].v2.isDynamicDimensions = nullptr;
  struct Part {
    const char* what;
    std::uint32_t* count;
    void* array;
    Code code;
  };
  const Part parts[] = {
      {"parameters", &op.numParams, &op.params, 4004},
      {"inputs", &op.numInputs, &op.inputTensors, 4004},
      {"outputs", &op.numOutputs, &op.outputTensors, 4004},
      {"dimensions", &r.outputs[0].v2.rank, &r.outputs[0].v2.dimensions, 0},
      {"data", &r.inputs[0].v1.clientBuf.dataSize,
       &r.inputs[0].v1.clientBuf.data, 0},
      {"pairs", &axis.numScaleOffsets, &axis.scaleOffset, 1000},
      {"scales", &bwAxis.numElements, &bwAxis.scales, 1000},
      {"devices", &r.platform.v1.numHwDevices, &r.platform.v1.hwDevices, 0},
      {"cores", &r.devices[0].v1.numCores, &r.devices[0].v1.cores, 0}};
  for (const Part& part : parts) {
    SCOPED_TRACE(part.what);
    void* keptArray = nullptr;
    std::memcpy(&keptArray, part.array, sizeof(keptArray));
    const std::uint32_t keptCount = *part.count;
    std::memset(part.array, 0, sizeof(keptArray));
    for (const std::uint32_t count : {0U, 1U, kMost}) {
      *part.count = count;
      EXPECT_EQ(use(), count == 0 ? 0 : part.code) << count;
    }
    std::memcpy(part.array, &keptArray, sizeof(keptArray));
    *part.count = keptCount;
  }
  for (const std::uint32_t count : {1U, kMost}) {
    EXPECT_EQ(checked([&] {
                return api.graphExecute(objects.graph, nullptr, count, nullptr,
                                        0, nullptr, nullptr);
              }),
              6000U);
    EXPECT_EQ(checked([&] {
                return api.graphExecute(objects.graph, nullptr, 0, nullptr,
                                        count, nullptr, nullptr);
              }),
              6000U);
  }
  EXPECT_TRUE(compiles(saver));
}

TEST_F(BadRecords, EnumsAtTheirBorders) {
  Records& r = records;
  Kiv_TensorV1_t& tensor = r.inputs[0].v1;
  struct Part {
    const char* what;
    void* field;
    std::uint32_t lastKnown;
    Code code;
  };
  const Part parts[] = {
      {"op version", &r.op.version, 1, 1000},
      {"parameter", &r.params[0].paramType, 1, 4004},
      {"scalar", &r.params[0].scalarParam.dataType, 0x608, 4004},
      {"tensor version", &r.inputs[0].version, 2, 1000},
      {"tensor type", &tensor.type, 5, 0},
      {"data format", &tensor.dataFormat, 1, 0},
      {"data type", &tensor.dataType, 0x608, 7999},
      {"memory", &tensor.memType, 0, 6004},
      {"definition", &tensor.quantizeParams.encodingDefinition, 1, 0},
      {"encoding", &tensor.quantizeParams.quantizationEncoding, 3, 1000},
      {"sparse layout", &r.outputs[0].v2.sparseParams.type, 0, 0},
      {"backend option", &r.forBackend.option, 2, 4004},
      {"context option", &r.forContext[3].option, 7, 5000},
      {"queue", &r.forContext[3].asyncExeQueueDepth.type, 0, 5000},
      {"report", &r.forContext[4].errorConfig.reportingLevel, 2, 0},
      {"GPU option", &r.gpu.option, 3, 0},
      {"device option", &r.forDevice.option, 1, 1004},
      {"platform version", &r.platform.version, 1, 1000},
      {"device version", &r.devices[0].version, 1, 1000},
      {"core version", &r.cores[0].version, 1, 1000},
      {"graph option", &r.forGraph.option, 3, 6000},
      {"graph priority", &r.forGraph.priority, 200, 0},
      {"profile option", &r.forProfile.option, 1, 1004}};
  for (const Part& part : parts) {
    std::uint32_t kept = 0;
    std::memcpy(&kept, part.field, sizeof(kept));
    for (const std::uint32_t number :
         {part.lastKnown + 1, 0x7FFFFFFEU, 0x80000000U, kMost}) {
      SCOPED_TRACE(std::string(part.what) + ' ' + std::to_string(number));
      setNumber(part.field, number);
      EXPECT_EQ(use(), part.code);
    }
    setNumber(part.field, kept);
  }
  EXPECT_EQ(use(), KIV_SUCCESS);
  EXPECT_TRUE(compiles(saver));
}

// Reads the enum as whatever it is.
__attribute__((no_sanitize("undefined"))) Code createLogger(
    const Api& api, std::uint32_t number) {
  KivLog_Level_t level{};
  setNumber(&level, number);
  Kiv_LogHandle_t handle = nullptr;
  return api.logCreate(nullptr, level, &handle);
}

TEST_F(BadInput, LogLevelsAndOptionsAtTheirBorders) {
  for (const std::uint32_t number : {0U, 6U, 0x7FFFFFFFU, 0x80000000U, kMost}) {
    EXPECT_EQ(createLogger(api, number), 11003U);
    KivSaver_Config_t option{};
    setNumber(&option.option, number == 0 ? 7 : number);
    EXPECT_EQ(checked([&] { return saver.initialize({&option}); }), 1004U);
  }
}

TEST_F(BadInput, HandlesThatNobodyHas) {
  const Objects freed = createObjects(api, "freed");
  Kiv_DeviceHandle_t device = nullptr;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_ProfileHandle_t freedProfile = nullptr;
  api.deviceCreate(nullptr, nullptr, &device);
  api.profileCreate(nullptr, 1, &profile);
  api.profileCreate(nullptr, 1, &freedProfile);
  api.profileFree(freedProfile);
  api.contextFree(freed.context, nullptr);
  api.backendFree(freed.backend);

  Kiv_Tensor_t tensor = emptyTensor();
  const Kiv_OpConfig_t op = emptyOpConfig("op");
  void* out = nullptr;
  const auto context = objects.context;
  const auto graph = objects.graph;
  using Use = std::function<Code(void*)>;
  struct Kind {
    const char* what;
    void* handle;
    std::vector<Use> uses;
  };
  const Kind kinds[] = {
      {"context",
       context,
       {[&](void* h) { return api.contextSetConfig(h, nullptr); },
        [&](void* h) { return api.contextGetBinarySize(h, nullptr); },
        [&](void* h) { return api.contextGetBinary(h, nullptr, 0, nullptr); },
        [&](void* h) { return api.graphCreate(h, "n", nullptr, &out); },
        [&](void* h) { return api.graphRetrieve(h, "n", &out); },
        [&](void* h) { return api.tensorCreateContextTensor(h, &tensor); },
        [&](void* h) { return api.contextFree(h, nullptr); }}},
      {"graph",
       graph,
       {[&](void* h) { return api.graphSetConfig(h, nullptr); },
        [&](void* h) { return api.graphCreateSubgraph(h, "n", &out); },
        [&](void* h) { return api.graphAddNode(h, op); },
        [&](void* h) { return api.graphFinalize(h, nullptr, nullptr); },
        [&](void* h) {
          return api.graphExecute(h, nullptr, 0, nullptr, 0, nullptr, nullptr);
        },
        [&](void* h) { return api.tensorCreateGraphTensor(h, &tensor); }}},
      {"profile",
       profile,
       {[&](void* h) { return api.profileSetConfig(h, nullptr); },
        [&](void* h) { return api.profileGetEvents(h, nullptr, nullptr); },
        [&](void* h) { return api.graphFinalize(graph, h, nullptr); },
        [&](void* h) {
          return api.graphExecute(graph, nullptr, 0, nullptr, 0, h, nullptr);
        },
        [&](void* h) { return api.profileFree(h); }}},
      // A creation that fails leaves an object, which may get the handle of one
      // that was freed; so these come last.
      {"backend",
       objects.backend,
       {[&](void* h) { return api.backendSetConfig(h, nullptr); },
        [&](void* h) { return api.backendRegisterOpPackage(h, "p", "i", "t"); },
        [&](void* h) {
          return api.backendGetSupportedOperations(h, nullptr, nullptr);
        },
        [&](void* h) { return api.backendValidateOpConfig(h, op); },
        [&](void* h) { return api.profileCreate(h, 1, &out); },
        [&](void* h) { return api.contextCreate(h, nullptr, nullptr, &out); },
        [&](void* h) { return api.backendFree(h); }}},
      {"device",
       device,
       {[&](void* h) { return api.deviceSetConfig(h, nullptr); },
        [&](void* h) { return api.deviceGetInfo(h, nullptr); },
        [&](void* h) { return api.contextCreate(nullptr, h, nullptr, &out); },
        [&](void* h) {
          return api.contextValidateBinary(nullptr, h, nullptr, "b", 1);
        },
        [&](void* h) { return api.deviceFree(h); }}}};
  std::set<void*> handles = {freed.backend, freed.context, freed.graph,
                             freedProfile};
  for (const Kind& kind : kinds) handles.insert(kind.handle);
  for (const std::uintptr_t number :
       {std::uintptr_t{77}, std::uintptr_t{0x5A3C96E1F0D2B487},
        ~std::uintptr_t{0}, reinterpret_cast<std::uintptr_t>(context) + 1,
        reinterpret_cast<std::uintptr_t>(&out)})
    handles.insert(reinterpret_cast<void*>(number));

  for (const Kind& kind : kinds) {
    for (void* handle : handles) {
      if (handle == kind.handle) continue;
      for (std::size_t i = 0; i < kind.uses.size(); ++i) {
        SCOPED_TRACE(std::string(kind.what) + ' ' + std::to_string(i));
        EXPECT_NE(checked([&] { return kind.uses[i](handle); }), KIV_SUCCESS);
      }
    }
  }
  // The right ones are known still; the last use of each kind frees.
  for (auto kind = std::rbegin(kinds); kind != std::rend(kinds); ++kind) {
    EXPECT_EQ(kind->uses.back()(kind->handle), KIV_SUCCESS) << kind->what;
  }
}

class BadText : public BadInput {
 protected:
  // Gives the text to everything that takes one. Graphs need new names.
  void use(const std::string& text) {
    const char* name = text.c_str();
    void* context = nullptr;
    void* graph = nullptr;
    ASSERT_EQ(api.contextCreate(nullptr, nullptr, nullptr, &context), 0U);
    EXPECT_EQ(api.graphCreate(context, name, nullptr, &graph), 0U);
    EXPECT_EQ(api.graphRetrieve(context, name, &graph), 0U);
    Kiv_Tensor_t tensor = emptyTensor();
    tensor.v1.name = name;
    EXPECT_EQ(api.tensorCreateGraphTensor(graph, &tensor), 0U);
    Kiv_Param_t param{};
    param.name = name;
    param.scalarParam.dataType = KIV_DATA_TYPE_STRING;
    param.scalarParam.stringValue = name;
    Kiv_OpConfig_t op = emptyOpConfig(name);
    op.v1 = {name, name, name, 1, &param, 1, &tensor, 0, nullptr};
    EXPECT_EQ(api.graphAddNode(graph, op), 0U);
    KivContext_Config_t config{};
    config.option = KIV_CONTEXT_CONFIG_OPTION_OEM_STRING;
    config.oemString = name;
    const KivContext_Config_t* list[] = {&config, nullptr};
    EXPECT_EQ(api.contextSetConfig(context, list), 0U);
    EXPECT_EQ(api.backendRegisterOpPackage(nullptr, name, name, name), 0U);
    EXPECT_EQ(api.contextFree(context, nullptr), 0U);
  }
};

TEST_F(BadText, OfAnyLengthAndOfAnyBytes) {
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
  EXPECT_TRUE(compiles(saver));
  for (const char c : unsafe) {
    LogCapture log(api);
    use({'a', c});
    EXPECT_FALSE(log.take().empty()) << static_cast<int>(c);
  }
}

TEST_F(BadText, FileNamesThatNoFileCanHave) {
  const std::string longName(1 << 20, 'n');
  KivSaver_Config_t names{};
  names.option = KIV_SAVER_CONFIG_OPTION_FILE_CONFIG;
  const std::pair<const char*, const char*> files[] = {
      {longName.c_str(), "b"}, {"a", longName.c_str()}, {"", "b"}, {"..", "."}};
  for (const auto& [model, data] : files) {
    names.fileConfig = {model, data};
    EXPECT_EQ(saver.initialize({&names}), 4999U);
    EXPECT_NE(api.contextValidateBinary(nullptr, nullptr, nullptr, "b", 1),
              KIV_SUCCESS);
  }
  // One file for both would be neither.
  names.fileConfig = {"same", "same"};
  EXPECT_EQ(saver.initialize({&names}), 1004U);
  names.fileConfig = {"saver_output.c", "params.bin"};
  EXPECT_EQ(saver.initialize({&names}), KIV_SUCCESS);
  EXPECT_EQ(api.propertyHasCapability(0), KIV_SUCCESS);
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
  EXPECT_EQ(api.contextFree(objects.context, nullptr), 0U);
}

TEST_F(BadInput, TenThousandContextsComeAndGo) {
  std::set<void*> kept;
  for (int i = 0; i < 10'000; ++i) {
    Kiv_ContextHandle_t context = nullptr;
    Kiv_GraphHandle_t graph = nullptr;
    ASSERT_EQ(api.contextCreate(nullptr, nullptr, nullptr, &context), 0U);
    ASSERT_EQ(api.graphCreate(context, "g", nullptr, &graph), 0U);
    if (i % 10 == 0) {
      EXPECT_TRUE(kept.insert(context).second);
      continue;
    }
    ASSERT_EQ(api.contextFree(context, nullptr), 0U);
    EXPECT_EQ(api.graphFinalize(graph, nullptr, nullptr), 6001U);
  }
  for (void* context : kept) EXPECT_EQ(api.contextFree(context, nullptr), 0U);
}

}  // namespace
}  // namespace kiv::test
