#include "onnx_model/model_builder.h"

#include <gtest/gtest.h>
#include <onnx/checker.h>

#include "support/records.h"

namespace kiv::test {
namespace {

using namespace onnx_model;
using onnx::AttributeProto;

class Model : public testing::Test {
 protected:
  Kiv_Tensor_t make(const char* name, Kiv_TensorType_t type,
                    Kiv_DataType_t dataType = KIV_DATA_TYPE_FLOAT_32) {
    Kiv_Tensor_t tensor = emptyTensor(KIV_TENSOR_VERSION_1, dataType);
    tensor.v1.id = ++ids_;
    tensor.v1.name = name;
    tensor.v1.type = type;
    tensor.v1.rank = 1;
    tensor.v1.dimensions = &two_;
    if (type == KIV_TENSOR_TYPE_STATIC) tensor.v1.clientBuf = {data_, 8};
    return tensor;
  }

  static Kiv_Param_t scalar(const char* name, Kiv_DataType_t type) {
    Kiv_Param_t param{};
    param.name = name;
    param.scalarParam.dataType = type;
    return param;
  }
  static Kiv_Param_t text(const char* name, const char* value) {
    Kiv_Param_t param = scalar(name, KIV_DATA_TYPE_STRING);
    param.scalarParam.stringValue = value;
    return param;
  }
  Kiv_Param_t list(const char* name, Kiv_DataType_t type, std::uint32_t size) {
    Kiv_Param_t param{};
    param.name = name;
    param.paramType = KIV_PARAM_TYPE_TENSOR;
    param.tensorParam = tensorWithData(data_, size, type);
    param.tensorParam.v1.type = KIV_TENSOR_TYPE_STATIC;
    param.tensorParam.v1.rank = 1;
    param.tensorParam.v1.dimensions = &two_;
    return param;
  }

  std::optional<Fault> add(GraphIndex graph, const char* type,
                           std::vector<Kiv_Tensor_t> inputs,
                           std::vector<Kiv_Tensor_t> outputs,
                           std::vector<Kiv_Param_t> params = {}) {
    Kiv_OpConfig_t node = emptyOpConfig(type);
    node.v1.packageName = "ai.onnx";
    node.v1.typeName = type;
    node.v1.numInputs = static_cast<std::uint32_t>(inputs.size());
    node.v1.inputTensors = inputs.data();
    node.v1.numOutputs = static_cast<std::uint32_t>(outputs.size());
    node.v1.outputTensors = outputs.data();
    node.v1.numParams = static_cast<std::uint32_t>(params.size());
    node.v1.params = params.data();
    return builder_.addNode(graph, node);
  }

  // The attribute that a parameter of such a node becomes.
  AttributeProto attribute(const char* type, const Kiv_Param_t& param) {
    ModelBuilder builder;
    std::swap(builder, builder_);
    builder_.opsets().set("", 13);
    const GraphIndex graph = builder_.addGraph("g");
    const auto fault = add(graph, type, {}, {}, {param});
    const auto model = builder_.build(graph);
    std::swap(builder, builder_);
    if (fault) {
      ADD_FAILURE() << fault->message;
      return {};
    }
    return model.graph().node(0).attribute(0);
  }

