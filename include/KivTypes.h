#ifndef KIV_TYPES_H
#define KIV_TYPES_H

/**
 * The records that describe tensors and operations.
 *
 * Whoever fills a record owns what it points to. A function that takes a
 * record reads it during the call only and keeps no pointer into it.
 */

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/**
 * Element types. The low byte is the width in bits written in decimal, the
 * high byte the kind: 0x00 signed, 0x01 unsigned, 0x02 floating point, 0x03
 * signed fixed point, 0x04 unsigned fixed point, 0x05 boolean, 0x06 text.
 */
typedef enum {
  KIV_DATA_TYPE_INT_8 = 0x0008,
  KIV_DATA_TYPE_INT_16 = 0x0016,
  KIV_DATA_TYPE_INT_32 = 0x0032,
  KIV_DATA_TYPE_INT_64 = 0x0064,
  KIV_DATA_TYPE_UINT_8 = 0x0108,
  KIV_DATA_TYPE_UINT_16 = 0x0116,
  KIV_DATA_TYPE_UINT_32 = 0x0132,
  KIV_DATA_TYPE_UINT_64 = 0x0164,
  KIV_DATA_TYPE_FLOAT_16 = 0x0216,
  KIV_DATA_TYPE_FLOAT_32 = 0x0232,
  KIV_DATA_TYPE_FLOAT_64 = 0x0264,
  KIV_DATA_TYPE_SFIXED_POINT_4 = 0x0304,
  KIV_DATA_TYPE_SFIXED_POINT_8 = 0x0308,
  KIV_DATA_TYPE_SFIXED_POINT_16 = 0x0316,
  KIV_DATA_TYPE_SFIXED_POINT_32 = 0x0332,
  KIV_DATA_TYPE_UFIXED_POINT_4 = 0x0404,
  KIV_DATA_TYPE_UFIXED_POINT_8 = 0x0408,
  KIV_DATA_TYPE_UFIXED_POINT_16 = 0x0416,
  KIV_DATA_TYPE_UFIXED_POINT_32 = 0x0432,
  KIV_DATA_TYPE_BOOL_8 = 0x0508,
  /** Scalars only. */
  KIV_DATA_TYPE_STRING = 0x0608,
  KIV_DATA_TYPE_UNDEFINED = 0x7FFFFFFF
} Kiv_DataType_t;

/** Whether a tensor's quantization record holds anything. */
typedef enum {
  /** The backend chooses. */
  KIV_DEFINITION_IMPL_GENERATED = 0,
  KIV_DEFINITION_DEFINED = 1,
  KIV_DEFINITION_UNDEFINED = 0x7FFFFFFF
} Kiv_Definition_t;

/** Which member of Kiv_QuantizeParams_t's union counts. */
typedef enum {
  KIV_QUANTIZATION_ENCODING_SCALE_OFFSET = 0,
  KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET = 1,
  KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET = 2,
  KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET = 3,
  KIV_QUANTIZATION_ENCODING_UNDEFINED = 0x7FFFFFFF
} Kiv_QuantizationEncoding_t;

/** real = (quantized + offset) * scale */
typedef struct {
  float scale;
  int32_t offset;
} Kiv_ScaleOffset_t;

/** One scale and offset for every slice along an axis. */
typedef struct {
  uint32_t axis;
  uint32_t numScaleOffsets;
  /** numScaleOffsets pairs */
  Kiv_ScaleOffset_t* scaleOffset;
} Kiv_AxisScaleOffset_t;

/** Scale and offset of values that use only some bits of their element. */
typedef struct {
  uint32_t bitwidth;
  float scale;
  int32_t offset;
} Kiv_BwScaleOffset_t;

/** The same for every slice along an axis. */
typedef struct {
  uint32_t bitwidth;
  uint32_t axis;
  uint32_t numElements;
  /** numElements scales */
  float* scales;
  /** numElements offsets */
  int32_t* offsets;
} Kiv_BwAxisScaleOffset_t;

typedef struct {
  Kiv_Definition_t encodingDefinition;
  Kiv_QuantizationEncoding_t quantizationEncoding;
  union {
    Kiv_ScaleOffset_t scaleOffsetEncoding;
    Kiv_AxisScaleOffset_t axisScaleOffsetEncoding;
    Kiv_BwScaleOffset_t bwScaleOffsetEncoding;
    Kiv_BwAxisScaleOffset_t bwAxisScaleOffsetEncoding;
  };
} Kiv_QuantizeParams_t;

/** Where a tensor comes from and who may see it. */
typedef enum {
  /** The client writes it before an execution. */
  KIV_TENSOR_TYPE_INPUT = 0,
  /** The client reads it after an execution. */
  KIV_TENSOR_TYPE_OUTPUT = 1,
  KIV_TENSOR_TYPE_INPUT_OUTPUT = 2,
  /** An intermediate value of the graph. */
  KIV_TENSOR_TYPE_NATIVE = 3,
  /** Constant data, given at creation. */
  KIV_TENSOR_TYPE_STATIC = 4,
  /** An optional tensor that is not there. */
  KIV_TENSOR_TYPE_NULL = 5,
  KIV_TENSOR_TYPE_UNDEFINED = 0x7FFFFFFF
} Kiv_TensorType_t;

