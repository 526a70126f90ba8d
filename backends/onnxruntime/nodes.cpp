#include "nodes.h"

#include <span>

#include "attributes.h"
#include "failure.h"

namespace kiv::ort {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw Failure(KIV_BACKEND_ERROR_INVALID_ARGUMENT, why);
}

const Kiv_OpConfigV1_t& readVersion(const Kiv_OpConfig_t& config) {
  if (config.version != KIV_OP_CONFIG_VERSION_1) {
    throw Failure(KIV_COMMON_ERROR_NOT_SUPPORTED,
                  "the operation's record is of version " +
                      std::to_string(config.version) + "; version 1 is taken");
  }
  return config.v1;
}

template <typename Record>
std::span<const Record> list(const Record* records, std::uint32_t count,
                             const char* what) {
  if (records == nullptr && count > 0)
    refuse(std::string("the list of ") + what + " is null, its count is not");
  return {records, count};
}

std::string textOf(const char* text, const char* what) {
  if (text == nullptr) refuse(std::string("the operation has no ") + what);
  return text;
}

// The node's name, type and domain.
onnx::NodeProto startNode(const Kiv_OpConfigV1_t& config) {
  onnx::NodeProto node;
  if (config.name != nullptr) node.set_name(config.name);
  node.set_op_type(textOf(config.typeName, "type"));
  node.set_domain(domainOf(textOf(config.packageName, "package")));
  return node;
}

void readParams(const Kiv_OpConfigV1_t& config, const onnx::OpSchema* schema,
                AttributeReader::HasSubgraph hasSubgraph,
                onnx::NodeProto& node) {
  const AttributeReader reader(schema, std::move(hasSubgraph));
  for (const Kiv_Param_t& param :
       list(config.params, config.numParams, "parameters"))
    reader.read(param, node);
}

// The name in the model of a node's tensor; empty for one that is left out.
std::string valueOf(const Graph& graph, const Kiv_Tensor_t& record,
                    const std::string& what) {
  const TensorFields fields = readFields(record, what);
  if (fields.type == KIV_TENSOR_TYPE_NULL) return {};
  const Tensor* tensor = findTensor(*graph.context, fields.id);
  if (tensor != nullptr &&
      (tensor->owner == nullptr || tensor->owner == &graph))
    return tensor->value;
  throw Failure(KIV_GRAPH_ERROR_INVALID_TENSOR,
                what + ", " + describe(fields) + " with the id " +
                    std::to_string(fields.id) +
                    ", was created neither in the graph nor in its context");
}

bool fits(std::size_t count, int least, int most) {
  return count >= static_cast<std::size_t>(least) &&
         count <= static_cast<std::size_t>(most);
}

}  // namespace

onnx::NodeProto makeNode(const Graph& graph, const Kiv_OpConfig_t& config) {
  const Kiv_OpConfigV1_t& v1 = readVersion(config);
  onnx::NodeProto node = startNode(v1);
  const int version = versionFor(graph.context->opSets, node.domain(),
                                 graph.context->library->newestOpset());
  readParams(
      v1, findSchema(node.op_type(), node.domain(), version),
      [&](const std::string& name) {
        return findSubgraph(graph, name) != nullptr;
      },
      node);
  std::size_t index = 0;
  for (const Kiv_Tensor_t& input :
       list(v1.inputTensors, v1.numInputs, "inputs"))
    node.add_input(valueOf(graph, input, "input " + std::to_string(index++)));
  index = 0;
  for (const Kiv_Tensor_t& output :
       list(v1.outputTensors, v1.numOutputs, "outputs"))
    node.add_output(
        valueOf(graph, output, "output " + std::to_string(index++)));
  return node;
}

void validateOperation(const OpSets& opSets, int newestOpset,
                       const Kiv_OpConfig_t& config) {
  const Kiv_OpConfigV1_t& v1 = readVersion(config);
  onnx::NodeProto node = startNode(v1);
  const onnx::OpSchema* schema =
      findSchema(node.op_type(), node.domain(),
                 versionFor(opSets, node.domain(), newestOpset));
  if (schema == nullptr) {
    refuse("the package " + std::string(v1.packageName) + " has no operator " +
           node.op_type());
  }
  // Subgraphs are made with the graph, so none exists here.
  readParams(
      v1, schema, [](const std::string&) { return true; }, node);
  const auto inputs = list(v1.inputTensors, v1.numInputs, "inputs");
  const auto outputs = list(v1.outputTensors, v1.numOutputs, "outputs");
  if (!fits(inputs.size(), schema->min_input(), schema->max_input()))
    refuse(node.op_type() + " does not take " + std::to_string(inputs.size()) +
           " inputs");
  if (!fits(outputs.size(), schema->min_output(), schema->max_output()))
    refuse(node.op_type() + " does not give " + std::to_string(outputs.size()) +
           " outputs");
}

}  // namespace kiv::ort
