#include "model.h"

#include "external_data.h"

namespace kiv::ort {
namespace {

using Values = google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>;

void addIds(const onnx_model::ModelBuilder& builder, const Values& values,
            Model& model) {
  for (const onnx::ValueInfoProto& value : values)
    if (const auto id = builder.idOf(value.name()))
      model.ids[value.name()] = *id;
}

// ONNX Runtime finds the sizes itself, and warns of those that are others.
void clearShapes(Values& values) {
  for (onnx::ValueInfoProto& value : values)
    value.mutable_type()->mutable_tensor_type()->clear_shape();
}

// ONNX Runtime wants to know that a loop's number of the round and condition
// have one element where they are no scalars.
void shapeLoopInput(onnx::TypeProto::Tensor& type) {
  for (auto& dimension : *type.mutable_shape()->mutable_dim())
    dimension.set_dim_value(1);
}

// Sizes in a subgraph may change from one round of a loop to the next.
void clearShapesBelow(onnx::GraphProto& graph);

void clearShapesOf(onnx::GraphProto& subgraph, bool isLoop) {
  constexpr int kLoopInputs = 2;
  for (int i = 0; i < subgraph.input_size(); ++i) {
    auto& type =
        *subgraph.mutable_input(i)->mutable_type()->mutable_tensor_type();
    if (isLoop && i < kLoopInputs)
      shapeLoopInput(type);
    else
      type.clear_shape();
  }
  clearShapes(*subgraph.mutable_output());
  clearShapesBelow(subgraph);
}

void clearShapesBelow(onnx::GraphProto& graph) {
  for (onnx::NodeProto& node : *graph.mutable_node()) {
    for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
      if (attribute.has_g())
        clearShapesOf(*attribute.mutable_g(), node.op_type() == "Loop");
      for (onnx::GraphProto& subgraph : *attribute.mutable_graphs())
        clearShapesOf(subgraph, false);
    }
  }
}

bool hasExternalData(onnx::GraphProto& graph) {
  bool has = false;
  forEachTensor(graph, [&](const onnx::TensorProto& tensor, bool) {
    has = has || isExternal(tensor);
  });
  return has;
}

}  // namespace

Model buildModel(const Graph& graph) {
  const Context& context = *graph.context;
  Model model;
  model.proto = context.builder.build(graph.index);
  model.proto.set_producer_name("KivOnnxRuntime");
  onnx::GraphProto& proto = *model.proto.mutable_graph();
  addIds(context.builder, proto.input(), model);
  addIds(context.builder, proto.output(), model);
  clearShapes(*proto.mutable_output());
  clearShapesBelow(proto);
  if (hasExternalData(proto)) model.dataFile = context.dataFile;
  return model;
}

}  // namespace kiv::ort
