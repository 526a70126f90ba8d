#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

Kiv_Tensor_t tensorV1() {
  Kiv_Tensor_t tensor = {};
  tensor.version = KIV_TENSOR_VERSION_1;
  tensor.v1.dataType = KIV_DATA_TYPE_FLOAT_32;
  return tensor;
}

// What the library prints of a tensor that is created.
class TensorTest : public testing::Test {
 protected:
  std::string traceOf(Kiv_Tensor_t tensor) {
    EXPECT_EQ(run_.api().tensorCreateContextTensor(nullptr, &tensor), 0u);
    return run_.lastLine();
  }

  // The part of the line from `from` up to `to`.
  std::string partOf(const Kiv_Tensor_t& tensor, const std::string& from,
                     const std::string& to) {
    const std::string line = traceOf(tensor);
    const auto begin = line.find(from);
    return line.substr(begin, line.find(to, begin) - begin);
  }

  std::string quantizeOf(const Kiv_QuantizeParams_t& params) {
    Kiv_Tensor_t tensor = tensorV1();
    tensor.v1.quantizeParams = params;
    return partOf(tensor, "quantize=", ", rank=");
  }

  std::string scaleOf(float scale) {
    Kiv_QuantizeParams_t params = {};
    params.scaleOffsetEncoding.scale = scale;
    return quantizeOf(params);
  }

  std::string dataOf(Kiv_DataType_t type, const void* data, uint32_t size) {
    Kiv_Tensor_t tensor = tensorV1();
    tensor.v1.dataType = type;
    tensor.v1.clientBuf = {const_cast<void*>(data), size};
    return partOf(tensor, "mem=", "})");
  }

  TracerRun run_;
};

TEST_F(TensorTest, ShowsEveryFieldOfVersion1) {
  uint32_t dims[] = {2, 3};
  float data[] = {0, 0, 0, 0, 0, 0};
  Kiv_Tensor_t tensor = tensorV1();
  tensor.v1.id = 77;
  tensor.v1.name = "in";
  tensor.v1.type = KIV_TENSOR_TYPE_STATIC;
  tensor.v1.dataFormat = 9;
  tensor.v1.quantizeParams = {KIV_DEFINITION_DEFINED,
                              KIV_QUANTIZATION_ENCODING_SCALE_OFFSET,
                              {.scaleOffsetEncoding = {0.5f, -128}}};
  tensor.v1.rank = 2;
  tensor.v1.dimensions = dims;
  tensor.v1.clientBuf = {data, sizeof data};
  EXPECT_EQ(traceOf(tensor),
            "tensorCreateContextTensor(null, {version=1, id=77, name=\"in\", "
            "type=4, format=9, dataType=562, quantize={definition=1, "
            "encoding=0, scale=0.5, offset=-128}, rank=2, dims=[2, 3], mem=0, "
            "data=24:81d23fd7003c2305}) -> id=1");
}

TEST_F(TensorTest, ShowsEveryFieldOfVersion2) {
  uint32_t dims[] = {4};
  uint8_t dynamic[] = {1};
  Kiv_Tensor_t tensor = {};
  tensor.version = KIV_TENSOR_VERSION_2;
  tensor.v2.rank = 1;
  tensor.v2.dimensions = dims;
  tensor.v2.isDynamicDimensions = dynamic;
  tensor.v2.sparseParams = {KIV_SPARSE_LAYOUT_COORDINATES, {5, 6}};
  tensor.v2.isProduced = 1;
  EXPECT_EQ(traceOf(tensor),
            "tensorCreateContextTensor(null, {version=2, id=0, name=null, "
            "type=0, format=0, dataType=0, quantize={definition=0, encoding=0, "
            "scale=0, offset=0}, rank=1, dims=[4], mem=0, data=null, "
            "dynamic=[1], sparse={type=0, elements=5, dimensions=6}, "
            "produced=1}) -> id=1");
}

