#include "kiv_recording/record_text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "format/element_types.h"
#include "format/enum_value.h"

namespace kiv::tool {
namespace {

template <typename... Values>
void put(Text& text, fmt::format_string<Values...> format, Values&&... values) {
  fmt::format_to(std::back_inserter(text), format,
                 std::forward<Values>(values)...);
}

// FNV-1a.
std::uint64_t hashOf(const void* bytes, std::uint64_t count) {
  std::uint64_t hash = 0xcbf29ce484222325;
  const auto* byte = static_cast<const unsigned char*>(bytes);
  for (std::uint64_t i = 0; i < count; ++i)
    hash = (hash ^ byte[i]) * 0x100000001b3;
  return hash;
}

void append(Text& text, std::uint8_t number) { put(text, "{}", number); }
void append(Text& text, std::uint32_t number) { put(text, "{}", number); }
void append(Text& text, std::int32_t number) { put(text, "{}", number); }

// Nine digits tell any two floats apart; the sign of a NaN says nothing.
template <typename Real>
void appendReal(Text& text, Real value, int digits) {
  if (std::isnan(value)) {
    text.append(std::string_view("nan"));
    return;
  }
  char buffer[32];
  const auto end = std::to_chars(buffer, std::end(buffer), value,
                                 std::chars_format::general, digits);
  text.append(buffer, end.ptr);
}

void append(Text& text, float value) { appendReal(text, value, 9); }

void append(Text& text, const Kiv_ScaleOffset_t& pair);
void append(Text& text, const Kiv_Param_t& param);
void append(Text& text, const KivDevice_CoreInfo_t& core);
void append(Text& text, const KivDevice_HardwareDeviceInfo_t& device);
using tool::append;

// "[item, item]". An array of no items is empty even if its pointer is null.
template <typename Item>
void appendArray(Text& text, const Item* items, std::uint64_t count) {
  if (items == nullptr && count != 0) return put(text, "null");
  text.push_back('[');
  for (std::uint64_t i = 0; i < count; ++i) {
    if (i != 0) put(text, ", ");
    append(text, items[i]);
  }
  text.push_back(']');
}

// ---- quantization ----

void append(Text& text, const Kiv_ScaleOffset_t& pair) {
  put(text, "{{scale=");
  append(text, pair.scale);
  put(text, ", offset={}}}", pair.offset);
}

void appendFields(Text& text, const Kiv_AxisScaleOffset_t& encoding) {
  put(text, ", axis={}, count={}, pairs=", encoding.axis,
      encoding.numScaleOffsets);
  appendArray(text, encoding.scaleOffset, encoding.numScaleOffsets);
}

void appendFields(Text& text, const Kiv_BwScaleOffset_t& encoding) {
  put(text, ", bitwidth={}, scale=", encoding.bitwidth);
  append(text, encoding.scale);
  put(text, ", offset={}", encoding.offset);
}

void appendFields(Text& text, const Kiv_BwAxisScaleOffset_t& encoding) {
  put(text, ", bitwidth={}, axis={}, count={}, scales=", encoding.bitwidth,
      encoding.axis, encoding.numElements);
  appendArray(text, encoding.scales, encoding.numElements);
  put(text, ", offsets=");
  appendArray(text, encoding.offsets, encoding.numElements);
}

void append(Text& text, const Kiv_QuantizeParams_t& quantize) {
  const std::uint32_t encoding =
      format::enumValue(quantize.quantizationEncoding);
  put(text, "{{definition={}, encoding={}",
      format::enumValue(quantize.encodingDefinition), encoding);
  if (encoding == KIV_QUANTIZATION_ENCODING_SCALE_OFFSET) {
    put(text, ", scale=");
    append(text, quantize.scaleOffsetEncoding.scale);
    put(text, ", offset={}", quantize.scaleOffsetEncoding.offset);
  } else if (encoding == KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET) {
    appendFields(text, quantize.axisScaleOffsetEncoding);
  } else if (encoding == KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET) {
    appendFields(text, quantize.bwScaleOffsetEncoding);
  } else if (encoding == KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET) {
    appendFields(text, quantize.bwAxisScaleOffsetEncoding);
  }
  text.push_back('}');
}

// ---- tensors ----

// Without data the size is left out, since it says nothing. A size that ends
// amid an element is hashed up to the last whole one: no more is recorded.
void appendBuffer(Text& text, const Kiv_ClientBuffer_t& buffer,
                  std::uint32_t dataType) {
  put(text, ", data=");
  if (buffer.data == nullptr) return put(text, "null");
  const auto element = format::elementTypeOf(dataType);
  const std::uint64_t rest =
      element ? buffer.dataSize % element->size : std::uint64_t{0};
  append(text, Bytes{buffer.data, buffer.dataSize - rest, buffer.dataSize});
}

// The fields that both versions have.
template <typename Tensor>
void appendFields(Text& text, const Tensor& tensor) {
  put(text, ", id={}, name=", tensor.id);
  append(text, tensor.name);
  put(text, ", type={}, format={}, dataType={}, quantize=",
      format::enumValue(tensor.type), tensor.dataFormat,
      format::enumValue(tensor.dataType));
  append(text, tensor.quantizeParams);
  put(text, ", rank={}, dims=", tensor.rank);
  appendArray(text, tensor.dimensions, tensor.rank);
  put(text, ", mem={}", format::enumValue(tensor.memType));
  if (format::enumValue(tensor.memType) == KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER)
    appendBuffer(text, tensor.clientBuf, format::enumValue(tensor.dataType));
}

// ---- operations ----

void appendValue(Text& text, const Kiv_Scalar_t& scalar) {
  switch (format::enumValue(scalar.dataType)) {
    case KIV_DATA_TYPE_INT_8:
      return put(text, "{}", scalar.int8Value);
    case KIV_DATA_TYPE_INT_16:
      return put(text, "{}", scalar.int16Value);
    case KIV_DATA_TYPE_INT_32:
      return put(text, "{}", scalar.int32Value);
    case KIV_DATA_TYPE_UINT_8:
      return put(text, "{}", scalar.uint8Value);
    case KIV_DATA_TYPE_UINT_16:
      return put(text, "{}", scalar.uint16Value);
    case KIV_DATA_TYPE_UINT_32:
      return put(text, "{}", scalar.uint32Value);
    case KIV_DATA_TYPE_FLOAT_16:
    case KIV_DATA_TYPE_FLOAT_32:
      return append(text, scalar.floatValue);
    case KIV_DATA_TYPE_BOOL_8:
      return put(text, "{}", scalar.bool8Value == 0 ? 0 : 1);
    case KIV_DATA_TYPE_STRING:
      return append(text, scalar.stringValue);
    default:
      return put(text, "?");
  }
}

void append(Text& text, const Kiv_Param_t& param) {
  const std::uint32_t type = format::enumValue(param.paramType);
  put(text, "{{type={}, name=", type);
  append(text, param.name);
  if (type == KIV_PARAM_TYPE_SCALAR) {
    put(text, ", scalar={{type={}, value=",
        format::enumValue(param.scalarParam.dataType));
    appendValue(text, param.scalarParam);
    text.push_back('}');
  } else if (type == KIV_PARAM_TYPE_TENSOR) {
    put(text, ", tensor=");
    append(text, param.tensorParam);
  }
  text.push_back('}');
}

// ---- platforms ----

void append(Text& text, const KivDevice_CoreInfo_t& core) {
  const std::uint32_t version = format::enumValue(core.version);
  put(text, "{{version={}", version);
  if (version == KIV_DEVICE_CORE_INFO_VERSION_1)
    put(text, ", id={}, type={}", core.v1.coreId, core.v1.coreType);
  text.push_back('}');
}

void append(Text& text, const KivDevice_HardwareDeviceInfo_t& device) {
  const std::uint32_t version = format::enumValue(device.version);
  put(text, "{{version={}", version);
  if (version == KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1) {
    put(text, ", id={}, type={}, count={}, cores=", device.v1.deviceId,
        device.v1.deviceType, device.v1.numCores);
    appendArray(text, device.v1.cores, device.v1.numCores);
  }
  text.push_back('}');
}

void append(Text& text, const KivDevice_PlatformInfo_t& platform) {
  const std::uint32_t version = format::enumValue(platform.version);
  put(text, "{{version={}", version);
  if (version == KIV_DEVICE_PLATFORM_INFO_VERSION_1) {
    put(text, ", count={}, devices=", platform.v1.numHwDevices);
    appendArray(text, platform.v1.hwDevices, platform.v1.numHwDevices);
  }
  text.push_back('}');
}

// ---- configs ----

void append(Text& text, const Kiv_ErrorConfig_t& config) {
  put(text, "{{level={}, limit={}}}", format::enumValue(config.reportingLevel),
      config.storageLimit);
}

void append(Text& text, const KivContext_AsyncExecutionQueueDepth_t& depth) {
  put(text, "{{type={}", format::enumValue(depth.type));
  if (format::enumValue(depth.type) ==
      KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC)
    put(text, ", depth={}", depth.depth);
  text.push_back('}');
}

void append(Text& text, const KivGpuContext_CustomConfig_t& config) {
  const std::uint32_t option = format::enumValue(config.option);
  put(text, "{{option={}, ", option);
  switch (option) {
    case KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS:
      put(text, "useGLBuffers={}", config.useGLBuffers);
      break;
    case KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR:
      put(text, "kernelRepoDir=");
      append(text, config.kernelRepoDir);
      break;
    case KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO:
      put(text, "invalidateKernelRepo={}", config.invalidateKernelRepo);
      break;
    default:
      put(text, "perfHint={}", format::enumValue(config.perfHint));
      break;
  }
  text.push_back('}');
}

void append(Text& text, const KivGpuGraph_CustomConfig_t& config) {
  put(text, "{{precision={}, flag0={}, flag1={}, flag2={}}}",
      format::enumValue(config.precision), config.flag0, config.flag1,
      config.flag2);
}

// A recording holds custom configs of the GPU backend alone.
template <typename Gpu>
void appendCustom(Text& text, const void* config) {
  put(text, ", custom=");
  if (config == nullptr) return put(text, "null");
  append(text, *static_cast<const Gpu*>(config));
}

std::uint64_t countOf(const char* const* names) {
  std::uint64_t count = 0;
  while (names != nullptr && names[count] != nullptr) ++count;
  return count;
}

void appendValue(Text& text, const KivContext_Config_t& config) {
  switch (format::enumValue(config.option)) {
    case KIV_CONTEXT_CONFIG_OPTION_CUSTOM:
      return appendCustom<KivGpuContext_CustomConfig_t>(text,
                                                        config.customConfig);
    case KIV_CONTEXT_CONFIG_OPTION_PRIORITY:
      return put(text, ", priority={}", format::enumValue(config.priority));
    case KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING:
      put(text, ", error=");
      return append(text, config.errorConfig);
    case KIV_CONTEXT_CONFIG_OPTION_OEM_STRING:
      put(text, ", oem=");
      return append(text, config.oemString);
    case KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH:
      put(text, ", queueDepth=");
      return append(text, config.asyncExeQueueDepth);
    case KIV_CONTEXT_CONFIG_ENABLE_GRAPHS:
      put(text, ", graphs=");
      return appendArray(text, config.enableGraphs,
                         countOf(config.enableGraphs));
    case KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT:
      return put(text, ", memoryLimit={}", config.memoryLimitHint);
    case KIV_CONTEXT_CONFIG_PERSISTENT_BINARY:
      return put(text, ", persistent={}", config.isPersistentBinary);
    default:
      return;
  }
}

}  // namespace

void append(Text& text, const char* string) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  if (string == nullptr) return put(text, "null");
  text.push_back('"');
  for (; *string != '\0'; ++string) {
    const auto code = static_cast<unsigned char>(*string);
    if (code < 0x20 || code > 0x7e) {
      text.append(std::string_view("\\x"));
      text.push_back(kHexDigits[code >> 4]);
      text.push_back(kHexDigits[code & 15]);
      continue;
    }
    if (*string == '"' || *string == '\\') text.push_back('\\');
    text.push_back(*string);
  }
  text.push_back('"');
}

