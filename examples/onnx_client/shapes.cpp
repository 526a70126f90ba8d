#include "shapes.h"

#include <onnx/shape_inference/implementation.h>

#include <algorithm>
#include <exception>
#include <set>

#include "errors.h"
#include "run_apart.h"
#include "tensor_data.h"

namespace onnx_client {
namespace {

using Dimension = onnx::TensorShapeProto::Dimension;
using Values = google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>;

// Some exporters write -1 for a size that is not known.
bool isOpen(const Dimension& dimension) {
  return !dimension.has_dim_value() || dimension.dim_value() < 0;
}

std::vector<std::uint8_t> openFlags(const onnx::ValueInfoProto& value) {
  std::vector<std::uint8_t> flags;
  for (const Dimension& dimension : value.type().tensor_type().shape().dim())
    flags.push_back(isOpen(dimension) ? 1 : 0);
  if (std::count(flags.begin(), flags.end(), 1) == 0) flags.clear();
  return flags;
}

void collectOpen(const Values& values, OpenShapes& open) {
  for (const onnx::ValueInfoProto& value : values) {
    std::vector<std::uint8_t> flags = openFlags(value);
    if (!flags.empty()) open.insert_or_assign(value.name(), std::move(flags));
  }
}

// Applies a function to each dimension of the tensors among the values.
template <typename Function>
void forEachDimension(Values& values, Function function) {
  for (onnx::ValueInfoProto& value : values) {
    if (!value.type().tensor_type().has_shape()) continue;
    auto* shape = value.mutable_type()->mutable_tensor_type()->mutable_shape();
    for (Dimension& dimension : *shape->mutable_dim()) function(dimension);
  }
}

// Returns whether there was an open size.
bool closeInputs(onnx::GraphProto& graph) {
  std::set<std::string> symbols;
  bool any = false;
  forEachDimension(*graph.mutable_input(), [&](Dimension& dimension) {
    if (!isOpen(dimension)) return;
    any = true;
    if (dimension.has_dim_param()) symbols.insert(dimension.dim_param());
    dimension.set_dim_value(1);
  });
  symbols.erase("");
  const auto closeNamed = [&](Dimension& dimension) {
    if (symbols.contains(dimension.dim_param())) dimension.set_dim_value(1);
  };
  forEachDimension(*graph.mutable_output(), closeNamed);
  forEachDimension(*graph.mutable_value_info(), closeNamed);
  return any;
}

constexpr char kAllInferred = '+';
constexpr char kSomeInferred = '-';

// The model with inferred shapes and without its initializers, as bytes behind
// one of the marks above.
std::string inferredBytes(onnx::ModelProto& model) {
  const onnx::ShapeInferenceOptions options(false, 0, true);
  std::string bytes(1, kAllInferred);
  try {
    onnx::shape_inference::InferShapes(
        model, onnx::OpSchemaRegistry::Instance(), options);
  } catch (const std::exception&) {
    bytes[0] = kSomeInferred;
  }
  model.mutable_graph()->clear_initializer();
  model.AppendToString(&bytes);
  return bytes;
}

// Inference trusts the nodes to be sound, so it runs apart.
bool inferShapes(onnx::ModelProto& model) {
  const auto bytes = runApart([&] { return inferredBytes(model); });
  if (!bytes || bytes->empty()) return false;
  onnx::ModelProto inferred;
  if (!inferred.ParseFromString(bytes->substr(1))) return false;
  onnx::GraphProto& graph = *model.mutable_graph();
  inferred.mutable_graph()->mutable_initializer()->Swap(
      graph.mutable_initializer());
  graph.Swap(inferred.mutable_graph());
  return bytes->front() == kAllInferred;
}

const char* kindName(const onnx::TypeProto& type) {
  switch (type.value_case()) {
    case onnx::TypeProto::kSequenceType:
      return "a sequence";
    case onnx::TypeProto::kMapType:
      return "a map";
    case onnx::TypeProto::kOptionalType:
      return "an optional value";
    case onnx::TypeProto::kSparseTensorType:
      return "a sparse tensor";
    default:
      return "of unknown type";
  }
}

Shape readShape(const onnx::TypeProto::Tensor& type, const std::string& what) {
  Shape shape;
  shape.known = type.has_shape();
  for (const Dimension& dimension : type.shape().dim()) {
    const bool open = isOpen(dimension);
    shape.dynamic.push_back(open ? 1 : 0);
    shape.dimensions.push_back(
        open ? 1 : checkedDimension(dimension.dim_value(), what));
  }
  if (std::count(shape.dynamic.begin(), shape.dynamic.end(), 1) == 0)
    shape.dynamic.clear();
  return shape;
}

}  // namespace

OpenShapes settleShapes(onnx::ModelProto& model,
                        std::vector<std::string>& notes) {
  OpenShapes open;
  onnx::GraphProto& graph = *model.mutable_graph();
  collectOpen(graph.input(), open);
  collectOpen(graph.output(), open);
  if (closeInputs(graph)) {
    notes.emplace_back(
        "sizes that the network's inputs leave open are taken as 1");
  }
  if (!inferShapes(model))
    notes.emplace_back("not all shapes of the network could be inferred");
  return open;
}

ValueTypes::ValueTypes(const onnx::GraphProto& graph) {
  for (const Values* values :
       {&graph.input(), &graph.output(), &graph.value_info()}) {
    for (const onnx::ValueInfoProto& value : *values)
      if (value.has_type()) types_.try_emplace(value.name(), &value.type());
  }
}

void ValueTypes::describe(const std::string& value, Tensor& tensor) const {
  const std::string what = "tensor " + value;
  const auto found = types_.find(value);
  if (found == types_.end()) throw NotAccepted(what + " is of unknown type");
  const onnx::TypeProto& type = *found->second;
  if (!type.has_tensor_type())
    throw NotAccepted(what + " is " + kindName(type));
  tensor.dataType = dataTypeOf(type.tensor_type().elem_type(), what);
  tensor.shape = readShape(type.tensor_type(), what);
}

}  // namespace onnx_client
