#include "writers/quantize_writer.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::floatText;
using output::Texts;

constexpr Failure kUnknownEncoding = {
    Status::kNotSupported, "Unsupported quantization encoding: %d.\n"};
constexpr Failure kMissingArray = {
    Status::kNotSupported,
    "Quantization parameters count %ld elements but their array is NULL"};

std::string braced(const Texts& texts) {
  std::string result = "{";
  result += output::joined(texts);
  result += '}';
  return result;
}

std::string pairText(float scale, std::int32_t offset) {
  return braced({floatText(scale), decimal(offset)});
}

Status writeAxisScaleOffset(WriteScope& scope,
                            const Kiv_AxisScaleOffset_t& encoding,
                            const std::string& name, std::string& member) {
  const std::uint32_t count = encoding.numScaleOffsets;
  if (count != 0 && encoding.scaleOffset == nullptr)
    return scope.fail(kMissingArray, static_cast<long>(count));
  Texts pairs;
  for (std::uint32_t i = 0; i < count; ++i) {
    const Kiv_ScaleOffset_t& pair = encoding.scaleOffset[i];
    pairs.push_back(pairText(pair.scale, pair.offset));
  }
  const std::string array = name + "_scaleOffsets";
  const std::string record = name + "_axisScaleOffset";
  scope.code.emitArray("Kiv_ScaleOffset_t", array, pairs);
  scope.code.emitStruct("Kiv_AxisScaleOffset_t", record,
                        {decimal(encoding.axis), decimal(count), array});
  member = ".axisScaleOffsetEncoding = " + record;
  return Status::kOk;
}

Status writeBwAxisScaleOffset(WriteScope& scope,
                              const Kiv_BwAxisScaleOffset_t& encoding,
                              const std::string& name, std::string& member) {
  const std::uint32_t count = encoding.numElements;
  if (count != 0 && (encoding.scales == nullptr || encoding.offsets == nullptr))
    return scope.fail(kMissingArray, static_cast<long>(count));
  const std::string scales = name + "_scales";
  const std::string offsets = name + "_offsets";
  const std::string record = name + "_bwAxisScaleOffset";
  scope.code.emitNumberArray("float", scales, encoding.scales, count);
  scope.code.emitNumberArray("int32_t", offsets, encoding.offsets, count);
  scope.code.emitStruct("Kiv_BwAxisScaleOffset_t", record,
                        {decimal(encoding.bitwidth), decimal(encoding.axis),
                         decimal(count), scales, offsets});
  member = ".bwAxisScaleOffsetEncoding = " + record;
  return Status::kOk;
}

std::string bwScaleOffsetText(const Kiv_BwScaleOffset_t& encoding) {
  return braced({decimal(encoding.bitwidth), floatText(encoding.scale),
                 decimal(encoding.offset)});
}

// Writes what the chosen member of the record's union needs, and gives the
// member's initialiser.
Status writeEncoding(WriteScope& scope, const Kiv_QuantizeParams_t& params,
                     const std::string& name, std::string& member) {
  switch (enumValue(params.quantizationEncoding)) {
    case KIV_QUANTIZATION_ENCODING_SCALE_OFFSET:
      member = ".scaleOffsetEncoding = " +
               pairText(params.scaleOffsetEncoding.scale,
                        params.scaleOffsetEncoding.offset);
      return Status::kOk;
    case KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET:
      return writeAxisScaleOffset(scope, params.axisScaleOffsetEncoding, name,
                                  member);
    case KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET:
      member = ".bwScaleOffsetEncoding = " +
               bwScaleOffsetText(params.bwScaleOffsetEncoding);
      return Status::kOk;
    case KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET:
      return writeBwAxisScaleOffset(scope, params.bwAxisScaleOffsetEncoding,
                                    name, member);
    case KIV_QUANTIZATION_ENCODING_UNDEFINED:
      member = ".scaleOffsetEncoding = {0.0, 0}";
      return Status::kOk;
    default:
      return checkEncoding(scope, params);
  }
}

}  // namespace

Status checkEncoding(WriteScope& scope, const Kiv_QuantizeParams_t& params) {
  const std::uint32_t encoding = enumValue(params.quantizationEncoding);
  if (encoding == KIV_QUANTIZATION_ENCODING_UNDEFINED ||
      encoding <= KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET)
    return Status::kOk;
  return scope.fail(kUnknownEncoding, static_cast<int>(encoding));
}

Status writeQuantizeParams(WriteScope& scope,
                           const Kiv_QuantizeParams_t& params,
                           const std::string& name) {
  std::string member;
  const Status status = writeEncoding(scope, params, name, member);
  if (!ok(status)) return status;
  scope.code.emitStruct(
      "Kiv_QuantizeParams_t", name,
      {cast("Kiv_Definition_t", params.encodingDefinition),
       cast("Kiv_QuantizationEncoding_t", params.quantizationEncoding),
       member});
  return Status::kOk;
}

}  // namespace kiv::writers
