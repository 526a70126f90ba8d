#include "records.h"

namespace kiv::tracer {
namespace {

void printFields(LineWriter& line, const Kiv_AxisScaleOffset_t& encoding) {
  line.field("axis", encoding.axis)
      .field("count", encoding.numScaleOffsets)
      .field("pairs", Array{encoding.scaleOffset, encoding.numScaleOffsets});
}

void printFields(LineWriter& line, const Kiv_BwScaleOffset_t& encoding) {
  line.field("bitwidth", encoding.bitwidth)
      .field("scale", encoding.scale)
      .field("offset", encoding.offset);
}

void printFields(LineWriter& line, const Kiv_BwAxisScaleOffset_t& encoding) {
  line.field("bitwidth", encoding.bitwidth)
      .field("axis", encoding.axis)
      .field("count", encoding.numElements)
      .field("scales", Array{encoding.scales, encoding.numElements})
      .field("offsets", Array{encoding.offsets, encoding.numElements});
}

void printEncoding(LineWriter& line, const Kiv_QuantizeParams_t& quantize) {
  switch (enumValue(quantize.quantizationEncoding)) {
    case KIV_QUANTIZATION_ENCODING_SCALE_OFFSET:
      line.field("scale", quantize.scaleOffsetEncoding.scale)
          .field("offset", quantize.scaleOffsetEncoding.offset);
      break;
    case KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET:
      printFields(line, quantize.axisScaleOffsetEncoding);
      break;
    case KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET:
      printFields(line, quantize.bwScaleOffsetEncoding);
      break;
    case KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET:
      printFields(line, quantize.bwAxisScaleOffsetEncoding);
      break;
    default:
      // The union of an undefined or unknown encoding may hold anything.
      break;
  }
}

}  // namespace

void print(LineWriter& line, const Kiv_ScaleOffset_t& pair) {
  line.begin('{')
      .field("scale", pair.scale)
      .field("offset", pair.offset)
      .end('}');
}

void print(LineWriter& line, const Kiv_QuantizeParams_t& quantize) {
  line.begin('{')
      .field("definition", quantize.encodingDefinition)
      .field("encoding", quantize.quantizationEncoding);
  printEncoding(line, quantize);
  line.end('}');
}

}  // namespace kiv::tracer
