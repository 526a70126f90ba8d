#include "attributes.h"

#include <gtest/gtest.h>

#include <cstring>

#include "model_builder.h"

namespace onnx_client {
namespace {

using onnx::AttributeProto;

class AttributesTest : public ::testing::Test {
 protected:
  AttributeProto& add(const std::string& name,
                      AttributeProto::AttributeType type) {
    AttributeProto& attribute = *node_.add_attribute();
    attribute.set_name(name);
    attribute.set_type(type);
    return attribute;
  }

  std::vector<Parameter> read() {
    return readAttributes(
        node_, "n",
        [](const onnx::GraphProto& graph, const std::string& parameter) {
          auto read = std::make_unique<Graph>();
          read->name = parameter + ":" + graph.name();
          return read;
        });
  }

  onnx::NodeProto node_;
};

TEST_F(AttributesTest, SinglesBecomeScalars) {
  add("alpha", AttributeProto::FLOAT).set_f(0.5F);
  add("group", AttributeProto::INT).set_i(-3);
  add("mode", AttributeProto::STRING).set_s("a\nb");
  const auto parameters = read();
  EXPECT_EQ(std::get<float>(parameters.at(0).value), 0.5F);
  EXPECT_EQ(std::get<int32_t>(parameters.at(1).value), -3);
  EXPECT_EQ(std::get<std::string>(parameters.at(2).value), "a\nb");
  EXPECT_EQ(parameters.at(2).name, "mode");
}

// The API has no 64-bit scalar, and a text ends at its first NUL.
TEST_F(AttributesTest, SinglesThatNoScalarHoldsBecomeTensors) {
  add("most", AttributeProto::INT).set_i(INT32_MAX);
  add("more", AttributeProto::INT).set_i(int64_t{INT32_MAX} + 1);
  add("less", AttributeProto::INT).set_i(int64_t{INT32_MIN} - 1);
  add("bytes", AttributeProto::STRING).set_s(std::string("a\0b", 3));
  const auto parameters = read();
  EXPECT_TRUE(std::holds_alternative<int32_t>(parameters.at(0).value));

  const Tensor& more = std::get<Tensor>(parameters.at(1).value);
  int64_t number = 0;
  ASSERT_EQ(more.data.size(), sizeof number);
  std::memcpy(&number, more.data.data(), sizeof number);
  EXPECT_EQ(number, 2147483648);
  EXPECT_EQ(more.dataType, KIV_DATA_TYPE_INT_64);
  EXPECT_EQ(more.name, "n_more");
  EXPECT_TRUE(std::holds_alternative<Tensor>(parameters.at(2).value));

  const Tensor& bytes = std::get<Tensor>(parameters.at(3).value);
  EXPECT_EQ(bytes.data, (std::vector<uint8_t>{'a', 0, 'b'}));
  EXPECT_EQ(bytes.dataType, KIV_DATA_TYPE_UINT_8);
}

TEST_F(AttributesTest, ListsBecomeTensorsOrOneParameterEach) {
  AttributeProto& ints = add("pads", AttributeProto::INTS);
  ints.add_ints(1);
  ints.add_ints(-1);
  add("none", AttributeProto::FLOATS);
  AttributeProto& texts = add("keys", AttributeProto::STRINGS);
  texts.add_strings("a");
  texts.add_strings("b");
  const auto parameters = read();
  ASSERT_EQ(parameters.size(), 4u);

  const Tensor& pads = std::get<Tensor>(parameters[0].value);
  EXPECT_EQ(pads.type, KIV_TENSOR_TYPE_STATIC);
  EXPECT_EQ(pads.shape.dimensions, std::vector<uint32_t>{2});
  EXPECT_EQ(pads.data.size(), 16u);
  EXPECT_EQ(pads.data[8], 0xFF);
  const Tensor& none = std::get<Tensor>(parameters[1].value);
  EXPECT_EQ(none.shape.dimensions, std::vector<uint32_t>{0});
  EXPECT_EQ(none.dataType, KIV_DATA_TYPE_FLOAT_32);
  EXPECT_EQ(parameters[3].name, "keys_1");
  EXPECT_EQ(std::get<std::string>(parameters[3].value), "b");
}

TEST_F(AttributesTest, ReadsTensorsAndGraphs) {
  *add("value", AttributeProto::TENSOR).mutable_t() = floatTensor("", {1, 2});
  add("body", AttributeProto::GRAPH).mutable_g()->set_name("loop");
  const auto parameters = read();
  EXPECT_EQ(std::get<Tensor>(parameters.at(0).value).data.size(), 8u);
  EXPECT_EQ(std::get<std::unique_ptr<Graph>>(parameters.at(1).value)->name,
            "body:loop");
}

// Early files tell the type by the field that is there.
TEST_F(AttributesTest, InfersATypeThatIsLeftOut) {
  AttributeProto& axis = *node_.add_attribute();
  axis.set_name("axis");
  axis.set_i(2);
  EXPECT_EQ(std::get<int32_t>(read().at(0).value), 2);
}

TEST_F(AttributesTest, NotAcceptsSparseTensorsAndReferences) {
  add("sparse", AttributeProto::SPARSE_TENSOR);
  EXPECT_EQ(errorOf([&] { read(); }),
            "not accepted: attribute sparse is of a kind without a match");
  node_.clear_attribute();
  add("axis", AttributeProto::INT).set_ref_attr_name("outer");
  EXPECT_EQ(errorOf([&] { read(); }),
            "not accepted: attribute axis refers to a function's");
}

}  // namespace
}  // namespace onnx_client
