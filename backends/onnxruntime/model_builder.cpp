#include "model_builder.h"

#include <algorithm>
#include <set>
#include <unordered_set>

#include "external_data.h"
#include "log.h"

namespace kiv::ort {
namespace {

constexpr int kIrVersion = 8;

bool isInput(const Tensor& tensor) {
  return tensor.type == KIV_TENSOR_TYPE_INPUT ||
         tensor.type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

bool isOutput(const Tensor& tensor) {
  return tensor.type == KIV_TENSOR_TYPE_OUTPUT ||
         tensor.type == KIV_TENSOR_TYPE_INPUT_OUTPUT;
}

class ModelBuilder {
 public:
  explicit ModelBuilder(const Graph& graph)
      : main_(graph), context_(*graph.context) {}

  Model build();

 private:
  using Values = std::unordered_set<std::string>;

  void collectValues(const Graph& graph);
  void fill(const Graph& graph, onnx::GraphProto& proto);
  void addTensor(const Graph& graph, const Tensor& tensor,
                 const Values& produced, onnx::GraphProto& proto);
  void addInitializer(const Tensor& tensor, onnx::GraphProto& proto);
  void addInput(const Graph& graph, const Tensor& tensor,
                onnx::GraphProto& proto);
  void addOutput(const Tensor& tensor, onnx::GraphProto& proto);
  void fillSubgraphs(const Graph& graph, onnx::NodeProto& node);
  void fillSubgraph(const Graph& graph, onnx::GraphProto& proto);
  void shapeLoopInputs(onnx::GraphProto& body) const;
  void importOpSets();

  const Graph& main_;
  const Context& context_;
  Model model_;
  // Values that the nodes of any of the graphs use, and their domains.
  Values used_;
  std::set<std::string> domains_;
};

Model ModelBuilder::build() {
  model_.proto.set_ir_version(kIrVersion);
  model_.proto.set_producer_name("KivOnnxRuntime");
  collectValues(main_);
  fill(main_, *model_.proto.mutable_graph());
  importOpSets();
  return std::move(model_);
}

void ModelBuilder::collectValues(const Graph& graph) {
  for (const onnx::NodeProto& node : graph.nodes) {
    used_.insert(node.input().begin(), node.input().end());
    used_.insert(node.output().begin(), node.output().end());
    domains_.insert(node.domain());
  }
  for (const auto& subgraph : graph.subgraphs) collectValues(*subgraph);
}

void ModelBuilder::fill(const Graph& graph, onnx::GraphProto& proto) {
  proto.set_name(graph.name);
  Values produced;
  for (const onnx::NodeProto& node : graph.nodes)
    produced.insert(node.output().begin(), node.output().end());
  for (const Tensor& tensor : context_.tensors)
    addTensor(graph, tensor, produced, proto);
  for (const onnx::NodeProto& node : graph.nodes) {
    *proto.add_node() = node;
    fillSubgraphs(graph, *proto.mutable_node(proto.node_size() - 1));
  }
}

// Adds a tensor where it belongs to the graph: its own, or its context's. The
// context's static tensors and inputs are the main graph's, where subgraphs see
// them; those inputs excepted that were created with a subgraph.
void ModelBuilder::addTensor(const Graph& graph, const Tensor& tensor,
                             const Values& produced, onnx::GraphProto& proto) {
  const bool isOwn = tensor.owner == &graph;
  if (!isOwn && (tensor.owner != nullptr || !used_.contains(tensor.value)))
    return;
  const bool isMain = &graph == &main_;
  const bool isSubgraphs = tensor.home != nullptr &&
                           tensor.home->parent != nullptr &&
                           &tensor.home->main() == &main_;
  if (tensor.type == KIV_TENSOR_TYPE_STATIC && (isOwn || isMain))
    addInitializer(tensor, proto);
  if (isInput(tensor) &&
      (isOwn || (isSubgraphs ? tensor.home == &graph : isMain)))
    addInput(graph, tensor, proto);
  if (isOutput(tensor) && (isOwn || produced.contains(tensor.value)))
    addOutput(tensor, proto);
}

void ModelBuilder::addInitializer(const Tensor& tensor,
                                  onnx::GraphProto& proto) {
  onnx::TensorProto& initializer = *proto.add_initializer();
  initializer.set_name(tensor.value);
  initializer.set_data_type(tensor.elements->onnxType);
  for (const std::int64_t size : tensor.dimensions) initializer.add_dims(size);
  if (tensor.place) {
    setPlace(initializer, *tensor.place);
    model_.dataFile = context_.dataFile;
  } else {
    initializer.set_raw_data(tensor.data.data(), tensor.data.size());
  }
}

// Sizes of a subgraph's inputs may change from one round of a loop to the next,
// and those that are not known look like a scalar's, so they are left to
// ONNX Runtime.
void ModelBuilder::addInput(const Graph& graph, const Tensor& tensor,
                            onnx::GraphProto& proto) {
  onnx::ValueInfoProto& input = *proto.add_input();
  input.set_name(tensor.value);
  input.set_doc_string(tensor.name);
  auto& type = *input.mutable_type()->mutable_tensor_type();
  type.set_elem_type(tensor.elements->onnxType);
  if (graph.parent != nullptr) return;
  model_.ids[tensor.value] = tensor.id;
  auto& shape = *type.mutable_shape();
  for (std::size_t i = 0; i < tensor.dimensions.size(); ++i) {
    auto& dimension = *shape.add_dim();
    if (tensor.open.empty() || !tensor.open[i])
      dimension.set_dim_value(tensor.dimensions[i]);
  }
}

void ModelBuilder::addOutput(const Tensor& tensor, onnx::GraphProto& proto) {
  onnx::ValueInfoProto& output = *proto.add_output();
  output.set_name(tensor.value);
  output.set_doc_string(tensor.name);
  output.mutable_type()->mutable_tensor_type()->set_elem_type(
      tensor.elements->onnxType);
  model_.ids[tensor.value] = tensor.id;
}

void ModelBuilder::fillSubgraphs(const Graph& graph, onnx::NodeProto& node) {
  for (onnx::AttributeProto& attribute : *node.mutable_attribute()) {
    if (attribute.type() == onnx::AttributeProto::GRAPH) {
      fillSubgraph(graph, *attribute.mutable_g());
      if (node.op_type() == "Loop") shapeLoopInputs(*attribute.mutable_g());
    }
    for (onnx::GraphProto& proto : *attribute.mutable_graphs())
      fillSubgraph(graph, proto);
  }
}

// ONNX Runtime wants to know that a loop's number of the round and condition
// have one element.
void ModelBuilder::shapeLoopInputs(onnx::GraphProto& body) const {
  constexpr int kCount = 2;
  for (int i = 0; i < std::min(kCount, body.input_size()); ++i) {
    onnx::ValueInfoProto& input = *body.mutable_input(i);
    const auto tensor = std::find_if(
        context_.tensors.begin(), context_.tensors.end(),
        [&](const Tensor& each) { return each.value == input.name(); });
    auto& shape = *input.mutable_type()->mutable_tensor_type()->mutable_shape();
    if (!tensor->dimensions.empty()) shape.add_dim()->set_dim_value(1);
  }
}

void ModelBuilder::fillSubgraph(const Graph& graph, onnx::GraphProto& proto) {
  const std::string name = proto.name();
  fill(*findSubgraph(graph, name), proto);
}

void ModelBuilder::importOpSets() {
  const int newest = context_.library->newestOpset();
  for (const std::string& domain : domains_) {
    const int version = versionFor(context_.opSets, domain, newest);
    onnx::OperatorSetIdProto& import = *model_.proto.add_opset_import();
    import.set_domain(domain);
    import.set_version(version);
    if (context_.opSets.find(domain)) continue;
    log(KIV_LOG_LEVEL_WARN, "graph \"" + main_.name +
                                "\": no platform option onnx.opset" +
                                (domain.empty() ? "" : "." + domain) +
                                " names an operator set, so " +
                                std::to_string(version) + " is taken");
  }
}

}  // namespace

Model buildModel(const Graph& graph) { return ModelBuilder(graph).build(); }

}  // namespace kiv::ort