TEST_F(TensorTest, ShowsOnlyTheNumberOfAnUnknownVersion) {
  Kiv_Tensor_t tensor = {};
  tensor.version = static_cast<Kiv_TensorVersion_t>(3);
  tensor.v1.name = reinterpret_cast<const char*>(1);
  EXPECT_EQ(traceOf(tensor), "tensorCreateContextTensor(null, {version=3})");
  EXPECT_EQ(run_.api().tensorCreateGraphTensor(nullptr, nullptr), 0u);
  EXPECT_EQ(run_.lastLine(), "tensorCreateGraphTensor(null, null)");
}

TEST_F(TensorTest, AssignsIdsInOrderAndWritesThemBack) {
  Kiv_Tensor_t first = tensorV1();
  Kiv_Tensor_t second = {};
  second.version = KIV_TENSOR_VERSION_2;
  run_.api().tensorCreateContextTensor(nullptr, &first);
  run_.api().tensorCreateGraphTensor(nullptr, &second);
  EXPECT_EQ(first.v1.id, 1u);
  EXPECT_EQ(second.v2.id, 2u);
  EXPECT_TRUE(run_.lastLine().ends_with(" -> id=2"));
}

TEST_F(TensorTest, ShowsNullArraysOnlyWhereThereIsACount) {
  uint32_t dims[] = {1};
  Kiv_Tensor_t tensor = {};
  tensor.version = KIV_TENSOR_VERSION_2;
  const std::string empty = traceOf(tensor);
  EXPECT_NE(empty.find("rank=0, dims=[]"), std::string::npos);
  EXPECT_NE(empty.find("dynamic=[]"), std::string::npos);
  tensor.v2.dimensions = dims;
  EXPECT_NE(traceOf(tensor).find("rank=0, dims=[]"), std::string::npos);
  tensor.v2.rank = 1;
  EXPECT_NE(traceOf(tensor).find("dynamic=null"), std::string::npos);
  tensor.v2.dimensions = nullptr;
  EXPECT_NE(traceOf(tensor).find("rank=1, dims=null"), std::string::npos);
}

TEST_F(TensorTest, HashesWholeElementsAndShowsTheFullLength) {
  const char bytes[] = "abcdefghij";
  const auto part = [&](Kiv_DataType_t type, uint32_t size) {
    return dataOf(type, bytes, size).substr(sizeof "mem=0, data=" - 1);
  };
  // FNV-1a of "a", "abcd" and "abcdefgh".
  const std::string one = "af63dc4c8601ec8c";
  const std::string four = "fc179f83ee0724dd";
  const std::string eight = "25da8c1836a8d66d";
  const std::string none = "cbf29ce484222325";
  EXPECT_EQ(part(KIV_DATA_TYPE_UINT_8, 1), "1:" + one);
  EXPECT_EQ(part(KIV_DATA_TYPE_INT_32, 4), "4:" + four);
  EXPECT_EQ(part(KIV_DATA_TYPE_SFIXED_POINT_16, 5), "5:" + four);
  EXPECT_EQ(part(KIV_DATA_TYPE_FLOAT_32, 6), "6:" + four);
  EXPECT_EQ(part(KIV_DATA_TYPE_FLOAT_16, 6), "6:" + four);
  EXPECT_EQ(part(KIV_DATA_TYPE_UINT_64, 10), "10:" + eight);
  EXPECT_EQ(part(KIV_DATA_TYPE_FLOAT_64, 7), "7:" + none);
  EXPECT_EQ(part(KIV_DATA_TYPE_UFIXED_POINT_4, 8), "8:" + eight);
  EXPECT_EQ(part(static_cast<Kiv_DataType_t>(0x1234), 1), "1:" + one);
}

