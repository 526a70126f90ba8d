#include "hostile/random_records.h"

#include <array>
#include <cfloat>
#include <cmath>
#include <sstream>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"

namespace kiv::test {
namespace {

// Between blanks.
constexpr const char* kPieces =
    "g a a_0_input_0 g_tensor_0 context_0 _ _0 0 1 _tensor_ _input_ "
    "_inputs _inputTensor _outputTensors_0 _dims _data _v1 _config _params "
    "_param_0 _scalar _clientBuf _customConfig _array context backend "
    "device_0 profile_0 backendConfig _hwDevice_0 _core_0 _binary "
    "binaryBuffer graph opConfig interface loghandle error fp i value "
    "VALIDATE int float NULL errno stdin linux unix int32_t printf fread "
    "malloc __ _A KIV_ Kiv_Graph_t Kiv KivX \xC3\xA9 "
    "\xE6\x97\xA5\xE6\x9C\xAC / - : . ( %s%n ??\?/ // /* \x01 \x7F \xFF }; "
    "' u8 context_0_binary profileEventIds_0 g_priority_0 main bool typeof "
    "asm EOF INT8_MAX long FILE size_t remove strlen";

constexpr const char* kUnsafePieces[] = {"\"", "\\", "\n", "\r", "\"; x"};

constexpr std::uint32_t kDataTypes[] = {
    KIV_DATA_TYPE_INT_8,           KIV_DATA_TYPE_INT_16,
    KIV_DATA_TYPE_INT_32,          KIV_DATA_TYPE_UINT_8,
    KIV_DATA_TYPE_UINT_16,         KIV_DATA_TYPE_UINT_32,
    KIV_DATA_TYPE_FLOAT_16,        KIV_DATA_TYPE_FLOAT_32,
    KIV_DATA_TYPE_BOOL_8,          KIV_DATA_TYPE_INT_64,
    KIV_DATA_TYPE_UINT_64,         KIV_DATA_TYPE_FLOAT_64,
    KIV_DATA_TYPE_SFIXED_POINT_4,  KIV_DATA_TYPE_SFIXED_POINT_8,
    KIV_DATA_TYPE_SFIXED_POINT_16, KIV_DATA_TYPE_SFIXED_POINT_32,
    KIV_DATA_TYPE_UFIXED_POINT_4,  KIV_DATA_TYPE_UFIXED_POINT_8,
    KIV_DATA_TYPE_UFIXED_POINT_16, KIV_DATA_TYPE_UFIXED_POINT_32};
// The first ones are those of scalars.
constexpr std::uint32_t kScalarTypes = 9;

const std::vector<std::string>& pieces() {
  static const std::vector<std::string> all = [] {
    std::istringstream words(kPieces);
    std::vector<std::string> result = {" ", "\t"};
    for (std::string word; words >> word;) result.push_back(word);
    return result;
  }();
  return all;
}

template <typename Value, std::size_t size>
const Value& oneOf(Source& source, const Value (&values)[size]) {
  return values[source.below(size)];
}

}  // namespace

std::uint32_t RandomRecords::border() {
  constexpr std::uint32_t kBorders[] = {
      0, 1, 4, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  return source_.oneIn(4) ? source_.number<std::uint32_t>()
                          : oneOf(source_, kBorders);
}

// A number above those that an enum knows, but for 0x7FFFFFFF.
std::uint32_t RandomRecords::beyond(std::uint32_t lastKnown) {
  const std::uint32_t numbers[] = {lastKnown + 1, 0x7FFFFFFE, 0x80000000,
                                   0xFFFFFFFF};
  return numbers[source_.below(hostile_ ? 4 : 2)];
}

void* RandomRecords::bytes(std::size_t size) {
  std::vector<std::uint8_t> values(size);
  for (auto& value : values) value = source_.number<std::uint8_t>();
  return keep(values.data(), size);
}

std::string RandomRecords::randomText() {
  if (source_.oneIn(250)) return std::string(10000, 'x');
  std::string text;
  const std::uint32_t count = source_.oneIn(2) ? source_.below(5) : 1;
  for (std::uint32_t i = 0; i < count; ++i)
    text += hostileOneIn(32) ? oneOf(source_, kUnsafePieces)
                             : pieces()[source_.below(256) % pieces().size()];
  return text;
}

const char* RandomRecords::text() {
  return source_.oneIn(8) ? nullptr : nonNullText();
}

const char* RandomRecords::anyText() {
  if (source_.oneIn(4)) return nullptr;
  return keep(randomText() + oneOf(source_, kUnsafePieces) + randomText());
}

float RandomRecords::anyFloat() {
  const float numbers[] = {0.0F,     -0.0F,    1.0F,         0.1F,
                           NAN,      INFINITY, -INFINITY,    FLT_TRUE_MIN,
                           FLT_MIN,  FLT_MAX,  -FLT_MAX,     -0.00390625F,
                           16777216, 1.0e-10F, -FLT_EPSILON, 1.23456789e8F};
  return source_.oneIn(3) ? source_.number<float>() : oneOf(source_, numbers);
}

Kiv_ScaleOffset_t RandomRecords::scaleOffset() {
  return {anyFloat(), static_cast<std::int32_t>(border())};
}

Kiv_QuantizeParams_t RandomRecords::quantization() {
  Kiv_QuantizeParams_t params{};
  setAny(params.encodingDefinition);
  if (hostileOneIn(16)) {
    setEnum(params.quantizationEncoding, beyond(3));
    params.bwAxisScaleOffsetEncoding = {1, 1, 1, trap<float*>(),
                                        trap<std::int32_t*>()};
    return params;
  }
  const std::uint32_t encoding = source_.below(5);
  setEnum(params.quantizationEncoding, encoding == 4 ? 0x7FFFFFFF : encoding);
  switch (encoding) {
    case KIV_QUANTIZATION_ENCODING_SCALE_OFFSET:
      params.scaleOffsetEncoding = scaleOffset();
      break;
    case KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET: {
      auto& axis = params.axisScaleOffsetEncoding;
      axis.axis = border();
      axis.numScaleOffsets =
          array(axis.scaleOffset, 4, [this] { return scaleOffset(); });
      break;
    }
    case KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET:
      params.bwScaleOffsetEncoding = {border(), anyFloat(), -1};
      break;
    case KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET: {
      auto& axis = params.bwAxisScaleOffsetEncoding;
      axis = {border(), border(), 0, nullptr, nullptr};
      axis.numElements = array(axis.scales, 4, [this] { return anyFloat(); });
      if (axis.scales != nullptr && !hostileOneIn(8))
        axis.offsets = static_cast<std::int32_t*>(
            bytes(axis.numElements * sizeof(std::int32_t)));
      break;
    }
    default:
      break;
  }
  return params;
}

void RandomRecords::setData(Kiv_TensorV1_t& tensor) {
  setEnum(tensor.dataType, oneOf(source_, kDataTypes));
  if (hostileOneIn(16)) {
    setEnum(tensor.memType, beyond(0));
    tensor.clientBuf = {trap<void*>(), border()};
    return;
  }
  if (source_.oneIn(8)) {
    setEnum(tensor.dataType, source_.oneIn(2)
                                 ? std::uint32_t{KIV_DATA_TYPE_STRING}
                                 : beyond(KIV_DATA_TYPE_STRING));
    if (hostileOneIn(2)) tensor.clientBuf.data = trap<void*>();
    return;
  }
  if (source_.oneIn(2)) {
    const std::uint32_t size = source_.below(40);
    tensor.clientBuf = {bytes(size), size};
  } else if (source_.oneIn(2)) {
    tensor.clientBuf.dataSize = border();
  }
}

Kiv_Tensor_t RandomRecords::tensor(std::span<const std::uint32_t> ids) {
  Kiv_Tensor_t tensor{};
  tensor.v2 = {};
  setEnum(tensor.version, 1 + source_.below(2));
  Kiv_TensorV1_t& v1 = tensor.v1;
  const bool isThere = !ids.empty() && !source_.oneIn(8);
  v1.id = isThere ? ids[source_.below(256) % ids.size()] : border();
  v1.name = text();
  setAny(v1.type);
  v1.dataFormat = source_.oneIn(4) ? border() : 0;
  v1.quantizeParams = quantization();
  setData(v1);
  // Sizes and flags have one count.
  v1.rank = source_.below(6);
  if (!source_.oneIn(4))
    v1.dimensions = static_cast<std::uint32_t*>(bytes(4 * v1.rank));
  if (source_.oneIn(4))
    tensor.v2.isDynamicDimensions = static_cast<uint8_t*>(bytes(v1.rank));
  else if (v1.dimensions == nullptr)
    v1.rank = border();
  setAny(tensor.v2.sparseParams.type);
  tensor.v2.sparseParams.counts = {border(), border()};
  tensor.v2.isProduced = source_.number<std::uint8_t>();
  if (hostileOneIn(16)) {
    setEnum(tensor.version, source_.oneIn(2) ? 0 : beyond(2));
    v1.name = trap<const char*>();
    v1.dimensions = trap<std::uint32_t*>();
    tensor.v2.isDynamicDimensions = trap<std::uint8_t*>();
  }
  return tensor;
}

Kiv_Scalar_t RandomRecords::scalar() {
  Kiv_Scalar_t scalar{};
  scalar.uint64Value = source_.number<std::uint64_t>();
  if (hostileOneIn(12)) {
    setEnum(scalar.dataType,
            source_.oneIn(2) ? border() : oneOf(source_, kDataTypes));
    return scalar;
  }
  const std::uint32_t choice = source_.below(kScalarTypes + 1);
  if (choice == kScalarTypes) {
    setEnum(scalar.dataType, KIV_DATA_TYPE_STRING);
    scalar.stringValue = text();
    return scalar;
  }
  setEnum(scalar.dataType, kDataTypes[choice]);
  if (source_.oneIn(2)) scalar.floatValue = anyFloat();
  if (kDataTypes[choice] == KIV_DATA_TYPE_BOOL_8) scalar.bool8Value &= 1;
  return scalar;
}

Kiv_Param_t RandomRecords::param(std::span<const std::uint32_t> ids) {
  Kiv_Param_t param{};
  param.name = text();
  param.tensorParam = {};
  const bool isScalar = source_.oneIn(2);
  setEnum(param.paramType,
          isScalar ? KIV_PARAM_TYPE_SCALAR : KIV_PARAM_TYPE_TENSOR);
  if (isScalar)
    param.scalarParam = scalar();
  else
    param.tensorParam = tensor(ids);
  if (hostileOneIn(16)) setEnum(param.paramType, beyond(1));
  return param;
}

Kiv_OpConfig_t RandomRecords::opConfig(std::span<const std::uint32_t> ids) {
  Kiv_OpConfig_t config{};
  setEnum(config.version, 1);
  Kiv_OpConfigV1_t& v1 = config.v1;
  v1 = {};
  v1.name = text();
  v1.packageName = text();
  v1.typeName = text();
  const auto anyTensor = [&] { return tensor(ids); };
  v1.numParams = array(v1.params, 3, [&] { return param(ids); });
  v1.numInputs = array(v1.inputTensors, 3, anyTensor);
  v1.numOutputs = array(v1.outputTensors, 2, anyTensor);
  if (hostileOneIn(16)) {
    setEnum(config.version, source_.oneIn(2) ? 0 : beyond(1));
    v1.name = trap<const char*>();
    v1.params = trap<Kiv_Param_t*>();
  }
  return config;
}

template <typename Config>
Config RandomRecords::emptyConfig(std::uint32_t option) {
  Config config{};
  setEnum(config.option, option);
  return config;
}

template <typename Config>
const Config** RandomRecords::list(Config (RandomRecords::*make)()) {
  if (source_.oneIn(3)) return nullptr;
  std::vector<const Config*> pointers;
  for (std::uint32_t i = source_.below(4); i > 0; --i) {
    Config config = (this->*make)();
    if (hostileOneIn(16)) {
      config = emptyConfig<Config>(beyond(7));
      config.customConfig = trap<void*>();
    }
    pointers.push_back(keep(config));
  }
  pointers.push_back(nullptr);
  return keep(pointers.data(), pointers.size());
}

Kiv_ErrorConfig_t RandomRecords::errorConfig() {
  Kiv_ErrorConfig_t config{};
  setAny(config.reportingLevel);
  config.storageLimit = border();
  return config;
}

KivBackend_Config_t RandomRecords::backendConfig() {
  auto config = emptyConfig<KivBackend_Config_t>(source_.below(3));
  if (config.option == KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING)
    config.errorConfig = errorConfig();
  else if (config.option == KIV_BACKEND_CONFIG_OPTION_PLATFORM)
    config.platformOption = text();
  else if (hostile_)
    config.customConfig = trap<void*>();
  return config;
}

void* RandomRecords::gpuContextConfig() {
  KivGpuContext_CustomConfig_t config{};
  const std::uint32_t option = source_.below(5);
  setEnum(config.option, option == 4 ? beyond(3) : option);
  if (option == KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT)
    setAny(config.perfHint);
  else if (option == KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR)
    config.kernelRepoDir = text();
  else
    config.useGLBuffers = source_.number<std::uint8_t>();
  return keep(config);
}

void* RandomRecords::gpuGraphConfig() {
  KivGpuGraph_CustomConfig_t config{};
  setAny(config.precision);
  config.flag0 = source_.number<std::uint8_t>();
  config.flag2 = source_.number<std::uint8_t>();
  return keep(config);
}

KivContext_Config_t RandomRecords::contextConfig() {
  auto config = emptyConfig<KivContext_Config_t>(source_.below(8));
  switch (config.option) {
    case KIV_CONTEXT_CONFIG_OPTION_PRIORITY:
      setAny(config.priority);
      break;
    case KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING:
      config.errorConfig = errorConfig();
      break;
    case KIV_CONTEXT_CONFIG_OPTION_OEM_STRING:
      config.oemString = text();
      break;
    case KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH:
      config.asyncExeQueueDepth = {};
      if (hostile_) setAny(config.asyncExeQueueDepth.type);
      config.asyncExeQueueDepth.depth = border();
      break;
    case KIV_CONTEXT_CONFIG_ENABLE_GRAPHS: {
      const char** names = nullptr;
      std::vector<const char*> texts;
      for (std::uint32_t i = source_.below(4); i > 0; --i)
        texts.push_back(nonNullText());
      texts.push_back(nullptr);
      if (!source_.oneIn(4)) names = keep(texts.data(), texts.size());
      config.enableGraphs = names;
      break;
    }
    case KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT:
    case KIV_CONTEXT_CONFIG_PERSISTENT_BINARY:
      config.memoryLimitHint = source_.number<std::uint64_t>();
      break;
    default:
      if (source_.oneIn(2)) config.customConfig = gpuContextConfig();
  }
  return config;
}

KivDevice_CoreInfo_t RandomRecords::core() {
  KivDevice_CoreInfo_t core{};
  setEnum(core.version, 1);
  core.v1 = {border(), border(), nullptr};
  if (source_.oneIn(4))
    core.v1.coreInfoExtension = trap<KivDevice_CoreInfoExtension_t>();
  if (hostileOneIn(8)) setEnum(core.version, beyond(1));
  return core;
}

KivDevice_HardwareDeviceInfo_t RandomRecords::hardwareDevice() {
  KivDevice_HardwareDeviceInfo_t device{};
  setEnum(device.version, 1);
  device.v1 = {border(), border(), 0, nullptr, nullptr};
  device.v1.numCores = array(device.v1.cores, 3, [this] { return core(); });
  if (device.v1.cores == nullptr) device.v1.numCores = border();
  if (hostileOneIn(8)) {
    setEnum(device.version, beyond(1));
    device.v1.cores = trap<KivDevice_CoreInfo_t*>();
  }
  return device;
}

KivDevice_PlatformInfo_t RandomRecords::platform() {
  KivDevice_PlatformInfo_t info{};
  setEnum(info.version, 1);
  info.v1.numHwDevices =
      array(info.v1.hwDevices, 3, [this] { return hardwareDevice(); });
  if (info.v1.hwDevices == nullptr) info.v1.numHwDevices = border();
  if (hostileOneIn(8)) {
    setEnum(info.version, beyond(1));
    info.v1.hwDevices = trap<KivDevice_HardwareDeviceInfo_t*>();
  }
  return info;
}

KivDevice_Config_t RandomRecords::deviceConfig() {
  auto config = emptyConfig<KivDevice_Config_t>(source_.below(2));
  if (config.option == KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO)
    config.hardwareInfo = source_.oneIn(4) ? nullptr : keep(platform());
  else if (hostile_)
    config.customConfig = trap<void*>();
  return config;
}

KivGraph_Config_t RandomRecords::graphConfig() {
  const bool isPriority = source_.oneIn(2);
  auto config = emptyConfig<KivGraph_Config_t>(
      isPriority ? KIV_GRAPH_CONFIG_OPTION_PRIORITY
                 : KIV_GRAPH_CONFIG_OPTION_CUSTOM);
  if (isPriority)
    setAny(config.priority);
  else if (source_.oneIn(2))
    config.customConfig = gpuGraphConfig();
  return config;
}

KivProfile_Config_t RandomRecords::profileConfig() {
  auto config = emptyConfig<KivProfile_Config_t>(source_.below(2));
  if (config.option == KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS)
    config.numMaxEvents = source_.number<std::uint64_t>();
  else if (hostile_)
    config.customConfig = trap<void*>();
  return config;
}

const KivBackend_Config_t** RandomRecords::backendConfigs() {
  return list(&RandomRecords::backendConfig);
}

const KivContext_Config_t** RandomRecords::contextConfigs() {
  return list(&RandomRecords::contextConfig);
}

const KivDevice_Config_t** RandomRecords::deviceConfigs() {
  return list(&RandomRecords::deviceConfig);
}

const KivGraph_Config_t** RandomRecords::graphConfigs() {
  return list(&RandomRecords::graphConfig);
}

const KivProfile_Config_t** RandomRecords::profileConfigs() {
  return list(&RandomRecords::profileConfig);
}

}  // namespace kiv::test
