#include "network_reader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "model_builder.h"
#include "run_apart.h"

namespace onnx_client {
namespace {

using onnx::GraphProto;
using onnx::ModelProto;

std::string readingError(ModelProto model) {
  return errorOf([&] { readNetwork(model); });
}

// The text of the error that a changed reluModel() gives.
std::string errorAfter(const std::function<void(GraphProto&)>& change) {
  ModelProto model = reluModel();
  change(*model.mutable_graph());
  return readingError(model);
}

TEST(NetworkReader, ReadsTensorsAndNodesInOrder) {
  ModelProto model = emptyModel();
  GraphProto& graph = *model.mutable_graph();
  *graph.add_input() = value("x", {2});
  *graph.add_input() = value("w", {2});  // has an initializer: no input
  *graph.add_initializer() = floatTensor("w", {1, 2});
  *graph.add_output() = value("y", {2});
  addNode(graph, "Add", {"x", "w"}, {"sum"}).set_name("add");
  addNode(graph, "Relu", {"sum"}, {"y"});
  const Network network = readNetwork(model);

  EXPECT_EQ(network.graph.name, "net");
  EXPECT_EQ(network.graph.inputs, std::vector<TensorIndex>{1});
  EXPECT_EQ(network.graph.outputs, std::vector<TensorIndex>{3});
  std::vector<std::string> names;
  std::vector<Kiv_TensorType_t> types;
  for (const TensorIndex index : network.graph.tensors) {
    names.push_back(network.tensors[index].name);
    types.push_back(network.tensors[index].type);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"w", "x", "sum", "y"}));
  EXPECT_EQ(types, (std::vector<Kiv_TensorType_t>{
                       KIV_TENSOR_TYPE_STATIC, KIV_TENSOR_TYPE_INPUT,
                       KIV_TENSOR_TYPE_NATIVE, KIV_TENSOR_TYPE_OUTPUT}));
  const Tensor& sum = findTensor(network, "sum");  // inferred
  EXPECT_EQ(sum.shape.dimensions, std::vector<uint32_t>{2});
  EXPECT_EQ(sum.dataType, KIV_DATA_TYPE_FLOAT_32);
  EXPECT_EQ(network.graph.nodes.at(0).name, "add");
  EXPECT_EQ(network.graph.nodes.at(0).package, "ai.onnx");
  EXPECT_EQ(network.graph.nodes.at(1).name, "Relu_1");
  EXPECT_TRUE(network.notes.empty());
}

TEST(NetworkReader, TakesOpenSizesAsOneAndMarksThem) {
  ModelProto model = reluModel();
  GraphProto& graph = *model.mutable_graph();
  *graph.mutable_input(0) = value("x", {-1, 3});
  auto* batch = graph.mutable_output(0)
                    ->mutable_type()
                    ->mutable_tensor_type()
                    ->mutable_shape()
                    ->mutable_dim(0);
  batch->set_dim_param("batch");
  const Network network = readNetwork(model);
  for (const char* name : {"x", "y"}) {
    SCOPED_TRACE(name);
    const Shape& shape = findTensor(network, name).shape;
    EXPECT_EQ(shape.dimensions, (std::vector<uint32_t>{1, 3}));
    EXPECT_EQ(shape.dynamic, (std::vector<uint8_t>{1, 0}));
  }
  EXPECT_EQ(network.notes.size(), 1u);
}

TEST(NetworkReader, KeepsOptionalPlacesOfNodes) {
  ModelProto model = reluModel();
  GraphProto& graph = *model.mutable_graph();
  addNode(graph, "Clip", {"x", "", "x"}, {""});
  const Network network = readNetwork(model);
  const Node& clip = network.graph.nodes.at(1);
  EXPECT_EQ(clip.inputs, (std::vector<TensorIndex>{0, kAbsent, 0}));
  EXPECT_EQ(clip.outputs, std::vector<TensorIndex>{kAbsent});
}

TEST(NetworkReader, PassesInputsThroughAndLeavesConstantOutputsOut) {
  ModelProto model = reluModel();
  GraphProto& graph = *model.mutable_graph();
  *graph.add_initializer() = floatTensor("w", {1});
  *graph.add_output() = value("w", {1});
  *graph.add_output() = value("x", {2, 3});
  const Network network = readNetwork(model);
  EXPECT_EQ(findTensor(network, "x").type, KIV_TENSOR_TYPE_INPUT_OUTPUT);
  EXPECT_EQ(network.graph.outputs.size(), 2u);  // y and x
}

