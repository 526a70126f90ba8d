#include "hostile/random_records.h"

#include <cfloat>
#include <cmath>
#include <sstream>

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

}  // namespace

std::uint32_t RandomRecords::border() {
  constexpr std::uint32_t kBorders[] = {
      0, 1, 4, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  return source_.oneIn(4) ? source_.number<std::uint32_t>()
                          : source_.oneOf(kBorders);
}

// 0x7FFFFFFF has a meaning of its own; the last three are not for fair clients.
std::uint32_t RandomRecords::outside(std::uint32_t first, std::uint32_t last) {
  const std::uint32_t numbers[] = {last + 1, 0x7FFFFFFE, first - 1, 0x80000000,
                                   0xFFFFFFFF};
  return numbers[source_.below(hostile_ ? 5 : 2)];
}

void* RandomRecords::bytes(std::size_t size) {
  std::vector<std::uint8_t> values(size);
  for (auto& value : values) value = source_.number<std::uint8_t>();
  return keep(values.data(), size);
}

std::string RandomRecords::text() {
  std::string text;
  if (source_.oneIn(250)) return text.assign(10000, 'x');
  for (auto i = source_.oneIn(2) ? source_.below(5) : 1; i > 0; --i)
    text += hostileOneIn(32) ? source_.oneOf(kUnsafePieces)
                             : source_.oneOf(pieces());
  return text;
}

const char* RandomRecords::anyText() {
  if (source_.oneIn(4)) return nullptr;
  return keep(text() + source_.oneOf(kUnsafePieces) + text());
}

void RandomRecords::fill(float& number) {
  constexpr float kNumbers[] = {
      0.0F,     -0.0F,    1.0F,         0.1F,
      NAN,      INFINITY, -INFINITY,    FLT_TRUE_MIN,
      FLT_MIN,  FLT_MAX,  -FLT_MAX,     -0.00390625F,
      16777216, 1.0e-10F, -FLT_EPSILON, 1.23456789e8F};
  number = source_.oneIn(3) ? source_.number<float>() : source_.oneOf(kNumbers);
}

void RandomRecords::fill(const char*& textOrNull) {
  textOrNull = source_.oneIn(8) ? nullptr : keep(text());
}

void RandomRecords::fill(const char* const*& graphNames) {
  std::vector<const char*> names;
  for (std::uint32_t i = source_.below(4); i > 0; --i)
    names.push_back(keep(text()));
  names.push_back(nullptr);
  graphNames = source_.oneIn(4) ? nullptr : keep(names.data(), names.size());
}

void RandomRecords::fill(Kiv_BwAxisScaleOffset_t& encoding) {
  encoding = {border(), border(), 0, nullptr, nullptr};
  encoding.numElements = array(encoding.scales, 4);
  if (encoding.scales != nullptr && !hostileOneIn(8))
    encoding.offsets =
        static_cast<std::int32_t*>(bytes(encoding.numElements * sizeof(float)));
}

void RandomRecords::fill(Kiv_QuantizeParams_t& params) {
  fill(params.encodingDefinition);
  fillOneOf(params.quantizationEncoding, params.scaleOffsetEncoding,
            params.axisScaleOffsetEncoding, params.bwScaleOffsetEncoding,
            params.bwAxisScaleOffsetEncoding);
  if (source_.oneIn(5))
    setNumber(params.quantizationEncoding, KIV_QUANTIZATION_ENCODING_UNDEFINED);
  auto& bwAxis = params.bwAxisScaleOffsetEncoding;
  spoil(params.quantizationEncoding, 0, 3, bwAxis.scales, bwAxis.offsets);
}

void RandomRecords::setData(Kiv_TensorV1_t& tensor) {
  Kiv_ClientBuffer_t& buffer = tensor.clientBuf;
  setNumber(tensor.dataType, source_.oneOf(kDataTypes));
  if (source_.oneIn(2)) {
    buffer.dataSize = source_.below(40);
    buffer.data = bytes(buffer.dataSize);
  } else {
    if (source_.oneIn(2)) fill(buffer.dataSize);
    // Texts are not for tensors.
    if (source_.oneIn(4))
      setNumber(tensor.dataType, outside(0, KIV_DATA_TYPE_STRING - 1));
  }
  spoil(tensor.dataType, 0, KIV_DATA_TYPE_STRING, buffer.data);
  spoil(tensor.memType, 0, 0, buffer.data);
}

void RandomRecords::fill(Kiv_Tensor_t& tensor) {
  tensor.v2 = {};
  setNumber(tensor.version, 1 + source_.below(2));
  Kiv_TensorV1_t& v1 = tensor.v1;
  Kiv_TensorV2_t& v2 = tensor.v2;
  v1.id = ids_.empty() || source_.oneIn(8) ? border() : source_.oneOf(ids_);
  fillAll(v1.name, v1.type, v1.quantizeParams);
  v1.dataFormat = source_.oneIn(4) ? border() : 0;
  setData(v1);
  // Sizes and flags have one count.
  v1.rank = source_.below(12);
  if (!source_.oneIn(4))
    v1.dimensions = static_cast<std::uint32_t*>(bytes(4UL * v1.rank));
  if (source_.oneIn(4))
    v2.isDynamicDimensions = static_cast<std::uint8_t*>(bytes(v1.rank));
  else if (v1.dimensions == nullptr)
    fill(v1.rank);
  Kiv_SparseCounts_t& counts = v2.sparseParams.counts;
  fillAll(v2.sparseParams.type, counts.numElements, counts.numDimensions,
          v2.isProduced);
  spoil(tensor.version, 1, 2, v1.name, v1.dimensions, v2.isDynamicDimensions);
}

void RandomRecords::fill(Kiv_Scalar_t& scalar) {
  fill(scalar.uint64Value);
  if (source_.oneIn(2)) fill(scalar.floatValue);
  setNumber(scalar.dataType, kDataTypes[source_.below(kScalarTypes)]);
  if (scalar.dataType == KIV_DATA_TYPE_BOOL_8) scalar.bool8Value &= 1;
  if (hostileOneIn(16)) setNumber(scalar.dataType, source_.oneOf(kDataTypes));
  spoil(scalar.dataType, 0, KIV_DATA_TYPE_STRING);
  if (!source_.oneIn(8)) return;
  setNumber(scalar.dataType, KIV_DATA_TYPE_STRING);
  fill(scalar.stringValue);
}

void RandomRecords::fill(Kiv_Param_t& param) {
  fill(param.name);
  fillOneOf(param.paramType, param.scalarParam, param.tensorParam);
  spoil(param.paramType, 0, 1);
}

void RandomRecords::fill(Kiv_OpConfig_t& config) {
  setNumber(config.version, 1);
  Kiv_OpConfigV1_t& v1 = config.v1;
  fillAll(v1.name, v1.packageName, v1.typeName);
  v1.numParams = array(v1.params, 3);
  v1.numInputs = array(v1.inputTensors, 3);
  v1.numOutputs = array(v1.outputTensors, 2);
  spoil(config.version, 1, 1, v1.name, v1.params);
}

void RandomRecords::fill(KivContext_AsyncExecutionQueueDepth_t& queue) {
  if (hostile_) fill(queue.type);
  fill(queue.depth);
}

void RandomRecords::fill(KivContext_Config_t& config) {
  fillOneOf(config.option, config.customConfig, config.priority,
            config.errorConfig, config.oemString, config.asyncExeQueueDepth,
            config.enableGraphs, config.memoryLimitHint,
            config.isPersistentBinary);
  if (config.option == KIV_CONTEXT_CONFIG_OPTION_CUSTOM)
    config.customConfig =
        source_.oneIn(4) ? nullptr : keep(make<KivGpuContext_CustomConfig_t>());
}

void RandomRecords::fill(KivGraph_Config_t& config) {
  if (source_.oneIn(2)) {
    setNumber(config.option, KIV_GRAPH_CONFIG_OPTION_PRIORITY);
    fill(config.priority);
  } else if (source_.oneIn(2)) {
    config.customConfig = keep(make<KivGpuGraph_CustomConfig_t>());
  }
}

void RandomRecords::fill(KivGpuContext_CustomConfig_t& config) {
  fillOneOf(config.option, config.perfHint, config.useGLBuffers,
            config.kernelRepoDir, config.invalidateKernelRepo);
  if (source_.oneIn(4)) setNumber(config.option, outside(0, 3));
}

void RandomRecords::fill(KivDevice_CoreInfo_t& core) {
  setNumber(core.version, 1);
  fillAll(core.v1.coreId, core.v1.coreType);
  if (source_.oneIn(4)) core.v1.coreInfoExtension = kTrap;
  spoil(core.version, 1, 1);
}

void RandomRecords::fill(KivDevice_HardwareDeviceInfo_t& device) {
  setNumber(device.version, 1);
  fillAll(device.v1.deviceId, device.v1.deviceType);
  device.v1.numCores = array(device.v1.cores, 3);
  if (device.v1.cores == nullptr) fill(device.v1.numCores);
  if (source_.oneIn(4)) device.v1.deviceInfoExtension = kTrap;
  spoil(device.version, 1, 1, device.v1.cores);
}

void RandomRecords::fill(KivDevice_PlatformInfo_t*& info) {
  if (source_.oneIn(4)) return;
  KivDevice_PlatformInfo_t record{};
  setNumber(record.version, 1);
  record.v1.numHwDevices = array(record.v1.hwDevices, 3);
  if (record.v1.hwDevices == nullptr) fill(record.v1.numHwDevices);
  spoil(record.version, 1, 1, record.v1.hwDevices);
  info = keep(record);
}

}  // namespace kiv::test