// The size of no data says nothing, and registered memory is not data.
TEST_F(TensorTest, ShowsMissingDataAndRegisteredMemory) {
  EXPECT_EQ(dataOf(KIV_DATA_TYPE_INT_8, nullptr, 12),
            dataOf(KIV_DATA_TYPE_INT_8, nullptr, 0));
  EXPECT_EQ(dataOf(KIV_DATA_TYPE_INT_8, nullptr, 12), "mem=0, data=null");

  Kiv_Tensor_t tensor = tensorV1();
  tensor.v1.memType = KIV_TENSOR_MEM_TYPE_MEM_HANDLE;
  run_.api().memRegister(nullptr, nullptr, 1, &tensor.v1.memHandle);
  EXPECT_EQ(partOf(tensor, "mem=", "})"), "mem=1, handle=mem#0");
  tensor.v1.memHandle = &tensor;
  EXPECT_EQ(partOf(tensor, "mem=", "})"), "mem=1, handle=mem?");
  tensor.v1.memType = static_cast<Kiv_TensorMemType_t>(7);
  EXPECT_EQ(partOf(tensor, "mem=", "})"), "mem=7");
}

TEST_F(TensorTest, ShowsTheMemberThatTheEncodingSelects) {
  Kiv_ScaleOffset_t pairs[] = {{1, 2}, {0.25f, -3}};
  float scales[] = {0.5f, 2};
  int32_t offsets[] = {-1, 7};
  Kiv_QuantizeParams_t params = {};
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_AXIS_SCALE_OFFSET;
  params.axisScaleOffsetEncoding = {3, 2, pairs};
  EXPECT_EQ(quantizeOf(params),
            "quantize={definition=0, encoding=1, axis=3, count=2, "
            "pairs=[{scale=1, offset=2}, {scale=0.25, offset=-3}]}");
  params.axisScaleOffsetEncoding.scaleOffset = nullptr;
  EXPECT_EQ(quantizeOf(params),
            "quantize={definition=0, encoding=1, axis=3, count=2, pairs=null}");
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_BW_SCALE_OFFSET;
  params.bwScaleOffsetEncoding = {4, 0.5f, -8};
  EXPECT_EQ(quantizeOf(params),
            "quantize={definition=0, encoding=2, bitwidth=4, scale=0.5, "
            "offset=-8}");
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_BW_AXIS_SCALE_OFFSET;
  params.bwAxisScaleOffsetEncoding = {4, 1, 2, scales, offsets};
  EXPECT_EQ(quantizeOf(params),
            "quantize={definition=0, encoding=3, bitwidth=4, axis=1, count=2, "
            "scales=[0.5, 2], offsets=[-1, 7]}");
}

TEST_F(TensorTest, ShowsNothingBelowAnUndefinedOrUnknownEncoding) {
  Kiv_QuantizeParams_t params = {};
  params.scaleOffsetEncoding = {0.5f, 1};
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_UNDEFINED;
  EXPECT_EQ(quantizeOf(params), "quantize={definition=0, encoding=2147483647}");
  params.quantizationEncoding = static_cast<Kiv_QuantizationEncoding_t>(4);
  EXPECT_EQ(quantizeOf(params), "quantize={definition=0, encoding=4}");
}

TEST_F(TensorTest, TellsFloatsApartByNineDigits) {
  const auto line = [](const std::string& scale) {
    return "quantize={definition=0, encoding=0, scale=" + scale + ", offset=0}";
  };
  EXPECT_EQ(scaleOf(0.1f), line("0.100000001"));
  EXPECT_EQ(scaleOf(std::nextafter(0.1f, 1.0f)), line("0.100000009"));
  EXPECT_EQ(scaleOf(1e-10f), line("1.00000001e-10"));
  EXPECT_EQ(scaleOf(-0.0f), line("-0"));
  EXPECT_EQ(scaleOf(-std::numeric_limits<float>::infinity()), line("-inf"));
  EXPECT_EQ(scaleOf(std::nanf("")), line("nan"));
  EXPECT_EQ(scaleOf(-std::nanf("1")), line("nan"));
}

}  // namespace
}  // namespace kiv::tracer::test