// An If whose branches both use "x" and call their result "r".
ModelProto ifModel() {
  ModelProto model = reluModel();
  GraphProto& graph = *model.mutable_graph();
  *graph.add_input() = value("c", {}, onnx::TensorProto::BOOL);
  *graph.add_output() = value("z", {2, 3});
  onnx::NodeProto& node = addNode(graph, "If", {"c"}, {"z"});
  for (const char* name : {"then_branch", "else_branch"}) {
    onnx::AttributeProto& branch = *node.add_attribute();
    branch.set_name(name);
    branch.set_type(onnx::AttributeProto::GRAPH);
    GraphProto& body = *branch.mutable_g();
    *body.add_output() = value("r", {2, 3});
    addNode(body, "Neg", {"x"}, {"r"});
  }
  return model;
}

TEST(NetworkReader, ReadsGraphsOfAttributesWithTheirOuterTensors) {
  ModelProto model = ifModel();
  const Network network = readNetwork(model);
  const Node& node = network.graph.nodes.at(1);
  ASSERT_EQ(node.parameters.size(), 2u);
  const auto& second =
      std::get<std::unique_ptr<Graph>>(node.parameters[1].value);
  EXPECT_EQ(second->name, "If_1_else_branch");
  EXPECT_EQ(second->nodes.at(0).inputs, std::vector<TensorIndex>{0});
  EXPECT_TRUE(findTensor(network, "x").shared);
  EXPECT_FALSE(findTensor(network, "c").shared);
  // Names stay unique among all graphs.
  EXPECT_EQ(network.tensors.at(second->tensors.at(0)).name, "r_1");
  EXPECT_EQ(second->nodes.at(0).name, "Neg_0_1");
}

// Shapes are inferred apart, where damaged networks may do harm.
TEST(RunApart, BringsBackBytesAndSurvivesCrashes) {
  const std::string large(1 << 20, 'x');
  EXPECT_EQ(runApart([&] { return large; }), large);
  EXPECT_EQ(runApart([] { return std::string(); }), "");
  EXPECT_FALSE(runApart([]() -> std::string { std::abort(); }).has_value());
  EXPECT_FALSE(runApart([]() -> std::string {
                 throw std::runtime_error("no result");
               }).has_value());
}

TEST(NetworkReader, RefusesBrokenGraphs) {
  EXPECT_EQ(errorAfter([](GraphProto& g) { addNode(g, "Neg", {"q"}, {"r"}); }),
            "tensor q is used before it is defined");
  EXPECT_EQ(errorAfter([](GraphProto& g) {
              *g.add_initializer() = floatTensor("y", {1});
            }),
            "tensor y is defined twice");
  EXPECT_EQ(errorAfter([](GraphProto& g) { addNode(g, "", {"x"}, {}); }),
            "a node has no operation");
  EXPECT_EQ(errorAfter([](GraphProto& g) {
              g.mutable_node(0)->set_name(std::string("a\0b", 3));
            }),
            "a name in the network holds a NUL character");
  EXPECT_EQ(
      errorAfter([](GraphProto& g) { g.mutable_node(0)->clear_output(); }),
      "tensor y is used before it is defined");
}

TEST(NetworkReader, NotAcceptsWhatTheApiCannotExpress) {
  const auto setType = [](GraphProto& g, const onnx::TypeProto& type) {
    *g.mutable_input(0)->mutable_type() = type;
  };
  onnx::TypeProto sequence;
  sequence.mutable_sequence_type();
  EXPECT_EQ(errorAfter([&](GraphProto& g) { setType(g, sequence); }),
            "not accepted: tensor x is a sequence");
  onnx::TypeProto shapeless;
  shapeless.mutable_tensor_type()->set_elem_type(onnx::TensorProto::FLOAT);
  EXPECT_EQ(errorAfter([&](GraphProto& g) { setType(g, shapeless); }),
            "not accepted: the shape of tensor x is not known");
  EXPECT_EQ(errorAfter([](GraphProto& g) {
              *g.mutable_input(0) = value("x", {1 << 20, 1 << 20});
            }),
            "not accepted: tensor x is larger than 4 GiB");
  EXPECT_EQ(errorAfter([](GraphProto& g) { g.add_sparse_initializer(); }),
            "not accepted: the network has sparse initializers");
  EXPECT_EQ(errorAfter([](GraphProto& g) {
              addNode(g, "Own", {"x"}, {"o"}).set_domain("mine");
            }),
            "not accepted: tensor o is of unknown type");
  ModelProto functions = reluModel();
  functions.add_functions();
  EXPECT_EQ(readingError(functions),
            "not accepted: the network defines functions of its own");
}

}  // namespace
}  // namespace onnx_client
