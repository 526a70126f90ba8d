#pragma once

#include <algorithm>
#include <array>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "KivInterface.h"
#include "format/fields.h"

// The rows of the API's records, held to the headers where they are made. A new
// field of a record goes into its row, and both the writer and the reader have
// it. Constant; from any thread.
namespace kiv::format::rows {

// ---- quantization ----

inline constexpr Field kScaleOffsetFields[] = {
    {"scale", FieldKind::kFloat, offsetof(Kiv_ScaleOffset_t, scale)},
    {"offset", FieldKind::kI32, offsetof(Kiv_ScaleOffset_t, offset)},
};
static_assert(fits(kScaleOffsetFields, sizeof(Kiv_ScaleOffset_t)));

inline constexpr Field kAxisScaleOffsetFields[] = {
    {"axis", FieldKind::kU32, offsetof(Kiv_AxisScaleOffset_t, axis)},
    {"numScaleOffsets", FieldKind::kU32,
     offsetof(Kiv_AxisScaleOffset_t, numScaleOffsets)},
    {"scaleOffset", FieldKind::kArray,
     offsetof(Kiv_AxisScaleOffset_t, scaleOffset), "Kiv_ScaleOffset_t"},
};
static_assert(fits(kAxisScaleOffsetFields, sizeof(Kiv_AxisScaleOffset_t)));

inline constexpr Field kBwScaleOffsetFields[] = {
    {"bitwidth", FieldKind::kU32, offsetof(Kiv_BwScaleOffset_t, bitwidth)},
    {"scale", FieldKind::kFloat, offsetof(Kiv_BwScaleOffset_t, scale)},
    {"offset", FieldKind::kI32, offsetof(Kiv_BwScaleOffset_t, offset)},
};
static_assert(fits(kBwScaleOffsetFields, sizeof(Kiv_BwScaleOffset_t)));

inline constexpr Field kBwAxisScaleOffsetFields[] = {
    {"bitwidth", FieldKind::kU32, offsetof(Kiv_BwAxisScaleOffset_t, bitwidth)},
    {"axis", FieldKind::kU32, offsetof(Kiv_BwAxisScaleOffset_t, axis)},
    {"numElements", FieldKind::kU32,
     offsetof(Kiv_BwAxisScaleOffset_t, numElements)},
    {"scales", FieldKind::kArray, offsetof(Kiv_BwAxisScaleOffset_t, scales),
     "float"},
    {"offsets", FieldKind::kArray, offsetof(Kiv_BwAxisScaleOffset_t, offsets),
     "int32_t"},
};
static_assert(fits(kBwAxisScaleOffsetFields, sizeof(Kiv_BwAxisScaleOffset_t)));

inline constexpr Field kQuantizeParamsFields[] = {
    {"encodingDefinition", FieldKind::kEnum,
     offsetof(Kiv_QuantizeParams_t, encodingDefinition), "Kiv_Definition_t"},
    {"quantizationEncoding", FieldKind::kEnum,
     offsetof(Kiv_QuantizeParams_t, quantizationEncoding),
     "Kiv_QuantizationEncoding_t"},
    {"", FieldKind::kUnion,
     offsetof(Kiv_QuantizeParams_t, scaleOffsetEncoding)},
};
static_assert(fits(kQuantizeParamsFields, sizeof(Kiv_QuantizeParams_t)));

inline constexpr Record kScaleOffset = {
    "Kiv_ScaleOffset_t", sizeof(Kiv_ScaleOffset_t), kScaleOffsetFields};
inline constexpr Record kAxisScaleOffset = {"Kiv_AxisScaleOffset_t",
                                            sizeof(Kiv_AxisScaleOffset_t),
                                            kAxisScaleOffsetFields};
inline constexpr Record kBwScaleOffset = {
    "Kiv_BwScaleOffset_t", sizeof(Kiv_BwScaleOffset_t), kBwScaleOffsetFields};
inline constexpr Record kBwAxisScaleOffset = {"Kiv_BwAxisScaleOffset_t",
                                              sizeof(Kiv_BwAxisScaleOffset_t),
                                              kBwAxisScaleOffsetFields};
inline constexpr Record kQuantizeParams = {"Kiv_QuantizeParams_t",
                                           sizeof(Kiv_QuantizeParams_t),
                                           kQuantizeParamsFields};

inline constexpr Member kEncodings[] = {
    {KIV_QUANTIZATION_ENCODING_SCALE_OFFSET, ".scaleOffsetEncoding = ",
     FieldKind::kInline, offsetof(Kiv_QuantizeParams_t, scaleOffsetEncoding),
     kScaleOffset.type, &kScaleOffset},
    {KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET,
     ".axisScaleOffsetEncoding = ", FieldKind::kRecord,
     offsetof(Kiv_QuantizeParams_t, axisScaleOffsetEncoding),
     kAxisScaleOffset.type, &kAxisScaleOffset},
    {KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET, ".bwScaleOffsetEncoding = ",
     FieldKind::kInline, offsetof(Kiv_QuantizeParams_t, bwScaleOffsetEncoding),
     kBwScaleOffset.type, &kBwScaleOffset},
    {KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET,
     ".bwAxisScaleOffsetEncoding = ", FieldKind::kRecord,
     offsetof(Kiv_QuantizeParams_t, bwAxisScaleOffsetEncoding),
     kBwAxisScaleOffset.type, &kBwAxisScaleOffset},
    // Whatever the union holds.
    {KIV_QUANTIZATION_ENCODING_UNDEFINED, ".scaleOffsetEncoding = {0.0, 0}",
     FieldKind::kFixed, offsetof(Kiv_QuantizeParams_t, scaleOffsetEncoding)},
};
static_assert(lieIn(kEncodings, sizeof(Kiv_QuantizeParams_t)));

// ---- tensors ----

inline constexpr Field kClientBufferFields[] = {
    {"data", FieldKind::kData, offsetof(Kiv_ClientBuffer_t, data)},
    {"dataSize", FieldKind::kU32, offsetof(Kiv_ClientBuffer_t, dataSize)},
};
static_assert(fits(kClientBufferFields, sizeof(Kiv_ClientBuffer_t)));

inline constexpr Record kClientBuffer = {
    "Kiv_ClientBuffer_t", sizeof(Kiv_ClientBuffer_t), kClientBufferFields};

// The fields that both versions have, which lie at the same places.
template <typename Tensor>
inline constexpr std::array<Field, 10> kCommonTensorFields = {{
    {"id", FieldKind::kTensorId, offsetof(Tensor, id)},
    {"name", FieldKind::kText, offsetof(Tensor, name)},
    {"type", FieldKind::kEnum, offsetof(Tensor, type), "Kiv_TensorType_t"},
    {"dataFormat", FieldKind::kU32, offsetof(Tensor, dataFormat)},
    {"dataType", FieldKind::kEnum, offsetof(Tensor, dataType),
     "Kiv_DataType_t"},
    {"quantizeParams", FieldKind::kRecord, offsetof(Tensor, quantizeParams),
     kQuantizeParams.type, &kQuantizeParams},
    {"rank", FieldKind::kU32, offsetof(Tensor, rank)},
    {"dimensions", FieldKind::kArray, offsetof(Tensor, dimensions), "uint32_t"},
    {"memType", FieldKind::kEnum, offsetof(Tensor, memType),
     "Kiv_TensorMemType_t"},
    {"clientBuf", FieldKind::kRecord, offsetof(Tensor, clientBuf),
     kClientBuffer.type, &kClientBuffer},
}};

inline constexpr const auto& kV1 = kCommonTensorFields<Kiv_TensorV1_t>;
inline constexpr const auto& kV2 = kCommonTensorFields<Kiv_TensorV2_t>;

inline constexpr Field kTensorV1Fields[] = {kV1[0], kV1[1], kV1[2], kV1[3],
                                            kV1[4], kV1[5], kV1[6], kV1[7],
                                            kV1[8], kV1[9]};
static_assert(fits(kTensorV1Fields, sizeof(Kiv_TensorV1_t)));

inline constexpr Field kTensorV2Fields[] = {
    kV2[0],
    kV2[1],
    kV2[2],
    kV2[3],
    kV2[4],
    kV2[5],
    kV2[6],
    kV2[7],
    kV2[8],
    kV2[9],
    {"isDynamicDimensions", FieldKind::kArray,
     offsetof(Kiv_TensorV2_t, isDynamicDimensions), "uint8_t"},
    {"sparseParams", FieldKind::kSparse, offsetof(Kiv_TensorV2_t, sparseParams),
     "Kiv_SparseLayoutType_t"},
    {"isProduced", FieldKind::kU8, offsetof(Kiv_TensorV2_t, isProduced)},
};
static_assert(fits(kTensorV2Fields, sizeof(Kiv_TensorV2_t)));

inline constexpr Field kTensorFields[] = {
    {"version", FieldKind::kEnum, offsetof(Kiv_Tensor_t, version),
     "Kiv_TensorVersion_t"},
    {"", FieldKind::kUnion, offsetof(Kiv_Tensor_t, v1)},
};
static_assert(fits(kTensorFields, sizeof(Kiv_Tensor_t)));

inline constexpr Record kTensorV1 = {"Kiv_TensorV1_t", sizeof(Kiv_TensorV1_t),
                                     kTensorV1Fields};
inline constexpr Record kTensorV2 = {"Kiv_TensorV2_t", sizeof(Kiv_TensorV2_t),
                                     kTensorV2Fields};
inline constexpr Record kTensor = {"Kiv_Tensor_t", sizeof(Kiv_Tensor_t),
                                   kTensorFields};

inline constexpr Member kTensorVersions[] = {
    {KIV_TENSOR_VERSION_1, ".v1 = ", FieldKind::kRecord,
     offsetof(Kiv_Tensor_t, v1), kTensorV1.type, &kTensorV1},
    {KIV_TENSOR_VERSION_2, ".v2 = ", FieldKind::kRecord,
     offsetof(Kiv_Tensor_t, v2), kTensorV2.type, &kTensorV2},
};
static_assert(lieIn(kTensorVersions, sizeof(Kiv_Tensor_t)));

// ---- operations ----

inline constexpr Field kScalarFields[] = {
    {"dataType", FieldKind::kEnum, offsetof(Kiv_Scalar_t, dataType),
     "Kiv_DataType_t"},
    {"", FieldKind::kUnion, offsetof(Kiv_Scalar_t, floatValue)},
};
static_assert(fits(kScalarFields, sizeof(Kiv_Scalar_t)));

inline constexpr Member kScalarValues[] = {
    {KIV_DATA_TYPE_INT_8, ".int8Value = ", FieldKind::kI8,
     offsetof(Kiv_Scalar_t, int8Value)},
    {KIV_DATA_TYPE_INT_16, ".int16Value = ", FieldKind::kI16,
     offsetof(Kiv_Scalar_t, int16Value)},
    {KIV_DATA_TYPE_INT_32, ".int32Value = ", FieldKind::kI32,
     offsetof(Kiv_Scalar_t, int32Value)},
    {KIV_DATA_TYPE_UINT_8, ".uint8Value = ", FieldKind::kU8,
     offsetof(Kiv_Scalar_t, uint8Value)},
    {KIV_DATA_TYPE_UINT_16, ".uint16Value = ", FieldKind::kU16,
     offsetof(Kiv_Scalar_t, uint16Value)},
    {KIV_DATA_TYPE_UINT_32, ".uint32Value = ", FieldKind::kU32,
     offsetof(Kiv_Scalar_t, uint32Value)},
    {KIV_DATA_TYPE_FLOAT_16, ".floatValue = ", FieldKind::kFloat,
     offsetof(Kiv_Scalar_t, floatValue)},
    {KIV_DATA_TYPE_FLOAT_32, ".floatValue = ", FieldKind::kFloat,
     offsetof(Kiv_Scalar_t, floatValue)},
    {KIV_DATA_TYPE_BOOL_8, ".bool8Value = ", FieldKind::kBool,
     offsetof(Kiv_Scalar_t, bool8Value)},
    {KIV_DATA_TYPE_STRING, ".stringValue = ", FieldKind::kText,
     offsetof(Kiv_Scalar_t, stringValue)},
};
static_assert(lieIn(kScalarValues, sizeof(Kiv_Scalar_t)));

inline constexpr Field kParamFields[] = {
    {"paramType", FieldKind::kEnum, offsetof(Kiv_Param_t, paramType),
     "Kiv_ParamType_t"},
    {"name", FieldKind::kText, offsetof(Kiv_Param_t, name)},
    {"", FieldKind::kUnion, offsetof(Kiv_Param_t, scalarParam)},
};
static_assert(fits(kParamFields, sizeof(Kiv_Param_t)));

inline constexpr Record kScalar = {"Kiv_Scalar_t", sizeof(Kiv_Scalar_t),
                                   kScalarFields};
inline constexpr Record kParam = {"Kiv_Param_t", sizeof(Kiv_Param_t),
                                  kParamFields};

inline constexpr Member kParamTypes[] = {
    {KIV_PARAM_TYPE_SCALAR, ".scalarParam = ", FieldKind::kRecord,
     offsetof(Kiv_Param_t, scalarParam), kScalar.type, &kScalar},
    {KIV_PARAM_TYPE_TENSOR, ".tensorParam = ", FieldKind::kRecord,
     offsetof(Kiv_Param_t, tensorParam), kTensor.type, &kTensor},
};
static_assert(lieIn(kParamTypes, sizeof(Kiv_Param_t)));

inline constexpr Field kOpConfigV1Fields[] = {
    {"name", FieldKind::kText, offsetof(Kiv_OpConfigV1_t, name)},
    {"packageName", FieldKind::kText, offsetof(Kiv_OpConfigV1_t, packageName)},
    {"typeName", FieldKind::kText, offsetof(Kiv_OpConfigV1_t, typeName)},
    {"numParams", FieldKind::kU32, offsetof(Kiv_OpConfigV1_t, numParams)},
    {"params", FieldKind::kArray, offsetof(Kiv_OpConfigV1_t, params),
     kParam.type},
    {"numInputs", FieldKind::kU32, offsetof(Kiv_OpConfigV1_t, numInputs)},
    {"inputTensors", FieldKind::kArray,
     offsetof(Kiv_OpConfigV1_t, inputTensors), kTensor.type},
    {"numOutputs", FieldKind::kU32, offsetof(Kiv_OpConfigV1_t, numOutputs)},
    {"outputTensors", FieldKind::kArray,
     offsetof(Kiv_OpConfigV1_t, outputTensors), kTensor.type},
};
static_assert(fits(kOpConfigV1Fields, sizeof(Kiv_OpConfigV1_t)));

inline constexpr Field kOpConfigFields[] = {
    {"version", FieldKind::kEnum, offsetof(Kiv_OpConfig_t, version),
     "Kiv_OpConfigVersion_t"},
    {"", FieldKind::kUnion, offsetof(Kiv_OpConfig_t, v1)},
};
static_assert(fits(kOpConfigFields, sizeof(Kiv_OpConfig_t)));

inline constexpr Record kOpConfigV1 = {
    "Kiv_OpConfigV1_t", sizeof(Kiv_OpConfigV1_t), kOpConfigV1Fields};
inline constexpr Record kOpConfig = {"Kiv_OpConfig_t", sizeof(Kiv_OpConfig_t),
                                     kOpConfigFields};

inline constexpr Member kOpConfigVersions[] = {
    {KIV_OP_CONFIG_VERSION_1, ".v1 = ", FieldKind::kRecord,
     offsetof(Kiv_OpConfig_t, v1), kOpConfigV1.type, &kOpConfigV1},
};
static_assert(lieIn(kOpConfigVersions, sizeof(Kiv_OpConfig_t)));

// ---- platforms ----

inline constexpr Field kCoreInfoV1Fields[] = {
    {"coreId", FieldKind::kU32, offsetof(KivDevice_CoreInfoV1_t, coreId)},
    {"coreType", FieldKind::kU32, offsetof(KivDevice_CoreInfoV1_t, coreType)},
    {"coreInfoExtension", FieldKind::kNull,
     offsetof(KivDevice_CoreInfoV1_t, coreInfoExtension)},
};
static_assert(fits(kCoreInfoV1Fields, sizeof(KivDevice_CoreInfoV1_t)));

inline constexpr Field kCoreInfoFields[] = {
    {"version", FieldKind::kEnum, offsetof(KivDevice_CoreInfo_t, version),
     "KivDevice_CoreInfoVersion_t"},
    {"", FieldKind::kUnion, offsetof(KivDevice_CoreInfo_t, v1)},
};
static_assert(fits(kCoreInfoFields, sizeof(KivDevice_CoreInfo_t)));

inline constexpr Record kCoreInfoV1 = {"KivDevice_CoreInfoV1_t",
                                       sizeof(KivDevice_CoreInfoV1_t),
                                       kCoreInfoV1Fields};
inline constexpr Record kCoreInfo = {
    "KivDevice_CoreInfo_t", sizeof(KivDevice_CoreInfo_t), kCoreInfoFields};

inline constexpr Member kCoreInfoVersions[] = {
    {1, ".v1 = ", FieldKind::kRecord, offsetof(KivDevice_CoreInfo_t, v1),
     kCoreInfoV1.type, &kCoreInfoV1},
};
static_assert(lieIn(kCoreInfoVersions, sizeof(KivDevice_CoreInfo_t)));

using DeviceV1 = KivDevice_HardwareDeviceInfoV1_t;
using Device = KivDevice_HardwareDeviceInfo_t;

inline constexpr Field kHardwareDeviceInfoV1Fields[] = {
    {"deviceId", FieldKind::kU32, offsetof(DeviceV1, deviceId)},
    {"deviceType", FieldKind::kU32, offsetof(DeviceV1, deviceType)},
    {"numCores", FieldKind::kU32, offsetof(DeviceV1, numCores)},
    {"cores", FieldKind::kArray, offsetof(DeviceV1, cores), kCoreInfo.type},
    {"deviceInfoExtension", FieldKind::kNull,
     offsetof(DeviceV1, deviceInfoExtension)},
};
static_assert(fits(kHardwareDeviceInfoV1Fields, sizeof(DeviceV1)));

inline constexpr Field kHardwareDeviceInfoFields[] = {
    {"version", FieldKind::kEnum, offsetof(Device, version),
     "KivDevice_HardwareDeviceInfoVersion_t"},
    {"", FieldKind::kUnion, offsetof(Device, v1)},
};
static_assert(fits(kHardwareDeviceInfoFields, sizeof(Device)));

inline constexpr Record kHardwareDeviceInfoV1 = {
    "KivDevice_HardwareDeviceInfoV1_t", sizeof(DeviceV1),
    kHardwareDeviceInfoV1Fields};
inline constexpr Record kHardwareDeviceInfo = {"KivDevice_HardwareDeviceInfo_t",
                                               sizeof(Device),
                                               kHardwareDeviceInfoFields};

inline constexpr Member kHardwareDeviceInfoVersions[] = {
    {1, ".v1 = ", FieldKind::kRecord, offsetof(Device, v1),
     kHardwareDeviceInfoV1.type, &kHardwareDeviceInfoV1},
};
static_assert(lieIn(kHardwareDeviceInfoVersions, sizeof(Device)));

inline constexpr Field kPlatformInfoV1Fields[] = {
    {"numHwDevices", FieldKind::kU32,
     offsetof(KivDevice_PlatformInfoV1_t, numHwDevices)},
    {"hwDevices", FieldKind::kArray,
     offsetof(KivDevice_PlatformInfoV1_t, hwDevices), kHardwareDeviceInfo.type},
};
static_assert(fits(kPlatformInfoV1Fields, sizeof(KivDevice_PlatformInfoV1_t)));

inline constexpr Field kPlatformInfoFields[] = {
    {"version", FieldKind::kEnum, offsetof(KivDevice_PlatformInfo_t, version),
     "KivDevice_PlatformInfoVersion_t"},
    {"", FieldKind::kUnion, offsetof(KivDevice_PlatformInfo_t, v1)},
};
static_assert(fits(kPlatformInfoFields, sizeof(KivDevice_PlatformInfo_t)));

inline constexpr Record kPlatformInfoV1 = {"KivDevice_PlatformInfoV1_t",
                                           sizeof(KivDevice_PlatformInfoV1_t),
                                           kPlatformInfoV1Fields};
inline constexpr Record kPlatformInfo = {"KivDevice_PlatformInfo_t",
                                         sizeof(KivDevice_PlatformInfo_t),
                                         kPlatformInfoFields};

inline constexpr Member kPlatformInfoVersions[] = {
    {1, ".v1 = ", FieldKind::kRecord, offsetof(KivDevice_PlatformInfo_t, v1),
     kPlatformInfoV1.type, &kPlatformInfoV1},
};
static_assert(lieIn(kPlatformInfoVersions, sizeof(KivDevice_PlatformInfo_t)));

// ---- configs ----

inline constexpr Field kErrorConfigFields[] = {
    {"reportingLevel", FieldKind::kEnum,
     offsetof(Kiv_ErrorConfig_t, reportingLevel), "Kiv_ErrorReportingLevel_t"},
    {"storageLimit", FieldKind::kU32,
     offsetof(Kiv_ErrorConfig_t, storageLimit)},
};
static_assert(fits(kErrorConfigFields, sizeof(Kiv_ErrorConfig_t)));

inline constexpr Field kGpuGraphCustomConfigFields[] = {
    {"precision", FieldKind::kEnum,
     offsetof(KivGpuGraph_CustomConfig_t, precision), "KivGpu_Precision_t"},
    {"flag0", FieldKind::kU8, offsetof(KivGpuGraph_CustomConfig_t, flag0)},
    {"flag1", FieldKind::kU8, offsetof(KivGpuGraph_CustomConfig_t, flag1)},
    {"flag2", FieldKind::kU8, offsetof(KivGpuGraph_CustomConfig_t, flag2)},
};
static_assert(fits(kGpuGraphCustomConfigFields,
                   sizeof(KivGpuGraph_CustomConfig_t)));

inline constexpr Record kErrorConfig = {
    "Kiv_ErrorConfig_t", sizeof(Kiv_ErrorConfig_t), kErrorConfigFields};
inline constexpr Record kGpuGraphCustomConfig = {
    "KivGpuGraph_CustomConfig_t", sizeof(KivGpuGraph_CustomConfig_t),
    kGpuGraphCustomConfigFields};

// A record that stands as a variable of its own, by its type.
struct RecordOfType {
  const Record* record;
  // The members of the record's kUnion field, if it has one.
  std::span<const Member> members;
};

inline constexpr RecordOfType kRecords[] = {
    {&kScaleOffset, {}},
    {&kAxisScaleOffset, {}},
    {&kBwAxisScaleOffset, {}},
    {&kQuantizeParams, kEncodings},
    {&kClientBuffer, {}},
    {&kTensorV1, {}},
    {&kTensorV2, {}},
    {&kTensor, kTensorVersions},
    {&kScalar, kScalarValues},
    {&kParam, kParamTypes},
    {&kOpConfigV1, {}},
    {&kOpConfig, kOpConfigVersions},
    {&kCoreInfoV1, {}},
    {&kCoreInfo, kCoreInfoVersions},
    {&kHardwareDeviceInfoV1, {}},
    {&kHardwareDeviceInfo, kHardwareDeviceInfoVersions},
    {&kPlatformInfoV1, {}},
    {&kPlatformInfo, kPlatformInfoVersions},
    {&kGpuGraphCustomConfig, {}},
};

// Null when no record has the type.
inline const RecordOfType* findRecord(std::string_view type) {
  const auto* const found = std::ranges::find_if(
      kRecords,
      [type](const RecordOfType& row) { return row.record->type == type; });
  return found == std::end(kRecords) ? nullptr : found;
}

}  // namespace kiv::format::rows