/** Layout of the elements; a backend may define more values. */
typedef uint32_t Kiv_TensorDataFormat_t;
#define KIV_TENSOR_DATA_FORMAT_DENSE 0u
#define KIV_TENSOR_DATA_FORMAT_SPARSE 1u

/** Which member of a tensor's memory union counts. */
typedef enum {
  KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER = 0,
  KIV_TENSOR_MEM_TYPE_MEM_HANDLE = 1,
  KIV_TENSOR_MEM_TYPE_UNDEFINED = 0x7FFFFFFF
} Kiv_TensorMemType_t;

/** Memory of the client. */
typedef struct {
  void* data;
  /** bytes */
  uint32_t dataSize;
} Kiv_ClientBuffer_t;

typedef enum {
  KIV_SPARSE_LAYOUT_COORDINATES = 0,
  KIV_SPARSE_LAYOUT_UNDEFINED = 0x7FFFFFFF
} Kiv_SparseLayoutType_t;

/** The counts that a sparse layout needs; their meaning is the layout's. */
typedef struct {
  uint32_t numElements;
  uint32_t numDimensions;
} Kiv_SparseCounts_t;

typedef struct {
  Kiv_SparseLayoutType_t type;
  Kiv_SparseCounts_t counts;
} Kiv_SparseParams_t;

typedef enum {
  KIV_TENSOR_VERSION_1 = 1,
  KIV_TENSOR_VERSION_2 = 2,
  KIV_TENSOR_VERSION_UNDEFINED = 0x7FFFFFFF
} Kiv_TensorVersion_t;

typedef struct {
  /** Written by the backend when the tensor is created. */
  uint32_t id;
  /** Unique within its owner; may be null. */
  const char* name;
  Kiv_TensorType_t type;
  Kiv_TensorDataFormat_t dataFormat;
  Kiv_DataType_t dataType;
  Kiv_QuantizeParams_t quantizeParams;
  /** Number of dimensions. */
  uint32_t rank;
  /** rank sizes, outermost first; may be null. */
  uint32_t* dimensions;
  Kiv_TensorMemType_t memType;
  union {
    Kiv_ClientBuffer_t clientBuf;
    Kiv_MemHandle_t memHandle;
  };
} Kiv_TensorV1_t;

typedef struct {
  uint32_t id;
  const char* name;
  Kiv_TensorType_t type;
  Kiv_TensorDataFormat_t dataFormat;
  Kiv_DataType_t dataType;
  Kiv_QuantizeParams_t quantizeParams;
  uint32_t rank;
  uint32_t* dimensions;
  Kiv_TensorMemType_t memType;
  union {
    Kiv_ClientBuffer_t clientBuf;
    Kiv_MemHandle_t memHandle;
  };
  /** rank flags, 1 where the size may change; may be null. */
  uint8_t* isDynamicDimensions;
  Kiv_SparseParams_t sparseParams;
  /** 1 if an execution produced the tensor. */
  uint8_t isProduced;
} Kiv_TensorV2_t;

typedef struct {
  Kiv_TensorVersion_t version;
  union {
    Kiv_TensorV1_t v1;
    Kiv_TensorV2_t v2;
  };
} Kiv_Tensor_t;

/** One value; dataType says which member. */
typedef struct {
  Kiv_DataType_t dataType;
  union {
    float floatValue;
    double doubleValue;
    uint64_t uint64Value;
    int64_t int64Value;
    uint32_t uint32Value;
    int32_t int32Value;
    uint16_t uint16Value;
    int16_t int16Value;
    uint8_t uint8Value;
    int8_t int8Value;
    uint8_t bool8Value;
    const char* stringValue;
  };
} Kiv_Scalar_t;

typedef enum {
  KIV_PARAM_TYPE_SCALAR = 0,
  KIV_PARAM_TYPE_TENSOR = 1,
  KIV_PARAM_TYPE_UNDEFINED = 0x7FFFFFFF
} Kiv_ParamType_t;

/** A named parameter of an operation. */
typedef struct {
  Kiv_ParamType_t paramType;
  const char* name;
  union {
    Kiv_Scalar_t scalarParam;
    Kiv_Tensor_t tensorParam;
  };
} Kiv_Param_t;

typedef enum {
  KIV_OP_CONFIG_VERSION_1 = 1,
  KIV_OP_CONFIG_VERSION_UNDEFINED = 0x7FFFFFFF
} Kiv_OpConfigVersion_t;