void append(Text& text, const Bytes& data) {
  if (data.bytes == nullptr && data.length != 0) return put(text, "null");
  put(text, "{}:{:016x}", data.length, hashOf(data.bytes, data.hashed));
}

void append(Text& text, const Kiv_Tensor_t& tensor) {
  const std::uint32_t version = format::enumValue(tensor.version);
  put(text, "{{version={}", version);
  if (version == KIV_TENSOR_VERSION_1) {
    appendFields(text, tensor.v1);
  } else if (version == KIV_TENSOR_VERSION_2) {
    appendFields(text, tensor.v2);
    put(text, ", dynamic=");
    appendArray(text, tensor.v2.isDynamicDimensions, tensor.v2.rank);
    const Kiv_SparseParams_t& sparse = tensor.v2.sparseParams;
    put(text, ", sparse={{type={}, elements={}, dimensions={}}}",
        format::enumValue(sparse.type), sparse.counts.numElements,
        sparse.counts.numDimensions);
    put(text, ", produced={}", tensor.v2.isProduced);
  }
  text.push_back('}');
}

void append(Text& text, const Kiv_Tensor_t* tensors, std::uint32_t count) {
  appendArray(text, tensors, count);
}

void append(Text& text, const Kiv_OpConfig_t& config) {
  const std::uint32_t version = format::enumValue(config.version);
  put(text, "{{version={}", version);
  if (version == KIV_OP_CONFIG_VERSION_1) {
    put(text, ", name=");
    append(text, config.v1.name);
    put(text, ", package=");
    append(text, config.v1.packageName);
    put(text, ", type=");
    append(text, config.v1.typeName);
    put(text, ", params=");
    appendArray(text, config.v1.params, config.v1.numParams);
    put(text, ", inputs=");
    appendArray(text, config.v1.inputTensors, config.v1.numInputs);
    put(text, ", outputs=");
    appendArray(text, config.v1.outputTensors, config.v1.numOutputs);
  }
  text.push_back('}');
}

