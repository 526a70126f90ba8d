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
  if (hasExternalData(proto)) model.dataFile = context.dataFile;
  return model;
}

}  // namespace kiv::ort
