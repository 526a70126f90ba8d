#include "onnx_model/nodes.h"

#include <onnx/defs/schema.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "onnx_model/opsets.h"

namespace kiv::onnx_model {
namespace {

using onnx::AttributeProto;
using Kind = onnx::AttributeProto::AttributeType;

Fault invalid(const std::string& why) {
  return {KIV_BACKEND_ERROR_INVALID_ARGUMENT, why};
}

Fault invalid(const Kiv_Param_t& param, const std::string& why) {
  return invalid("parameter " + std::string(param.name) + " " + why);
}

const Kiv_TensorV1_t* staticTensor(const Kiv_Param_t& param) {
  if (param.paramType != KIV_PARAM_TYPE_TENSOR) return nullptr;
  return &param.tensorParam.v1;
}

template <typename Type>
std::vector<Type> elementsOf(const Kiv_TensorV1_t& tensor) {
  const auto bytes = bytesOf(tensor);
  std::vector<Type> elements(bytes.size() / sizeof(Type));
  if (!elements.empty())
    std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(Type));
  return elements;
}

std::optional<std::int64_t> integerOf(const Kiv_Scalar_t& scalar) {
  switch (scalar.dataType) {
    case KIV_DATA_TYPE_INT_8:
      return scalar.int8Value;
    case KIV_DATA_TYPE_INT_16:
      return scalar.int16Value;
    case KIV_DATA_TYPE_INT_32:
      return scalar.int32Value;
    case KIV_DATA_TYPE_INT_64:
      return scalar.int64Value;
    case KIV_DATA_TYPE_UINT_8:
    case KIV_DATA_TYPE_BOOL_8:
      return scalar.uint8Value;
    case KIV_DATA_TYPE_UINT_16:
      return scalar.uint16Value;
    case KIV_DATA_TYPE_UINT_32:
      return scalar.uint32Value;
    case KIV_DATA_TYPE_UINT_64:
      return static_cast<std::int64_t>(scalar.uint64Value);
    default:
      return std::nullopt;
  }
}

std::optional<float> floatOf(const Kiv_Scalar_t& scalar) {
  if (scalar.dataType == KIV_DATA_TYPE_FLOAT_32) return scalar.floatValue;
  if (scalar.dataType == KIV_DATA_TYPE_FLOAT_64)
    return static_cast<float>(scalar.doubleValue);
  if (const auto integer = integerOf(scalar))
    return static_cast<float>(*integer);
  return std::nullopt;
}

// A text that holds NUL travels as a tensor of bytes.
std::optional<std::string> textOf(const Kiv_Param_t& param) {
  if (const Kiv_TensorV1_t* tensor = staticTensor(param)) {
    if (tensor->dataType != KIV_DATA_TYPE_UINT_8) return std::nullopt;
    const auto bytes = bytesOf(*tensor);
    return std::string(reinterpret_cast<const char*>(bytes.data()),
                       bytes.size());
  }
  if (param.scalarParam.dataType != KIV_DATA_TYPE_STRING ||
      param.scalarParam.stringValue == nullptr)
    return std::nullopt;
  return param.scalarParam.stringValue;
}

// Without a schema.
Kind kindByValue(const Kiv_Param_t& param, const HasSubgraph& hasSubgraph) {
  if (const Kiv_TensorV1_t* tensor = staticTensor(param)) {
    if (tensor->rank != 1) return AttributeProto::TENSOR;
    if (tensor->dataType == KIV_DATA_TYPE_INT_64) return AttributeProto::INTS;
    if (tensor->dataType == KIV_DATA_TYPE_FLOAT_32)
      return AttributeProto::FLOATS;
    return AttributeProto::TENSOR;
  }
  const Kiv_DataType_t type = param.scalarParam.dataType;
  if (type == KIV_DATA_TYPE_STRING) {
    const char* const text = param.scalarParam.stringValue;
    return text != nullptr && hasSubgraph(text) ? AttributeProto::GRAPH
                                                : AttributeProto::STRING;
  }
  if (type == KIV_DATA_TYPE_FLOAT_32 || type == KIV_DATA_TYPE_FLOAT_64)
    return AttributeProto::FLOAT;
  return AttributeProto::INT;
}

bool isListByElements(Kind kind) {
  return kind == AttributeProto::STRINGS || kind == AttributeProto::TENSORS ||
         kind == AttributeProto::GRAPHS;
}

// "value_strings" of "value_strings_2"; the name itself without a number.
std::string listName(const std::string& name) {
  const std::size_t end = name.find_last_not_of("0123456789");
  if (end == std::string::npos || end + 1 == name.size() || name[end] != '_')
    return name;
  return name.substr(0, end);
}

struct Attribute {
  std::string name;
  Kind kind;
};

Attribute attributeOf(const onnx::OpSchema* schema, const Kiv_Param_t& param,
                      const HasSubgraph& hasSubgraph) {
  const std::string name = param.name;
  if (schema != nullptr) {
    const auto& known = schema->attributes();
    if (const auto own = known.find(name); own != known.end())
      return {name, own->second.type};
    const auto list = known.find(listName(name));
    if (list != known.end() && isListByElements(list->second.type))
      return {list->first, list->second.type};
  }
  return {name, kindByValue(param, hasSubgraph)};
}

AttributeProto& attributeNamed(onnx::NodeProto& node,
                               const Attribute& attribute) {
  for (AttributeProto& existing : *node.mutable_attribute())
    if (existing.name() == attribute.name) return existing;
  AttributeProto& added = *node.add_attribute();
  added.set_name(attribute.name);
  added.set_type(attribute.kind);
  return added;
}

// ---- one function a kind; false for a value that does not do ----

bool setFloat(const Kiv_Param_t& param, AttributeProto& attribute) {
  if (staticTensor(param) != nullptr) return false;
  const auto value = floatOf(param.scalarParam);
  if (value) attribute.set_f(*value);
  return value.has_value();
}

// An integer beyond 32 bits travels as a tensor of one element.
bool setInt(const Kiv_Param_t& param, AttributeProto& attribute) {
  if (const Kiv_TensorV1_t* tensor = staticTensor(param)) {
    const auto values = elementsOf<std::int64_t>(*tensor);
    if (tensor->dataType != KIV_DATA_TYPE_INT_64 || values.size() != 1)
      return false;
    attribute.set_i(values.front());
    return true;
  }
  const auto value = integerOf(param.scalarParam);
  if (value) attribute.set_i(*value);
  return value.has_value();
}

bool setInts(const Kiv_Param_t& param, AttributeProto& attribute) {
  const Kiv_TensorV1_t* tensor = staticTensor(param);
  if (tensor == nullptr) return false;
  if (tensor->dataType == KIV_DATA_TYPE_INT_64)
    for (const std::int64_t value : elementsOf<std::int64_t>(*tensor))
      attribute.add_ints(value);
  else if (tensor->dataType == KIV_DATA_TYPE_INT_32)
    for (const std::int32_t value : elementsOf<std::int32_t>(*tensor))
      attribute.add_ints(value);
  else
    return false;
  return true;
}

bool setFloats(const Kiv_Param_t& param, AttributeProto& attribute) {
  const Kiv_TensorV1_t* tensor = staticTensor(param);
  if (tensor == nullptr || tensor->dataType != KIV_DATA_TYPE_FLOAT_32)
    return false;
  for (const float value : elementsOf<float>(*tensor))
    attribute.add_floats(value);
  return true;
}

bool setText(const Kiv_Param_t& param, std::string* text) {
  const auto value = textOf(param);
  if (value) *text = *value;
  return value.has_value();
}

bool setPlain(const Kiv_Param_t& param, AttributeProto& attribute) {
  switch (attribute.type()) {
    case AttributeProto::FLOAT:
      return setFloat(param, attribute);
    case AttributeProto::INT:
      return setInt(param, attribute);
    case AttributeProto::STRING:
      return setText(param, attribute.mutable_s());
    case AttributeProto::FLOATS:
      return setFloats(param, attribute);
    case AttributeProto::INTS:
      return setInts(param, attribute);
    case AttributeProto::STRINGS:
      return setText(param, attribute.add_strings());
    case AttributeProto::GRAPH:
      return setText(param, attribute.mutable_g()->mutable_name());
    case AttributeProto::GRAPHS:
      return setText(param, attribute.add_graphs()->mutable_name());
    default:
      return false;
  }
}

// Nothing for a value that is not of the attribute's kind.
std::optional<Fault> setValue(const Kiv_Param_t& param, const DataSink& sink,
                              AttributeProto& attribute, bool& isDone) {
  isDone = true;
  switch (attribute.type()) {
    case AttributeProto::TENSOR:
      if (staticTensor(param) != nullptr)
        return tensorProtoOf(param.tensorParam, "", *attribute.mutable_t(),
                             sink);
      break;
    case AttributeProto::TENSORS:
      if (staticTensor(param) != nullptr)
        return tensorProtoOf(param.tensorParam, "", *attribute.add_tensors());
      break;
    default:
      isDone = setPlain(param, attribute);
      return std::nullopt;
  }
  isDone = false;
  return std::nullopt;
}

std::optional<Fault> checkSubgraph(const Kiv_Param_t& param,
                                   const AttributeProto& attribute,
                                   const HasSubgraph& hasSubgraph) {
  const onnx::GraphProto* graph = nullptr;
  if (attribute.type() == AttributeProto::GRAPH) graph = &attribute.g();
  if (attribute.type() == AttributeProto::GRAPHS)
    graph = &attribute.graphs(attribute.graphs_size() - 1);
  if (graph == nullptr || hasSubgraph(graph->name())) return std::nullopt;
  return invalid(param, "names the subgraph " + graph->name() +
                            ", which the graph does not have");
}

int elementsIn(const AttributeProto& list) {
  return list.strings_size() + list.tensors_size() + list.graphs_size();
}

// The elements of a list are named NAME_0, NAME_1 and so on.
bool isInOrder(const Kiv_Param_t& param, const AttributeProto& attribute) {
  return attribute.name() == param.name ||
         attribute.name() + "_" + std::to_string(elementsIn(attribute)) ==
             param.name;
}

std::optional<Fault> checkParameter(const Kiv_Param_t& param) {
  if (param.name == nullptr) return invalid("a parameter has no name");
  if (param.paramType == KIV_PARAM_TYPE_SCALAR) return std::nullopt;
  if (param.paramType != KIV_PARAM_TYPE_TENSOR)
    return invalid(param, "is neither a scalar nor a tensor");
  auto fault = checkRecord(param.tensorParam);
  if (!fault) fault = checkData(param.tensorParam);
  if (fault)
    fault->message =
        "parameter " + std::string(param.name) + ": " + fault->message;
  return fault;
}

// A recording without the version of its operators may not fit the schema that
// is taken; the value alone decides then.
std::optional<Fault> addAttribute(const Kiv_Param_t& param,
                                  const onnx::OpSchema* schema,
                                  const HasSubgraph& hasSubgraph,
                                  const DataSink& sink, onnx::NodeProto& node) {
  AttributeProto& attribute =
      attributeNamed(node, attributeOf(schema, param, hasSubgraph));
  if (!isInOrder(param, attribute)) return invalid(param, "is out of order");
  bool isDone = false;
  if (auto fault = setValue(param, sink, attribute, isDone)) return fault;
  if (!isDone && !isListByElements(attribute.type())) {
    attribute.Clear();
    attribute.set_name(param.name);
    attribute.set_type(kindByValue(param, hasSubgraph));
    if (auto fault = setValue(param, sink, attribute, isDone)) return fault;
  }
  if (!isDone) return invalid(param, "is of a type that no attribute has");
  return checkSubgraph(param, attribute, hasSubgraph);
}

bool hasLists(const Kiv_OpConfigV1_t& config) {
  return (config.params != nullptr || config.numParams == 0) &&
         (config.inputTensors != nullptr || config.numInputs == 0) &&
         (config.outputTensors != nullptr || config.numOutputs == 0);
}

}  // namespace