void append(Text& text, const KivBackend_Config_t& config) {
  const std::uint32_t option = format::enumValue(config.option);
  put(text, "{{option={}", option);
  if (option == KIV_BACKEND_CONFIG_OPTION_CUSTOM) {
    put(text, ", custom={}", config.customConfig ? "<set>" : "null");
  } else if (option == KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING) {
    put(text, ", error=");
    append(text, config.errorConfig);
  } else if (option == KIV_BACKEND_CONFIG_OPTION_PLATFORM) {
    put(text, ", platform=");
    append(text, config.platformOption);
  }
  text.push_back('}');
}

void append(Text& text, const KivContext_Config_t& config) {
  put(text, "{{option={}", format::enumValue(config.option));
  appendValue(text, config);
  text.push_back('}');
}

void append(Text& text, const KivDevice_Config_t& config) {
  const std::uint32_t option = format::enumValue(config.option);
  put(text, "{{option={}", option);
  if (option == KIV_DEVICE_CONFIG_OPTION_CUSTOM) {
    put(text, ", custom={}", config.customConfig ? "<set>" : "null");
  } else if (option == KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO) {
    put(text, ", platform=");
    if (config.hardwareInfo == nullptr)
      put(text, "null");
    else
      append(text, *config.hardwareInfo);
  }
  text.push_back('}');
}

void append(Text& text, const KivGraph_Config_t& config) {
  const std::uint32_t option = format::enumValue(config.option);
  put(text, "{{option={}", option);
  if (option == KIV_GRAPH_CONFIG_OPTION_CUSTOM)
    appendCustom<KivGpuGraph_CustomConfig_t>(text, config.customConfig);
  else if (option == KIV_GRAPH_CONFIG_OPTION_PRIORITY)
    put(text, ", priority={}", format::enumValue(config.priority));
  text.push_back('}');
}

void append(Text& text, const KivProfile_Config_t& config) {
  const std::uint32_t option = format::enumValue(config.option);
  put(text, "{{option={}", option);
  if (option == KIV_PROFILE_CONFIG_OPTION_CUSTOM)
    put(text, ", custom={}", config.customConfig ? "<set>" : "null");
  else if (option == KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS)
    put(text, ", maxEvents={}", config.numMaxEvents);
  text.push_back('}');
}

}  // namespace kiv::tool
