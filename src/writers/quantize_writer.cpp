#include "writers/quantize_writer.h"

#include "format/records.h"
#include "output/row_text.h"

namespace kiv::writers {
namespace {

namespace rows = format::rows;
using format::Part;

constexpr Failure kUnknownEncoding = {
    Status::kNotSupported, "Unsupported quantization encoding: %d.\n"};
constexpr Failure kMissingParams = {
    Status::kNotSupported,
    "Quantization parameters count %ld elements but their array is NULL"};

const format::Member* memberOf(const Kiv_QuantizeParams_t& params) {
  return format::findMember(rows::kEncodings,
                            format::enumValue(params.quantizationEncoding));
}

Name writeAxisScaleOffset(CallText& call, const Kiv_AxisScaleOffset_t& encoding,
                          NameOf<Family::kQuantizeParams> owner) {
  const std::uint32_t count = encoding.numScaleOffsets;
  if (count != 0 && encoding.scaleOffset == nullptr) {
    call.fail(kMissingParams, static_cast<long>(count));
    return {};
  }
  output::CodeStream& code = call.code();
  const Name array = code.name<Part::kScaleOffsets>(owner);
  const Name record = code.name<Part::kAxisScaleOffset>(owner);
  code.emitRecordArray(rows::kScaleOffset, array, encoding.scaleOffset, count);
  code.emitStruct<rows::kAxisScaleOffset>(record, &encoding, {array});
  return record;
}

Name writeBwAxisScaleOffset(CallText& call,
                            const Kiv_BwAxisScaleOffset_t& encoding,
                            NameOf<Family::kQuantizeParams> owner) {
  const std::uint32_t count = encoding.numElements;
  if (count != 0 &&
      (encoding.scales == nullptr || encoding.offsets == nullptr)) {
    call.fail(kMissingParams, static_cast<long>(count));
    return {};
  }
  output::CodeStream& code = call.code();
  const Name scales = code.name<Part::kScales>(owner);
  const Name offsets = code.name<Part::kOffsets>(owner);
  const Name record = code.name<Part::kBwAxisScaleOffset>(owner);
  code.emitNumberArray("float", scales, encoding.scales, count);
  code.emitNumberArray("int32_t", offsets, encoding.offsets, count);
  code.emitStruct<rows::kBwAxisScaleOffset>(record, &encoding,
                                            {scales, offsets});
  return record;
}

// The record of the encodings that need one of their own.
Name writeEncoding(CallText& call, const Kiv_QuantizeParams_t& params,
                   NameOf<Family::kQuantizeParams> owner) {
  switch (format::enumValue(params.quantizationEncoding)) {
    case KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET:
      return writeAxisScaleOffset(call, params.axisScaleOffsetEncoding, owner);
    case KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET:
      return writeBwAxisScaleOffset(call, params.bwAxisScaleOffsetEncoding,
                                    owner);
    default:
      return {};
  }
}

}  // namespace

void checkEncoding(CallText& call, const Kiv_QuantizeParams_t& params) {
  if (memberOf(params) == nullptr)
    call.fail(kUnknownEncoding,
              static_cast<int>(format::enumValue(params.quantizationEncoding)));
}

void writeQuantizeParams(CallText& call, const Kiv_QuantizeParams_t& params,
                         NameOf<Family::kQuantizeParams> name) {
  const format::Member* member = memberOf(params);
  if (member == nullptr) return checkEncoding(call, params);
  const Name encoding = writeEncoding(call, params, name);
  call.code().emitStruct<rows::kQuantizeParams>(name, &params,
                                                {{*member, encoding}});
}

}  // namespace kiv::writers