  ModelBuilder builder_;
  std::uint32_t ids_ = 0;
  std::uint32_t two_ = 2;
  std::int64_t data_[2] = {7, 1};
};

TEST_F(Model, SchemasTellTheKindsOfAttributes) {
  const auto ints = list("axes", KIV_DATA_TYPE_INT_64, 16);
  EXPECT_EQ(attribute("Squeeze", ints).ints_size(), 2);
  const auto tensor = list("value", KIV_DATA_TYPE_INT_64, 16);
  EXPECT_EQ(attribute("Constant", tensor).type(), AttributeProto::TENSOR);
  EXPECT_EQ(attribute("NoSuchOperator", tensor).type(), AttributeProto::INTS);
  Kiv_Param_t one = list("axis", KIV_DATA_TYPE_INT_64, 8);
  std::uint32_t size = 1;
  one.tensorParam.v1.dimensions = &size;
  EXPECT_EQ(attribute("Concat", one).i(), 7);
  EXPECT_EQ(attribute("LSTM", text("activations_0", "Tanh")).strings(0),
            "Tanh");
  EXPECT_EQ(attribute("LSTM", text("direction", "forward")).s(), "forward");
  EXPECT_EQ(attribute("Cast", scalar("to", KIV_DATA_TYPE_INT_32)).type(),
            AttributeProto::INT);
  // A value that the schema does not expect keeps its own kind.
  EXPECT_EQ(attribute("Cast", scalar("to", KIV_DATA_TYPE_FLOAT_32)).type(),
            AttributeProto::FLOAT);
}

TEST_F(Model, SubgraphsSeeTensorsOfTheContext) {
  builder_.opsets().readOption("onnx.opset:13");
  const GraphIndex main = builder_.addGraph("main");
  const auto condition =
      make("condition", KIV_TENSOR_TYPE_INPUT, KIV_DATA_TYPE_BOOL_8);
  const auto weight = make("w", KIV_TENSOR_TYPE_STATIC);
  const auto y = make("y", KIV_TENSOR_TYPE_OUTPUT);
  EXPECT_FALSE(builder_.addTensor(main, condition));
  EXPECT_FALSE(builder_.addContextTensor(weight));
  for (const char* name : {"then", "else"}) {
    const GraphIndex branch = builder_.addSubgraph(main, name);
    const auto result = make("result", KIV_TENSOR_TYPE_OUTPUT);
    EXPECT_FALSE(builder_.addTensor(branch, result));
    EXPECT_FALSE(add(branch, "Add", {weight, weight}, {result}));
    EXPECT_TRUE(add(branch, "Add", {weight, condition}, {result}));
  }
  EXPECT_FALSE(builder_.addContextTensor(y));
  EXPECT_TRUE(add(main, "If", {condition}, {y}, {text("then_branch", "no")}));
  EXPECT_FALSE(add(main, "If", {condition}, {y},
                   {text("then_branch", "then"), text("else_branch", "else")}));
  const onnx::ModelProto model = builder_.build(main);
  EXPECT_NO_THROW(onnx::checker::check_model(model));
  ASSERT_EQ(model.graph().initializer_size(), 1);
  EXPECT_EQ(model.graph().input_size(), 1);
  EXPECT_EQ(model.graph().output_size(), 1);
  const auto& branch = model.graph().node(0).attribute(1).g();
  EXPECT_EQ(branch.initializer_size(), 0);
  EXPECT_EQ(branch.output(0).name(), "result_5");
  EXPECT_TRUE(builder_.warnings().empty());
}

TEST_F(Model, GraphsShareTensorsOfTheContext) {
  const GraphIndex graphs[] = {builder_.addGraph("a"), builder_.addGraph("b")};
  const auto x = make("x", KIV_TENSOR_TYPE_INPUT);
  const auto y = make("y", KIV_TENSOR_TYPE_OUTPUT);
  const auto other = make("other", KIV_TENSOR_TYPE_INPUT);
  for (const Kiv_Tensor_t& tensor : {x, y, other})
    EXPECT_FALSE(builder_.addContextTensor(tensor));
  for (const GraphIndex graph : graphs)
    EXPECT_FALSE(add(graph, "Identity", {x}, {y}));
  EXPECT_FALSE(add(graphs[0], "Identity", {other}, {}));
  for (const GraphIndex graph : graphs) {
    const onnx::GraphProto model = builder_.build(graph).graph();
    EXPECT_EQ(model.input_size(), graph == graphs[0] ? 2 : 1);
    EXPECT_EQ(model.input(0).name(), "x");
    ASSERT_EQ(model.output_size(), 1);
    EXPECT_EQ(builder_.idOf(model.output(0).name()), y.v1.id);
  }
}

TEST_F(Model, OptionsNameTheVersionsOfOperators) {
  using Option = Opsets::Option;
  Opsets& opsets = builder_.opsets();
  EXPECT_EQ(opsets.readOption("onnx.opset.ai.onnx.ml:2"), Option::kTaken);
  for (const char* option :
       {"onnx.opset", "onnx.opset:", "onnx.opset:0", "onnx.opset:1x"})
    EXPECT_EQ(opsets.readOption(option), Option::kMalformed) << option;
  for (const char* option : {"onnx.opsets:1", "other:1"})
    EXPECT_EQ(opsets.readOption(option), Option::kOther) << option;
  opsets.setNewest(15);
  const GraphIndex graph = builder_.addGraph("g");
  EXPECT_FALSE(add(graph, "Identity", {}, {}));
  EXPECT_EQ(builder_.warnings().size(), 1U);
  const auto model = builder_.build(graph);
  ASSERT_EQ(model.opset_import_size(), 2);
  EXPECT_EQ(model.opset_import(0).version(), 15);
  EXPECT_EQ(model.opset_import(1).domain(), "ai.onnx.ml");
}

TEST_F(Model, WhatCannotBeInAModelIsRefused) {
  const GraphIndex graph = builder_.addGraph("g");
  auto tensor = make("t", KIV_TENSOR_TYPE_STATIC);
  tensor.v1.clientBuf.dataSize = 7;
  EXPECT_EQ(builder_.addTensor(graph, tensor)->status,
            KIV_GRAPH_ERROR_INVALID_TENSOR);
  tensor.v1.clientBuf.dataSize = 8;
  EXPECT_FALSE(builder_.addTensor(graph, tensor));
  EXPECT_EQ(builder_.addTensor(graph, tensor)->status,
            KIV_TENSOR_ERROR_ALREADY_EXISTS);
  const auto four =
      make("four", KIV_TENSOR_TYPE_INPUT, KIV_DATA_TYPE_SFIXED_POINT_4);
  EXPECT_EQ(builder_.addTensor(graph, four)->status,
            KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE);
  tensor = make("open", KIV_TENSOR_TYPE_INPUT);
  tensor.v1.dimensions = nullptr;
  EXPECT_EQ(builder_.addTensor(graph, tensor)->status,
            KIV_GRAPH_ERROR_INVALID_TENSOR);
  EXPECT_EQ(
      add(graph, "LSTM", {}, {}, {text("activations_1", "Tanh")})->message,
      "node LSTM (LSTM): parameter activations_1 is out of order");
  Kiv_OpConfig_t node = emptyOpConfig("n");
  node.v1.typeName = "Identity";
  node.v1.numInputs = 1;
  node.v1.inputTensors = nullptr;
  EXPECT_EQ(builder_.addNode(graph, node)->status,
            KIV_BACKEND_ERROR_INVALID_ARGUMENT);
  EXPECT_NE(add(graph, "Identity", {make("x", KIV_TENSOR_TYPE_INPUT)}, {})
                ->message.find("created neither"),
            std::string::npos);
}

}  // namespace
}  // namespace kiv::test
