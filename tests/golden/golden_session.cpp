#include "golden/golden_session.h"

#include <array>
#include <cstddef>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "support/configs.h"

namespace kiv::test {
namespace {

constexpr Kiv_ErrorConfig_t kErrors = {KIV_ERROR_REPORTING_LEVEL_DETAILED, 64};

class Session {
 public:
  explicit Session(const KivInterface_Implementation_t& api) : api_(api) {}

  std::vector<Kiv_ErrorHandle_t> run() {
    backends();
    devices();
    contexts();
    binaries();
    graphs();
    tensors();
    quantizations();
    nodes();
    executions();
    events();
    frees();
    return codes_;
  }

 private:
  void note(Kiv_ErrorHandle_t code) { codes_.push_back(code); }

  void backends();
  void devices();
  void contexts();
  void binaries();
  void graphs();
  void tensors();
  void quantizations();
  void nodes();
  void executions();
  void events();
  void frees();

  // A tensor of two dimensions.
  Kiv_Tensor_t tensor(const char* name, Kiv_DataType_t type,
                      Kiv_TensorVersion_t version = KIV_TENSOR_VERSION_1);
  Kiv_Tensor_t tensorWith(const Kiv_QuantizeParams_t& quantization);

  const KivInterface_Implementation_t& api_;
  std::vector<Kiv_ErrorHandle_t> codes_;
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_BackendHandle_t plainBackend_ = nullptr;
  Kiv_DeviceHandle_t device_ = nullptr;
  Kiv_ProfileHandle_t profile_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
  Kiv_ContextHandle_t loaded_ = nullptr;
  Kiv_ContextHandle_t awaited_ = nullptr;
  Kiv_GraphHandle_t graph_ = nullptr;
  Kiv_GraphHandle_t subgraph_ = nullptr;
  Kiv_Tensor_t weights_{};
  Kiv_Tensor_t activation_{};
  std::array<uint32_t, 2> dimensions_ = {2, 3};
  std::array<uint8_t, 2> dynamic_ = {1, 0};
  std::array<float, 6> floats_ = {0, 1, -2.5F, 3, 4, 5};
  std::array<char, 10> bytes_ = {'0', '1', '2', '3', '4',
                                 '5', '6', '7', '8', '9'};
};

void Session::backends() {
  using Config = KivBackend_Config_t;
  List<Config> configs = {
      configOf(0, &Config::customConfig, static_cast<void*>(nullptr)),
      configOf(1, &Config::errorConfig, kErrors),
      configOf(2, &Config::platformOption, "key:value"),
      configOf(2, &Config::platformOption, static_cast<const char*>(nullptr))};
  note(api_.backendCreate(nullptr, configs, &backend_));
  note(api_.backendCreate(nullptr, nullptr, &plainBackend_));
  note(api_.backendSetConfig(backend_, configs));
  note(api_.backendSetConfig(nullptr, nullptr));
  note(api_.propertyHasCapability(5));
  note(api_.backendRegisterOpPackage(backend_, R"(ops\"mine".so)", "provider",
                                     nullptr));
  uint32_t count = 0;
  const KivBackend_OperationName_t* operations = nullptr;
  note(api_.backendGetSupportedOperations(backend_, &count, &operations));
  note(api_.backendGetSupportedOperations(backend_, nullptr, nullptr));
  Kiv_OpConfig_t empty{};
  empty.version = KIV_OP_CONFIG_VERSION_1;
  note(api_.backendValidateOpConfig(backend_, empty));
}

void Session::devices() {
  using Config = KivDevice_Config_t;
  const KivDevice_PlatformInfo_t* info = nullptr;
  note(api_.deviceGetPlatformInfo(nullptr, &info));
  note(api_.deviceGetPlatformInfo(nullptr, nullptr));
  KivDevice_Infrastructure_t infrastructure = nullptr;
  note(api_.deviceGetInfrastructure(&infrastructure));
  note(api_.deviceGetInfrastructure(nullptr));

  std::array<KivDevice_CoreInfo_t, 2> cores{};
  cores[0].version = cores[1].version = KIV_DEVICE_CORE_INFO_VERSION_1;
  cores[0].v1 = {0, 7, nullptr};
  cores[1].v1 = {1, 8, nullptr};
  std::array<KivDevice_HardwareDeviceInfo_t, 2> devices{};
  devices[0].version = devices[1].version =
      KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1;
  devices[0].v1 = {5, 6, 2, cores.data(), nullptr};
  devices[1].v1 = {9, 6, 0, nullptr, nullptr};
  KivDevice_PlatformInfo_t platform{};
  platform.version = KIV_DEVICE_PLATFORM_INFO_VERSION_1;
  platform.v1 = {2, devices.data()};
  KivDevice_PlatformInfo_t* const noPlatform = nullptr;
  note(api_.deviceCreate(
      nullptr,
      List<Config>{
          configOf(1, &Config::hardwareInfo, &platform),
          configOf(1, &Config::hardwareInfo, noPlatform),
          configOf(0, &Config::customConfig, static_cast<void*>(nullptr))},
      &device_));
  note(api_.deviceSetConfig(device_, nullptr));
  note(api_.deviceGetInfo(device_, &info));
  note(api_.deviceGetInfo(device_, nullptr));
}

void Session::contexts() {
  using Config = KivContext_Config_t;
  using Gpu = KivGpuContext_CustomConfig_t;
  Gpu hint = configOf(0, &Gpu::perfHint, KIV_GPU_CONTEXT_PERF_HINT_LOW);
  Gpu buffers = configOf(1, &Gpu::useGLBuffers, uint8_t{1});
  Gpu kernels = configOf(2, &Gpu::kernelRepoDir, "/tmp/kernels");
  Gpu invalid = configOf(3, &Gpu::invalidateKernelRepo, uint8_t{1});
  Gpu unknown = configOf(7, &Gpu::useGLBuffers, uint8_t{1});
  const std::array<const char*, 3> names = {"a", "b", nullptr};
  KivContext_AsyncExecutionQueueDepth_t depth{};
  depth.depth = 12;
  List<Config> configs = {
      configOf(0, &Config::customConfig, static_cast<void*>(nullptr)),
      configOf(0, &Config::customConfig, static_cast<void*>(&hint)),
      configOf(0, &Config::customConfig, static_cast<void*>(&buffers)),
      configOf(0, &Config::customConfig, static_cast<void*>(&kernels)),
      configOf(0, &Config::customConfig, static_cast<void*>(&invalid)),
      configOf(0, &Config::customConfig, static_cast<void*>(&unknown)),
      configOf(1, &Config::priority, KIV_PRIORITY_HIGH),
      configOf(2, &Config::errorConfig, kErrors),
      configOf(3, &Config::oemString, "oem"),
      configOf(3, &Config::oemString, static_cast<const char*>(nullptr)),
      configOf(4, &Config::asyncExeQueueDepth, depth),
      configOf(5, &Config::enableGraphs, names.data()),
      configOf(5, &Config::enableGraphs,
               static_cast<const char* const*>(nullptr)),
      configOf(6, &Config::memoryLimitHint, uint64_t{1} << 40),
      configOf(7, &Config::isPersistentBinary, uint8_t{1})};
  note(api_.contextCreate(backend_, device_, configs, &context_));
  note(api_.contextSetConfig(
      context_,
      List<Config>{configOf(1, &Config::priority, KIV_PRIORITY_LOW)}));
  note(api_.contextSetConfig(context_, nullptr));
}

void Session::binaries() {
  using Config = KivContext_Config_t;
  using ProfileConfig = KivProfile_Config_t;
  note(api_.profileCreate(backend_, KIV_PROFILE_LEVEL_DETAILED, &profile_));
  note(api_.profileSetConfig(
      profile_, List<ProfileConfig>{
                    configOf(1, &ProfileConfig::numMaxEvents, uint64_t{1000}),
                    configOf(0, &ProfileConfig::customConfig,
                             static_cast<void*>(nullptr))}));
  Kiv_ContextBinarySize_t size = 0;
  note(api_.contextGetBinarySize(context_, &size));
  note(api_.contextGetBinarySize(context_, nullptr));
  // A backend that has a binary fills the buffer.
  std::array<char, 10> buffer{};
  note(api_.contextGetBinary(context_, buffer.data(), buffer.size(), &size));
  note(api_.contextCreateFromBinary(backend_, nullptr, nullptr, bytes_.data(),
                                    5, &loaded_, profile_));
  List<Config> priority = {configOf(1, &Config::priority, KIV_PRIORITY_NORMAL)};
  note(api_.contextCreateFromBinaryWithSignal(backend_, device_, priority,
                                              bytes_.data(), 0, &awaited_,
                                              nullptr, nullptr));
  note(api_.contextValidateBinary(backend_, device_, priority, bytes_.data(),
                                  3));
}

void Session::graphs() {
  using Config = KivGraph_Config_t;
  KivGpuGraph_CustomConfig_t custom = {KIV_GPU_PRECISION_FP16, 0, 1, 0};
  note(api_.graphCreate(
      context_, "main graph",
      List<Config>{
          configOf(0, &Config::customConfig, static_cast<void*>(&custom)),
          configOf(3, &Config::priority, KIV_PRIORITY_NORMAL_HIGH),
          configOf(0, &Config::customConfig, static_cast<void*>(nullptr))},
      &graph_));
  note(api_.graphCreateSubgraph(graph_, "loop:body", &subgraph_));
  note(api_.graphSetConfig(graph_, List<Config>{}));
  note(api_.graphSetConfig(subgraph_, nullptr));
  Kiv_GraphHandle_t again = nullptr;
  note(api_.graphRetrieve(context_, "main graph", &again));
  note(api_.graphRetrieve(loaded_, "4 loaded", &again));
}

Kiv_Tensor_t Session::tensor(const char* name, Kiv_DataType_t type,
                             Kiv_TensorVersion_t version) {
  Kiv_Tensor_t result{};
  result.v2 = {};
  result.version = version;
  Kiv_TensorV1_t& v1 = result.v1;
  v1.name = name;
  v1.type = KIV_TENSOR_TYPE_STATIC;
  v1.dataType = type;
  v1.quantizeParams.quantizationEncoding = KIV_QUANTIZATION_ENCODING_UNDEFINED;
  v1.rank = 2;
  v1.dimensions = dimensions_.data();
  return result;
}

void Session::tensors() {
  weights_ = tensor("weights/0", KIV_DATA_TYPE_FLOAT_32);
  weights_.v1.id = 77;
  weights_.v1.clientBuf = {floats_.data(), sizeof(floats_)};
  note(api_.tensorCreateContextTensor(context_, &weights_));

  activation_ =
      tensor("activation", KIV_DATA_TYPE_FLOAT_32, KIV_TENSOR_VERSION_2);
  activation_.v2.type = KIV_TENSOR_TYPE_NATIVE;
  activation_.v2.isDynamicDimensions = dynamic_.data();
  activation_.v2.sparseParams = {KIV_SPARSE_LAYOUT_COORDINATES, {3, 2}};
  activation_.v2.isProduced = 1;
  note(api_.tensorCreateGraphTensor(graph_, &activation_));

  // Elements that C has no type for, and bytes left over.
  for (const auto type :
       {KIV_DATA_TYPE_SFIXED_POINT_4, KIV_DATA_TYPE_UFIXED_POINT_4,
        KIV_DATA_TYPE_FLOAT_16, KIV_DATA_TYPE_FLOAT_64, KIV_DATA_TYPE_BOOL_8}) {
    Kiv_Tensor_t odd = tensor(nullptr, type);
    odd.v1.dimensions = nullptr;
    odd.v1.clientBuf = {bytes_.data(), 10};
    note(api_.tensorCreateGraphTensor(subgraph_, &odd));
  }
}

Kiv_Tensor_t Session::tensorWith(const Kiv_QuantizeParams_t& quantization) {
  Kiv_Tensor_t result = tensor("q", KIV_DATA_TYPE_UFIXED_POINT_8);
  result.v1.quantizeParams = quantization;
  result.v1.quantizeParams.encodingDefinition = KIV_DEFINITION_DEFINED;
  return result;
}

void Session::quantizations() {
  std::array<Kiv_ScaleOffset_t, 2> pairs = {{{0.1F, -128}, {1e-10F, 2}}};
  std::array<float, 2> scales = {1.0F, 1.0F / 3};
  std::array<int32_t, 2> offsets = {-2147483647, 7};
  Kiv_QuantizeParams_t params{};
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_SCALE_OFFSET;
  params.scaleOffsetEncoding = {1.0F / 255, -128};
  Kiv_Tensor_t created = tensorWith(params);
  note(api_.tensorCreateGraphTensor(graph_, &created));
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
  params.axisScaleOffsetEncoding = {1, 2, pairs.data()};
  created = tensorWith(params);
  note(api_.tensorCreateGraphTensor(graph_, &created));
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET;
  params.bwScaleOffsetEncoding = {4, 0.5F, -8};
  created = tensorWith(params);
  note(api_.tensorCreateGraphTensor(graph_, &created));
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET;
  params.bwAxisScaleOffsetEncoding = {4, 3, 2, scales.data(), offsets.data()};
  created = tensorWith(params);
  note(api_.tensorCreateGraphTensor(graph_, &created));
}

Kiv_Scalar_t scalar(Kiv_DataType_t type, uint64_t bits) {
  Kiv_Scalar_t result{};
  result.dataType = type;
  result.uint64Value = bits;
  return result;
}

void Session::nodes() {
  Kiv_Scalar_t text = scalar(KIV_DATA_TYPE_STRING, 0);
  const Kiv_Scalar_t noText = text;
  text.stringValue = "linear";
  Kiv_Scalar_t half = scalar(KIV_DATA_TYPE_FLOAT_16, 0);
  half.floatValue = 0.1F;
  Kiv_Scalar_t single = half;
  single.dataType = KIV_DATA_TYPE_FLOAT_32;
  std::vector<Kiv_Param_t> params;
  const auto add = [&params](const char* name, const Kiv_Scalar_t& value) {
    Kiv_Param_t param{};
    param.name = name;
    param.paramType = KIV_PARAM_TYPE_SCALAR;
    param.scalarParam = value;
    params.push_back(param);
  };
  constexpr uint64_t kOnes = ~uint64_t{0};
  add("int8", scalar(KIV_DATA_TYPE_INT_8, 0x80));
  add("int16", scalar(KIV_DATA_TYPE_INT_16, 0x8000));
  add("int32", scalar(KIV_DATA_TYPE_INT_32, 0x80000001));
  add("uint8", scalar(KIV_DATA_TYPE_UINT_8, kOnes));
  add("uint16", scalar(KIV_DATA_TYPE_UINT_16, kOnes));
  add("uint32", scalar(KIV_DATA_TYPE_UINT_32, kOnes));
  add("half", half);
  add("single", single);
  add("bool", scalar(KIV_DATA_TYPE_BOOL_8, 1));
  add("text", text);
  add(nullptr, noText);
  Kiv_Param_t axes{};
  axes.name = "axes";
  axes.paramType = KIV_PARAM_TYPE_TENSOR;
  axes.tensorParam = tensor("axes", KIV_DATA_TYPE_UINT_8);
  axes.tensorParam.v1.clientBuf = {bytes_.data(), 2};
  params.push_back(axes);

  std::array<Kiv_Tensor_t, 2> inputs = {
      weights_, tensor("unknown", KIV_DATA_TYPE_FLOAT_32)};
  inputs[0].v1.clientBuf.data = nullptr;
  Kiv_OpConfig_t op{};
  op.version = KIV_OP_CONFIG_VERSION_1;
  op.v1 = {"1x1 conv",    "package",
           "Conv2d",      static_cast<uint32_t>(params.size()),
           params.data(), 2,
           inputs.data(), 1,
           &activation_};
  note(api_.graphAddNode(graph_, op));
  op.v1 = {};
  note(api_.graphAddNode(subgraph_, op));
  note(api_.graphFinalize(subgraph_, nullptr, nullptr));
  note(api_.graphFinalize(graph_, profile_, nullptr));
}

void Session::executions() {
  Kiv_Tensor_t input = tensor("in", KIV_DATA_TYPE_UINT_16);
  input.v1.clientBuf = {bytes_.data(), 4};
  for (int i = 0; i < 2; ++i) {
    note(api_.graphExecute(graph_, &input, 1, &activation_, 1, profile_,
                           nullptr));
    bytes_[0] = 'x';
  }
  note(api_.graphExecute(subgraph_, nullptr, 0, nullptr, 0, nullptr, nullptr));
}

void Session::events() {
  const KivProfile_EventId_t* events = nullptr;
  uint32_t count = 0;
  KivProfile_EventData_t data{};
  KivProfile_ExtendedEventData_t extended{};
  note(api_.profileGetEvents(profile_, &events, &count));
  note(api_.profileGetEvents(profile_, nullptr, nullptr));
  note(api_.profileGetSubEvents(7, &events, &count));
  note(api_.profileGetSubEvents(8, nullptr, nullptr));
  note(api_.profileGetEventData(7, &data));
  note(api_.profileGetEventData(8, nullptr));
  note(api_.profileGetExtendedEventData(7, &extended));
  note(api_.profileGetExtendedEventData(8, nullptr));
}

void Session::frees() {
  note(api_.contextFree(loaded_, profile_));
  note(api_.contextFree(awaited_, nullptr));
  note(api_.contextFree(context_, nullptr));
  note(api_.profileFree(profile_));
  note(api_.deviceFree(device_));
  note(api_.backendFree(plainBackend_));
  note(api_.backendFree(backend_));
}

}  // namespace

std::vector<Kiv_ErrorHandle_t> runGoldenSession(
    const KivInterface_Implementation_t& api) {
  return Session(api).run();
}

}  // namespace kiv::test
