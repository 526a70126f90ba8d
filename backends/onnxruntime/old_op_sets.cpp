#include "old_op_sets.h"

#include <onnx/version_converter/convert.h>

#include <algorithm>
#include <limits>
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
  for (const onnx::ValueInfoProto& info :
       graph.context->builder.intermediatesOf(graph.index)) {
    if (info.type().tensor_type().shape().dim_size() > 0 ||
        known.contains(info.name()))
      *proto.add_value_info() = info;
  }
}

// 0 for a value of unknown shape.
int rankOf(const onnx::GraphProto& proto, const std::string& name) {
  for (const Values* values : {&proto.input(), &proto.value_info()})
    for (const onnx::ValueInfoProto& info : *values)
      if (info.name() == name)
        return info.type().tensor_type().shape().dim_size();
  return 0;
}

onnx::TensorProto* findInitializer(onnx::GraphProto& proto,
                                   const std::string& name) {
  for (onnx::TensorProto& initializer : *proto.mutable_initializer())
    if (initializer.name() == name) return &initializer;
  return nullptr;
}

// The slopes of PRelu are one a channel in old operator sets, and broadcast
// from the last dimension in later ones. libonnx does not care for that.
void shapeSlopes(onnx::GraphProto& proto) {
  for (const onnx::NodeProto& node : proto.node()) {
    if (node.op_type() != "PRelu" || node.input_size() != 2) continue;
    onnx::TensorProto* slopes = findInitializer(proto, node.input(1));
    const int rank = rankOf(proto, node.input(0));
    if (slopes == nullptr || slopes->dims_size() != 1 || rank < 2) {
      throw Failure(KIV_CONTEXT_ERROR_GENERAL,
                    "the slopes of " + node.name() + " have no fixed shape");
    }
    if (slopes->dims(0) == 1) continue;
    for (int i = 2; i < rank; ++i) slopes->add_dims(1);
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

// libonnx rewrites models that are whole, and these have 2 GiB at most.
void checkSize(onnx::GraphProto& proto) {
  constexpr auto kMostRewritten =
      static_cast<std::uint64_t>(std::numeric_limits<int>::max());
  std::uint64_t size = 0;
  forEachTensor(proto, [&](const onnx::TensorProto& tensor, bool) {
    if (isExternal(tensor)) size += placeOf(tensor).size;
  });
  if (size > kMostRewritten)
    throw Failure(KIV_CONTEXT_ERROR_GENERAL, "it has more than 2 GiB of data");
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
  checkSize(original);
  if (model.dataFile != nullptr) takeIn(original, *model.dataFile);
  model.dataFile = nullptr;
  addShapes(graph, original);
  shapeSlopes(original);
  onnx::ModelProto rewritten =
      onnx::version_conversion::ConvertVersion(model.proto, kOldestInUse);
  restoreNames(original.input(), *rewritten.mutable_graph()->mutable_input());
  restoreNames(original.output(), *rewritten.mutable_graph()->mutable_output());
  model.proto = std::move(rewritten);
  return model;
}

}  // namespace kiv::ort
