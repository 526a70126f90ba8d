#include "model_builder.h"

namespace onnx_client {

onnx::ValueInfoProto value(const std::string& name,
                           const std::vector<int64_t>& sizes,
                           int32_t elementType) {
  onnx::ValueInfoProto info;
  info.set_name(name);
  auto* type = info.mutable_type()->mutable_tensor_type();
  type->set_elem_type(elementType);
  type->mutable_shape();
  for (const int64_t size : sizes) {
    auto* dimension = type->mutable_shape()->add_dim();
    if (size >= 0) dimension->set_dim_value(size);
  }
  return info;
}

onnx::TensorProto tensorProto(int32_t elementType,
                              const std::vector<int64_t>& sizes) {
  onnx::TensorProto proto;
  proto.set_data_type(elementType);
  for (const int64_t size : sizes) proto.add_dims(size);
  return proto;
}

onnx::TensorProto floatTensor(const std::string& name,
                              const std::vector<float>& values) {
  onnx::TensorProto proto = tensorProto(onnx::TensorProto::FLOAT,
                                        {static_cast<int64_t>(values.size())});
  proto.set_name(name);
  for (const float element : values) proto.add_float_data(element);
  return proto;
}

onnx::NodeProto& addNode(onnx::GraphProto& graph, const std::string& type,
                         const std::vector<std::string>& inputs,
                         const std::vector<std::string>& outputs) {
  onnx::NodeProto& node = *graph.add_node();
  node.set_op_type(type);
  for (const std::string& input : inputs) node.add_input(input);
  for (const std::string& output : outputs) node.add_output(output);
  return node;
}

onnx::ModelProto emptyModel() {
  onnx::ModelProto model;
  model.set_ir_version(7);
  model.add_opset_import()->set_version(13);
  model.mutable_graph()->set_name("net");
  return model;
}

onnx::ModelProto reluModel() {
  onnx::ModelProto model = emptyModel();
  onnx::GraphProto& graph = *model.mutable_graph();
  *graph.add_input() = value("x", {2, 3});
  *graph.add_output() = value("y", {2, 3});
  addNode(graph, "Relu", {"x"}, {"y"});
  return model;
}

const Tensor& findTensor(const Network& network, const std::string& name) {
  for (const Tensor& tensor : network.tensors) {
    if (tensor.name == name) return tensor;
  }
  throw ClientError("no tensor " + name);
}

}  // namespace onnx_client
