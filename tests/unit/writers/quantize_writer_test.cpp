#include "writers/quantize_writer.h"

#include "writer_test.h"

namespace kiv::writers::test {
namespace {

class QuantizeWriterTest : public WriterTest {
 protected:
  Status write(const Kiv_QuantizeParams_t& params) {
    WriteScope s = scope();
    return writeQuantizeParams(s, params, "q");
  }
};

Kiv_QuantizeParams_t params(std::uint32_t encoding,
                            std::uint32_t definition = 1) {
  Kiv_QuantizeParams_t result{};
  setNumber(result.encodingDefinition, definition);
  setNumber(result.quantizationEncoding, encoding);
  return result;
}

TEST_F(QuantizeWriterTest, WritesEachEncoding) {
  Kiv_ScaleOffset_t pairs[] = {{0.5F, 1}, {1.0F, -2}, {1.0F / 3, 0}};
  float scales[] = {0.1F, 1.0F};
  std::int32_t offsets[] = {-1, 2147483647};
  Kiv_QuantizeParams_t all[] = {params(0), params(1, 0x7FFFFFFF), params(2, 99),
                                params(3), params(0x7FFFFFFF)};
  all[0].scaleOffsetEncoding = {1.0F / 255, -128};
  all[1].axisScaleOffsetEncoding = {3, 3, pairs};
  all[2].bwScaleOffsetEncoding = {4, 0.1F, 7};
  all[3].bwAxisScaleOffsetEncoding = {8, 1, 2, scales, offsets};
  all[4].scaleOffsetEncoding = {0.5F, 9};
  for (const Kiv_QuantizeParams_t& p : all) EXPECT_EQ(write(p), Status::kOk);
  EXPECT_EQ(statements(), R"(
Kiv_QuantizeParams_t q = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)0, .scaleOffsetEncoding = {0.00392156886, -128}};
Kiv_ScaleOffset_t q_scaleOffsets[] = {{0.5, 1}, {1, -2}, {0.333333343, 0}};
Kiv_AxisScaleOffset_t q_axisScaleOffset = {3, 3, q_scaleOffsets};
Kiv_QuantizeParams_t q = {(Kiv_Definition_t)2147483647, (Kiv_QuantizationEncoding_t)1, .axisScaleOffsetEncoding = q_axisScaleOffset};
Kiv_QuantizeParams_t q = {(Kiv_Definition_t)99, (Kiv_QuantizationEncoding_t)2, .bwScaleOffsetEncoding = {4, 0.100000001, 7}};
float q_scales[] = {0.100000001, 1};
int32_t q_offsets[] = {-1, 2147483647};
Kiv_BwAxisScaleOffset_t q_bwAxisScaleOffset = {8, 1, 2, q_scales, q_offsets};
Kiv_QuantizeParams_t q = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)3, .bwAxisScaleOffsetEncoding = q_bwAxisScaleOffset};
Kiv_QuantizeParams_t q = {(Kiv_Definition_t)1, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
)");
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(QuantizeWriterTest, ArraysMayBeMissingOnlyWhenTheyAreEmpty) {
  EXPECT_EQ(write(params(1)), Status::kOk);
  EXPECT_TRUE(
      statements().starts_with("\nKiv_ScaleOffset_t q_scaleOffsets[] = {};\n"));
  EXPECT_EQ(write(params(3)), Status::kOk);
  EXPECT_TRUE(statements().starts_with(
      "\nfloat q_scales[] = {};\nint32_t q_offsets[] = {};\n"));
  float scale = 1;
  std::int32_t offset = 1;
  Kiv_QuantizeParams_t missing[] = {params(1), params(3), params(3)};
  missing[0].axisScaleOffsetEncoding = {0, 1, nullptr};
  missing[1].bwAxisScaleOffsetEncoding = {8, 0, 1, nullptr, &offset};
  missing[2].bwAxisScaleOffsetEncoding = {8, 0, 1, &scale, nullptr};
  for (const Kiv_QuantizeParams_t& p : missing) {
    EXPECT_EQ(write(p), Status::kNotSupported);
    EXPECT_EQ(messages().size(), 1u);
    EXPECT_EQ(statements(), "\n");
  }
}

TEST_F(QuantizeWriterTest, RefusesUnknownEncodings) {
  for (const std::uint32_t encoding : {4u, 5u, 0x7FFFFFFEu}) {
    EXPECT_EQ(write(params(encoding)), Status::kNotSupported);
    EXPECT_EQ(messages(), Lines{"1: Unsupported quantization encoding: " +
                                std::to_string(encoding) + ".\n"});
    EXPECT_EQ(statements(), "\n");
  }
}

}  // namespace
}  // namespace kiv::writers::test