std::optional<Fault> startNode(const Kiv_OpConfig_t& config,
                               onnx::NodeProto& node) {
  if (config.version != KIV_OP_CONFIG_VERSION_1)
    return Fault{KIV_COMMON_ERROR_NOT_SUPPORTED,
                 "the operation's record is of version " +
                     std::to_string(config.version) + "; version 1 is taken"};
  const Kiv_OpConfigV1_t& record = config.v1;
  if (record.typeName == nullptr) return invalid("the operation has no type");
  if (!hasLists(record))
    return invalid("a list of the operation is null, its count is not");
  if (record.name != nullptr) node.set_name(record.name);
  node.set_op_type(record.typeName);
  if (record.packageName != nullptr)
    node.set_domain(domainOf(record.packageName));
  return std::nullopt;
}

std::optional<Fault> addAttributes(const Kiv_OpConfigV1_t& config,
                                   std::int64_t version,
                                   const HasSubgraph& hasSubgraph,
                                   const DataSink& sink,
                                   onnx::NodeProto& node) {
  const bool isConstant = node.domain().empty() && node.op_type() == "Constant";
  const onnx::OpSchema* const schema = onnx::OpSchemaRegistry::Schema(
      node.op_type(), static_cast<int>(version), node.domain());
  for (std::uint32_t i = 0; i < config.numParams; ++i) {
    const Kiv_Param_t& param = config.params[i];
    if (auto fault = checkParameter(param)) return fault;
    if (auto fault = addAttribute(param, schema, hasSubgraph,
                                  isConstant ? sink : storeInline, node))
      return fault;
  }
  return std::nullopt;
}

}  // namespace kiv::onnx_model
