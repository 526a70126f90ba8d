#include "old_op_sets.h"

#include <onnx/version_converter/convert.h>

#include <algorithm>
#include <unordered_set>

#include "external_data.h"
#include "failure.h"

namespace kiv::ort {
namespace {

constexpr int kOldestInUse = 7;

using Values = google::protobuf::RepeatedPtrField<onnx::ValueInfoProto>;

// The record of a value whose shape is not known has no dimensions, as that of
// a scalar has; constants are known to be what their records say.
std::unordered_set<std::string> constants(const onnx::GraphProto& graph) {
  std::unordered_set<std::string> names;
  for (const onnx::NodeProto& node : graph.node())
    if (node.op_type() == "Constant") names.insert(node.output(0));
  return names;
}

// libonnx rewrites broadcasts by the shapes of intermediate values.
void addShapes(const Graph& graph, onnx::GraphProto& proto) {
  const std::unordered_set<std::string> known = constants(proto);
  for (const Tensor& tensor : graph.context->tensors) {
    if (tensor.owner != &graph || tensor.type != KIV_TENSOR_TYPE_NATIVE ||
        (tensor.dimensions.empty() && !known.contains(tensor.value)))
      continue;
    onnx::ValueInfoProto& info = *proto.add_value_info();
    info.set_name(tensor.value);
    auto& type = *info.mutable_type()->mutable_tensor_type();
    type.set_elem_type(tensor.elements->onnxType);
    for (const std::int64_t size : tensor.dimensions)
      type.mutable_shape()->add_dim()->set_dim_value(size);
    type.mutable_shape();
  }
}

const Tensor& tensorOf(const Graph& graph, const std::string& value) {
  const std::deque<Tensor>& tensors = graph.context->tensors;
  const auto found =
      std::find_if(tensors.begin(), tensors.end(),
                   [&](const Tensor& tensor) { return tensor.value == value; });
  if (found == tensors.end())
    throw Failure(KIV_CONTEXT_ERROR_GENERAL, "there is no tensor " + value);
  return *found;
}

onnx::TensorProto* findInitializer(onnx::GraphProto& proto,
                                   const std::string& name) {
  for (onnx::TensorProto& initializer : *proto.mutable_initializer())
    if (initializer.name() == name) return &initializer;
  return nullptr;
}

// The slopes of PRelu are one a channel in old operator sets, and broadcast
// from the last dimension in later ones. libonnx does not care for that.
void shapeSlopes(const Graph& graph, onnx::GraphProto& proto) {
  for (const onnx::NodeProto& node : proto.node()) {
    if (node.op_type() != "PRelu" || node.input_size() != 2) continue;
    const Tensor& slopes = tensorOf(graph, node.input(1));
    if (slopes.dimensions == std::vector<std::int64_t>{1}) continue;
    const std::size_t rank = tensorOf(graph, node.input(0)).dimensions.size();
    onnx::TensorProto* initializer = findInitializer(proto, node.input(1));
    if (initializer == nullptr || initializer->dims_size() != 1 || rank < 2) {
      throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                    "the slopes of " + node.name() + " have no fixed shape");
    }
    for (std::size_t i = 2; i < rank; ++i) initializer->add_dims(1);
  }
}

// libonnx does not keep the documentation, which holds the client's names.
void restoreNames(const Values& from, Values& to) {
  for (onnx::ValueInfoProto& value : to) {
    const auto found = std::find_if(from.begin(), from.end(),
                                    [&](const onnx::ValueInfoProto& original) {
                                      return original.name() == value.name();
                                    });
    if (found != from.end()) value.set_doc_string(found->doc_string());
  }
}

}  // namespace

bool isOfOldOpSet(const onnx::ModelProto& model) {
  return std::any_of(model.opset_import().begin(), model.opset_import().end(),
                     [](const onnx::OperatorSetIdProto& import) {
                       return import.domain().empty() &&
                              import.version() < kOldestInUse;
                     });
}

Model buildRewrittenModel(const Graph& graph) {
  Model model = buildModel(graph);
  onnx::GraphProto& original = *model.proto.mutable_graph();
  if (model.dataFile != nullptr) takeIn(original, *model.dataFile);
  model.dataFile = nullptr;
  addShapes(graph, original);
  shapeSlopes(graph, original);
  onnx::ModelProto rewritten =
      onnx::version_conversion::ConvertVersion(model.proto, kOldestInUse);
  restoreNames(original.input(), *rewritten.mutable_graph()->mutable_input());
  restoreNames(original.output(), *rewritten.mutable_graph()->mutable_output());
  model.proto = std::move(rewritten);
  return model;
}

}  // namespace kiv::ort
