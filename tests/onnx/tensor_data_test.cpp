#include "tensor_data.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "model_builder.h"

namespace onnx_client {
namespace {

using onnx::TensorProto;

template <typename Element>
std::vector<uint8_t> bytesOf(const std::vector<Element>& elements) {
  std::vector<uint8_t> bytes(elements.size() * sizeof(Element));
  std::memcpy(bytes.data(), elements.data(), bytes.size());
  return bytes;
}

struct Encoding {
  TensorProto::DataType onnxType;
  Kiv_DataType_t dataType;
  // Adds two values to the field that ONNX uses for the type.
  std::function<void(TensorProto&)> addValues;
  std::vector<uint8_t> bytes;
};

template <int32_t kFirst, int32_t kSecond>
void addInt32(TensorProto& proto) {
  proto.add_int32_data(kFirst);
  proto.add_int32_data(kSecond);
}

template <uint64_t kFirst, uint64_t kSecond>
void addUint64(TensorProto& proto) {
  proto.add_uint64_data(kFirst);
  proto.add_uint64_data(kSecond);
}

void addFloat(TensorProto& proto) {
  proto.add_float_data(1.5F);
  proto.add_float_data(-2);
}

void addDouble(TensorProto& proto) {
  proto.add_double_data(0.1);
  proto.add_double_data(-2);
}

void addInt64(TensorProto& proto) {
  proto.add_int64_data(INT64_MIN);
  proto.add_int64_data(5);
}

std::vector<Encoding> encodings() {
  return {
      {TensorProto::FLOAT, KIV_DATA_TYPE_FLOAT_32, addFloat,
       bytesOf<float>({1.5F, -2})},
      {TensorProto::DOUBLE, KIV_DATA_TYPE_FLOAT_64, addDouble,
       bytesOf<double>({0.1, -2})},
      {TensorProto::FLOAT16, KIV_DATA_TYPE_FLOAT_16, addInt32<0x3C00, 0xBC00>,
       bytesOf<uint16_t>({0x3C00, 0xBC00})},
      {TensorProto::INT8, KIV_DATA_TYPE_INT_8, addInt32<-128, 127>,
       bytesOf<int8_t>({-128, 127})},
      {TensorProto::UINT8, KIV_DATA_TYPE_UINT_8, addInt32<255, 1>,
       bytesOf<uint8_t>({255, 1})},
      {TensorProto::INT16, KIV_DATA_TYPE_INT_16, addInt32<-32768, 2>,
       bytesOf<int16_t>({-32768, 2})},
      {TensorProto::UINT16, KIV_DATA_TYPE_UINT_16, addInt32<65535, 2>,
       bytesOf<uint16_t>({65535, 2})},
      {TensorProto::INT32, KIV_DATA_TYPE_INT_32, addInt32<INT32_MIN, 3>,
       bytesOf<int32_t>({INT32_MIN, 3})},
      {TensorProto::UINT32, KIV_DATA_TYPE_UINT_32, addUint64<UINT32_MAX, 3>,
       bytesOf<uint32_t>({UINT32_MAX, 3})},
      {TensorProto::INT64, KIV_DATA_TYPE_INT_64, addInt64,
       bytesOf<int64_t>({INT64_MIN, 5})},
      {TensorProto::UINT64, KIV_DATA_TYPE_UINT_64, addUint64<UINT64_MAX, 5>,
       bytesOf<uint64_t>({UINT64_MAX, 5})},
      {TensorProto::BOOL, KIV_DATA_TYPE_BOOL_8, addInt32<1, 0>, {1, 0}},
  };
}

TEST(TensorData, ReadsEveryTypeFromFieldsAndFromRawBytes) {
  for (const Encoding& encoding : encodings()) {
    SCOPED_TRACE(TensorProto::DataType_Name(encoding.onnxType));
    TensorProto fields = tensorProto(encoding.onnxType, {2});
    encoding.addValues(fields);
    TensorProto raw = tensorProto(encoding.onnxType, {1, 2});
    raw.set_raw_data(encoding.bytes.data(), encoding.bytes.size());

    const Tensor fromFields = readTensor(fields, "w");
    EXPECT_EQ(fromFields.dataType, encoding.dataType);
    EXPECT_EQ(fromFields.data, encoding.bytes);
    const Tensor fromRaw = readTensor(raw, "w");
    EXPECT_EQ(fromRaw.data, encoding.bytes);
    EXPECT_EQ(fromRaw.shape.dimensions, (std::vector<uint32_t>{1, 2}));
  }
}

TEST(TensorData, ReadsScalarsAndEmptyTensors) {
  TensorProto scalar = tensorProto(TensorProto::FLOAT, {});
  scalar.add_float_data(1);
  EXPECT_EQ(readTensor(scalar, "s").data.size(), 4u);
  EXPECT_TRUE(readTensor(scalar, "s").shape.dimensions.empty());

  const TensorProto empty = tensorProto(TensorProto::INT64, {3, 0});
  EXPECT_TRUE(readTensor(empty, "e").data.empty());
}

TEST(TensorData, RefusesDataThatDoesNotFitTheShape) {
  TensorProto shortRaw = tensorProto(TensorProto::FLOAT, {2});
  shortRaw.set_raw_data("1234567");
  TensorProto longField = tensorProto(TensorProto::INT64, {1});
  addInt64(longField);
  const TensorProto nothing = tensorProto(TensorProto::FLOAT, {1});
  for (const TensorProto& proto : {shortRaw, longField, nothing}) {
    EXPECT_EQ(errorOf([&] { readTensor(proto, "w"); }),
              "tensor w has more or less data than its shape");
  }
}

TEST(TensorData, RefusesSizesThatTheApiCannotHold) {
  const auto error = [](std::vector<int64_t> sizes) {
    const TensorProto proto = tensorProto(TensorProto::FLOAT, sizes);
    return errorOf([&] { readTensor(proto, "w"); });
  };
  EXPECT_EQ(error({-1}), "not accepted: tensor w has a dimension of -1");
  EXPECT_EQ(error({int64_t{1} << 32}),
            "not accepted: tensor w has a dimension of 4294967296");
  EXPECT_EQ(error({1 << 16, 1 << 16}),
            "not accepted: tensor w is larger than 4 GiB");
  EXPECT_EQ(error({UINT32_MAX, UINT32_MAX, UINT32_MAX}),
            "not accepted: tensor w is larger than 4 GiB");

  constexpr uint32_t kMost = UINT32_MAX;
  const std::vector<uint32_t> largest = {kMost};
  EXPECT_EQ(byteSize(KIV_DATA_TYPE_INT_8, largest, "w"), kMost);
  const std::vector<uint32_t> hugeButEmpty = {kMost, kMost, kMost, 0};
  EXPECT_EQ(byteSize(KIV_DATA_TYPE_INT_8, hugeButEmpty, "w"), 0u);
}

TEST(TensorData, NotAcceptsWhatTheApiHasNoTypeFor) {
  const auto error = [](int32_t type) {
    const TensorProto proto = tensorProto(type, {0});
    return errorOf([&] { readTensor(proto, "w"); });
  };
  EXPECT_EQ(error(TensorProto::STRING),
            "not accepted: tensor w has elements of type STRING");
  EXPECT_EQ(error(TensorProto::BFLOAT16),
            "not accepted: tensor w has elements of type BFLOAT16");
  EXPECT_EQ(error(99), "not accepted: tensor w has elements of type 99");

  TensorProto external = tensorProto(TensorProto::FLOAT, {1});
  external.set_data_location(TensorProto::EXTERNAL);
  EXPECT_EQ(errorOf([&] { readTensor(external, "w"); }),
            "not accepted: tensor w keeps its data in another file");
}

}  // namespace
}  // namespace onnx_client
