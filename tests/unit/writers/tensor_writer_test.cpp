#include "writers/tensor_writer.h"

#include "support/records.h"
#include "writer_test.h"

namespace kiv::writers::test {
namespace {

using kiv::test::emptyTensor;
using kiv::test::tensorWithData;

class TensorWriterTest : public WriterTest {
 protected:
  Status write(const Kiv_Tensor_t& tensor) {
    WriteScope s = scope();
    return writeTensor(s, tensor, "t", nullptr);
  }
  bool wrote(const std::string& text) {
    return statements().find(text) != std::string::npos;
  }
};

TEST_F(TensorWriterTest, DeclaresDataByItsType) {
  const struct {
    std::uint32_t type;
    const char* cType;
    std::size_t size;
  } types[] = {
      {0x0008, "int8_t", 1},   {0x0016, "int16_t", 2},  {0x0032, "int32_t", 4},
      {0x0064, "int64_t", 8},  {0x0108, "uint8_t", 1},  {0x0116, "uint16_t", 2},
      {0x0132, "uint32_t", 4}, {0x0164, "uint64_t", 8}, {0x0216, "float", 4},
      {0x0232, "float", 4},    {0x0264, "double", 8},   {0x0304, "uint8_t", 1},
      {0x0308, "int8_t", 1},   {0x0316, "int16_t", 2},  {0x0332, "int32_t", 4},
      {0x0404, "uint8_t", 1},  {0x0408, "uint8_t", 1},  {0x0416, "uint16_t", 2},
      {0x0432, "uint32_t", 4}, {0x0508, "uint8_t", 1}};
  std::uint8_t data[22] = {};
  for (const auto& type : types) {
    // Bytes that do not fill an element are neither written nor read.
    for (const std::uint32_t bytes : {22u, 6u, 0u}) {
      Kiv_Tensor_t tensor = tensorWithData(data, bytes);
      setNumber(tensor.v1.dataType, type.type);
      EXPECT_EQ(write(tensor), Status::kOk);
      const std::string count = std::to_string(bytes / type.size);
      const std::string comment =
          type.type == 0x0304 || type.type == 0x0404
              ? "// Reading 4-bit fixed point tensor data into a byte array "
                "since there is not a native 4-bit datatype.\n"
              : "";
      EXPECT_TRUE(wrote("{0.0, 0}};\n" + comment + "static " + type.cType +
                        " t_data[" + count + "];\nfread(t_data, " +
                        std::to_string(type.size) + ", " + count +
                        ", fp);\nKiv_ClientBuffer_t t_clientBuf = "
                        "{(void*)t_data, " +
                        std::to_string(bytes) + "};\n"))
          << type.type;
      EXPECT_EQ(code_.runs().back().elementSize, type.size);
      EXPECT_EQ(code_.runs().back().count, bytes / type.size);
    }
  }
}

TEST_F(TensorWriterTest, ArraysOfQuantizationsMayBeMissingWhenTheyAreEmpty) {
  Kiv_Tensor_t tensor = emptyTensor();
  Kiv_QuantizeParams_t& params = tensor.v1.quantizeParams;
  std::int32_t offset = 1;
  for (const std::uint32_t encoding : {1u, 3u}) {
    for (const std::uint32_t count : {0u, 1u}) {
      setNumber(params.quantizationEncoding, encoding);
      params.axisScaleOffsetEncoding = {0, count, nullptr};
      if (encoding == 3)
        params.bwAxisScaleOffsetEncoding = {8, 0, count, nullptr, &offset};
      EXPECT_EQ(write(tensor),
                count == 0 ? Status::kOk : Status::kNotSupported);
      EXPECT_EQ(messages(), count == 0
                                ? Lines{}
                                : Lines{"1: Quantization parameters count 1 "
                                        "elements but their array is NULL"});
    }
  }
}

// Of several faults the first one tells, also of a record whose version is
// unknown: there no pointer is followed.
TEST_F(TensorWriterTest, RefusesWhatItCannotWrite) {
  static std::uint8_t data[4] = {};
  const std::string memory =
      "1: Failed to parse Kiv_Tensor_t, MemHandle is not supported.";
  const std::string type = "1: Invalid Kiv_DataType_t provided: ";
  const std::string encoding = "1: Unsupported quantization encoding: 4.\n";
  const struct {
    std::uint32_t memory, type, encoding, version;
    std::uint32_t code;
    std::string message;
  } cases[] = {
      {9, 0x0000, 0, 2, 6004, memory},
      {0, 0x7FFFFFFE, 0, 2, 7999, type + "2147483646"},
      {1, 0x0008, 4, 1, 1000, encoding},
      {1, 0x0008, 4, 3, 1000, encoding},
      {1, 0x0008, 1, 3, 6004, memory},
      {0, 0x0001, 1, 3, 7999, type + "1"},
  };
  for (const auto& c : cases) {
    Kiv_Tensor_t tensor = tensorWithData(data, 4);
    setNumber(tensor.v1.memType, c.memory);
    setNumber(tensor.v1.dataType, c.type);
    setNumber(tensor.v1.quantizeParams.quantizationEncoding, c.encoding);
    setNumber(tensor.version, c.version);
    EXPECT_EQ(static_cast<std::uint32_t>(write(tensor)), c.code);
    EXPECT_EQ(messages(), Lines{c.message});
    EXPECT_TRUE(code_.runs().empty());
  }
}

}  // namespace
}  // namespace kiv::writers::test
