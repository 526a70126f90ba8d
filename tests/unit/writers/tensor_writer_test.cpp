#include "writers/tensor_writer.h"

#include <functional>

#include "support/records.h"
#include "writer_test.h"

namespace kiv::writers::test {
namespace {

using kiv::test::emptyTensor;
using kiv::test::tensorWithData;

class TensorWriterTest : public WriterTest {
 protected:
  Status write(const Kiv_Tensor_t& tensor,
               const session::TensorRegistry* created = nullptr) {
    WriteScope s = scope();
    return writeTensor(s, tensor, "t", created);
  }
  bool wrote(const std::string& text) {
    return statements().find(text) != std::string::npos;
  }
};

TEST_F(TensorWriterTest, WritesVersion1LeavesFirst) {
  std::uint32_t dimensions[] = {1, 224, 4294967295u};
  std::uint8_t data[10] = {};
  Kiv_Tensor_t tensor = tensorWithData(data, 10, KIV_DATA_TYPE_INT_32);
  tensor.v1.id = 7;
  tensor.v1.name = "in/put \"0\"";
  tensor.v1.type = KIV_TENSOR_TYPE_STATIC;
  tensor.v1.dataFormat = 5;
  tensor.v1.rank = 3;
  tensor.v1.dimensions = dimensions;
  EXPECT_EQ(write(tensor), Status::kOk);
  EXPECT_EQ(statements(), R"(
uint32_t t_dims[] = {1, 224, 4294967295};
Kiv_QuantizeParams_t t_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
static int32_t t_data[2];
fread(t_data, 4, 2, fp);
Kiv_ClientBuffer_t t_clientBuf = {(void*)t_data, 10};
Kiv_TensorV1_t t_v1 = {7, "in/put "0"", (Kiv_TensorType_t)4, 5, (Kiv_DataType_t)50, t_quantizeParams, 3, t_dims, (Kiv_TensorMemType_t)0, t_clientBuf};
Kiv_Tensor_t t = {(Kiv_TensorVersion_t)1, .v1 = t_v1};
)");
  ASSERT_EQ(code_.runs().size(), 1u);
  EXPECT_EQ(code_.runs()[0].bytes, data);
  EXPECT_EQ(code_.runs()[0].elementSize * code_.runs()[0].count, 8u);
}

TEST_F(TensorWriterTest, WritesVersion2WithItsFields) {
  std::uint8_t dynamic[] = {0, 1, 255};
  Kiv_Tensor_t tensor = emptyTensor(KIV_TENSOR_VERSION_2);
  tensor.v2.rank = 3;
  tensor.v2.isDynamicDimensions = dynamic;
  setNumber(tensor.v2.sparseParams.type, 9);
  tensor.v2.sparseParams.counts = {3, 4};
  tensor.v2.isProduced = 2;
  EXPECT_EQ(write(tensor), Status::kOk);
  EXPECT_EQ(statements(), R"(
Kiv_QuantizeParams_t t_quantizeParams = {(Kiv_Definition_t)0, (Kiv_QuantizationEncoding_t)2147483647, .scaleOffsetEncoding = {0.0, 0}};
Kiv_ClientBuffer_t t_clientBuf = {NULL, 0};
uint8_t t_isDynamicDimensions[] = {0, 1, 255};
Kiv_TensorV2_t t_v2 = {0, NULL, (Kiv_TensorType_t)0, 0, (Kiv_DataType_t)562, t_quantizeParams, 3, NULL, (Kiv_TensorMemType_t)0, t_clientBuf, t_isDynamicDimensions, {(Kiv_SparseLayoutType_t)9,{3,4}}, 2};
Kiv_Tensor_t t = {(Kiv_TensorVersion_t)2, .v2 = t_v2};
)");
  tensor.v2.isDynamicDimensions = nullptr;
  EXPECT_EQ(write(tensor), Status::kOk);
  EXPECT_TRUE(wrote("t_clientBuf, NULL, {(Kiv_SparseLayoutType_t)9,{3,4}}"));
}

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

TEST_F(TensorWriterTest, WithoutDataNeitherSizeNorTypeCount) {
  Kiv_Tensor_t tensor = tensorWithData(nullptr, 100);
  setNumber(tensor.v1.dataType, 0x7FFFFFFF);
  EXPECT_EQ(write(tensor), Status::kOk);
  EXPECT_TRUE(wrote("\nKiv_ClientBuffer_t t_clientBuf = {NULL, 0};\n"));
  EXPECT_TRUE(code_.runs().empty());
}

TEST_F(TensorWriterTest, IdsReferToTheTensorThatWasCreated) {
  const auto context = std::make_shared<session::TensorRegistry>("c", nullptr);
  context->add(3, "x", std::make_shared<session::Variable>("c_tensor_0", 0));
  const session::TensorRegistry graph("g", context);
  const std::tuple<Kiv_TensorVersion_t, std::uint32_t, bool, const char*>
      cases[] = {{KIV_TENSOR_VERSION_1, 3, true, "v1 = {c_tensor_0.v1.id, "},
                 {KIV_TENSOR_VERSION_2, 3, true, "v2 = {c_tensor_0.v2.id, "},
                 {KIV_TENSOR_VERSION_1, 4, true, "v1 = {4, "},
                 {KIV_TENSOR_VERSION_1, 3, false, "v1 = {3, "}};
  for (const auto& [version, id, refers, field] : cases) {
    Kiv_Tensor_t tensor = emptyTensor(version);
    tensor.v1.id = id;
    EXPECT_EQ(write(tensor, refers ? &graph : nullptr), Status::kOk);
    EXPECT_TRUE(wrote(field)) << field;
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(TensorWriterTest, RefusesWhatItCannotWrite) {
  static std::uint8_t data[4] = {};
  static std::uint32_t dimensions[] = {4};
  const Lines mem = {
      "1: Failed to parse Kiv_Tensor_t, MemHandle is not supported."};
  const auto type = [](const char* number) {
    return Lines{"1: Invalid Kiv_DataType_t provided: " + std::string(number)};
  };
  const Lines version = {"1: Unsupported tensor version 3.\n",
                         "1: Unsupported tensor version: 3.\n"};
  // Memory type, data type, encoding and version of a tensor with data; the
  // lines that stand before the failure. Of two faults the first one tells.
  const struct {
    std::uint32_t memory, type, encoding, version;
    std::uint32_t code;
    Lines messages;
    std::ptrdiff_t lines;
  } cases[] = {
      {1, 0x0008, 0x7FFFFFFF, 1, 6004, mem, 2},
      {9, 0x0000, 0x7FFFFFFF, 2, 6004, mem, 2},
      {0, 0x0608, 0x7FFFFFFF, 1, 7999, type("1544"), 2},
      {0, 0x7FFFFFFE, 0x7FFFFFFF, 2, 7999, type("2147483646"), 2},
      {1,
       0x0008,
       4,
       1,
       1000,
       {"1: Unsupported quantization encoding: 4.\n"},
       1},
      {1, 0x0008, 0x7FFFFFFF, 3, 6004, mem, 0},
      {0, 0x0001, 0x7FFFFFFF, 3, 7999, type("1"), 0},
      {0, 0x0008, 0x7FFFFFFF, 3, 1000, version, 0},
  };
  for (const auto& c : cases) {
    Kiv_Tensor_t tensor = tensorWithData(data, 4);
    tensor.v1.rank = 1;
    tensor.v1.dimensions = dimensions;
    setNumber(tensor.v1.memType, c.memory);
    setNumber(tensor.v1.dataType, c.type);
    setNumber(tensor.v1.quantizeParams.quantizationEncoding, c.encoding);
    setNumber(tensor.version, c.version);
    EXPECT_EQ(static_cast<std::uint32_t>(write(tensor)), c.code);
    EXPECT_EQ(messages(), c.messages);
    const std::string text = statements();
    // What an unknown version leaves in the buffer is nobody's business.
    if (c.version != 3) {
      EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + c.lines);
    }
    EXPECT_TRUE(code_.runs().empty());
  }
}

TEST_F(TensorWriterTest, TensorsAreNumberedUntilOneFails) {
  Kiv_Tensor_t tensors[] = {emptyTensor(), emptyTensor(), emptyTensor()};
  output::Texts names;
  WriteScope s = scope();
  EXPECT_EQ(writeTensors(s, tensors, "g_in_", nullptr, names), Status::kOk);
  EXPECT_EQ(names, (Lines{"g_in_0", "g_in_1", "g_in_2"}));
  names.clear();
  setNumber(tensors[1].v1.memType, 1);
  EXPECT_EQ(writeTensors(s, tensors, "g_in_", nullptr, names),
            Status::kGraphInvalidTensor);
  EXPECT_EQ(names, Lines{"g_in_0"});
}

}  // namespace
}  // namespace kiv::writers::test