/** One operation: a node of a graph. */
typedef struct {
  /** The node's name. */
  const char* name;
  /** The op package that holds the operation. */
  const char* packageName;
  /** The operation's type within the package. */
  const char* typeName;
  uint32_t numParams;
  Kiv_Param_t* params;
  uint32_t numInputs;
  Kiv_Tensor_t* inputTensors;
  uint32_t numOutputs;
  Kiv_Tensor_t* outputTensors;
} Kiv_OpConfigV1_t;

typedef struct {
  Kiv_OpConfigVersion_t version;
  union {
    Kiv_OpConfigV1_t v1;
  };
} Kiv_OpConfig_t;

static_assert(sizeof(Kiv_ScaleOffset_t) == 8, "layout");
static_assert(offsetof(Kiv_ScaleOffset_t, offset) == 4, "layout");
static_assert(sizeof(Kiv_AxisScaleOffset_t) == 16, "layout");
static_assert(offsetof(Kiv_AxisScaleOffset_t, numScaleOffsets) == 4, "layout");
static_assert(offsetof(Kiv_AxisScaleOffset_t, scaleOffset) == 8, "layout");
static_assert(sizeof(Kiv_BwScaleOffset_t) == 12, "layout");
static_assert(offsetof(Kiv_BwScaleOffset_t, scale) == 4, "layout");
static_assert(offsetof(Kiv_BwScaleOffset_t, offset) == 8, "layout");
static_assert(sizeof(Kiv_BwAxisScaleOffset_t) == 32, "layout");
static_assert(offsetof(Kiv_BwAxisScaleOffset_t, axis) == 4, "layout");
static_assert(offsetof(Kiv_BwAxisScaleOffset_t, numElements) == 8, "layout");
static_assert(offsetof(Kiv_BwAxisScaleOffset_t, scales) == 16, "layout");
static_assert(offsetof(Kiv_BwAxisScaleOffset_t, offsets) == 24, "layout");
static_assert(sizeof(Kiv_QuantizeParams_t) == 40, "layout");
static_assert(offsetof(Kiv_QuantizeParams_t, quantizationEncoding) == 4,
              "layout");
static_assert(offsetof(Kiv_QuantizeParams_t, scaleOffsetEncoding) == 8,
              "layout");
static_assert(sizeof(Kiv_ClientBuffer_t) == 16, "layout");
static_assert(offsetof(Kiv_ClientBuffer_t, dataSize) == 8, "layout");
static_assert(sizeof(Kiv_SparseParams_t) == 12, "layout");
static_assert(offsetof(Kiv_SparseParams_t, counts) == 4, "layout");
static_assert(sizeof(Kiv_TensorV1_t) == 112, "layout");
static_assert(offsetof(Kiv_TensorV1_t, name) == 8, "layout");
static_assert(offsetof(Kiv_TensorV1_t, type) == 16, "layout");
static_assert(offsetof(Kiv_TensorV1_t, dataFormat) == 20, "layout");
static_assert(offsetof(Kiv_TensorV1_t, dataType) == 24, "layout");
static_assert(offsetof(Kiv_TensorV1_t, quantizeParams) == 32, "layout");
static_assert(offsetof(Kiv_TensorV1_t, rank) == 72, "layout");
static_assert(offsetof(Kiv_TensorV1_t, dimensions) == 80, "layout");
static_assert(offsetof(Kiv_TensorV1_t, memType) == 88, "layout");
static_assert(offsetof(Kiv_TensorV1_t, clientBuf) == 96, "layout");
static_assert(sizeof(Kiv_TensorV2_t) == 136, "layout");
static_assert(offsetof(Kiv_TensorV2_t, clientBuf) == 96, "layout");
static_assert(offsetof(Kiv_TensorV2_t, isDynamicDimensions) == 112, "layout");
static_assert(offsetof(Kiv_TensorV2_t, sparseParams) == 120, "layout");
static_assert(offsetof(Kiv_TensorV2_t, isProduced) == 132, "layout");
static_assert(sizeof(Kiv_Tensor_t) == 144, "layout");
static_assert(offsetof(Kiv_Tensor_t, v1) == 8, "layout");
static_assert(sizeof(Kiv_Scalar_t) == 16, "layout");
static_assert(offsetof(Kiv_Scalar_t, floatValue) == 8, "layout");
static_assert(sizeof(Kiv_Param_t) == 160, "layout");
static_assert(offsetof(Kiv_Param_t, name) == 8, "layout");
static_assert(offsetof(Kiv_Param_t, scalarParam) == 16, "layout");
static_assert(sizeof(Kiv_OpConfigV1_t) == 72, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, packageName) == 8, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, typeName) == 16, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, numParams) == 24, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, params) == 32, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, numInputs) == 40, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, inputTensors) == 48, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, numOutputs) == 56, "layout");
static_assert(offsetof(Kiv_OpConfigV1_t, outputTensors) == 64, "layout");
static_assert(sizeof(Kiv_OpConfig_t) == 80, "layout");
static_assert(offsetof(Kiv_OpConfig_t, v1) == 8, "layout");

KIV_EXTERN_C_END

#endif
