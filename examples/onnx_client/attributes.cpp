#include "attributes.h"

#include <cstring>
#include <limits>
#include <utility>

#include "errors.h"
#include "tensor_data.h"

namespace onnx_client {
namespace {

using onnx::AttributeProto;

template <typename Elements>
Tensor listTensor(Kiv_DataType_t dataType, const Elements& elements) {
  Tensor tensor;
  tensor.type = KIV_TENSOR_TYPE_STATIC;
  tensor.dataType = dataType;
  const auto count = static_cast<std::size_t>(elements.size());
  tensor.shape.known = true;
  tensor.shape.dimensions = {static_cast<std::uint32_t>(count)};
  tensor.data.resize(count * elementSize(dataType));
  if (count > 0)
    std::memcpy(tensor.data.data(), elements.data(), tensor.data.size());
  return tensor;
}

Parameter intParameter(const std::string& name, std::int64_t value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    return {name, listTensor(KIV_DATA_TYPE_INT_64, std::vector{value})};
  }
  return {name, static_cast<std::int32_t>(value)};
}

Parameter stringParameter(const std::string& name, const std::string& value) {
  if (value.find('\0') != std::string::npos) {
    return {name, listTensor(KIV_DATA_TYPE_UINT_8, value)};
  }
  return {name, value};
}

// Files of the first versions leave the type out.
AttributeProto::AttributeType typeOf(const AttributeProto& attribute) {
  if (attribute.has_type()) return attribute.type();
  if (attribute.has_f()) return AttributeProto::FLOAT;
  if (attribute.has_i()) return AttributeProto::INT;
  if (attribute.has_s()) return AttributeProto::STRING;
  if (attribute.has_t()) return AttributeProto::TENSOR;
  if (attribute.has_g()) return AttributeProto::GRAPH;
  if (attribute.floats_size() > 0) return AttributeProto::FLOATS;
  if (attribute.ints_size() > 0) return AttributeProto::INTS;
  if (attribute.strings_size() > 0) return AttributeProto::STRINGS;
  return AttributeProto::UNDEFINED;
}

class AttributeReader {
 public:
  explicit AttributeReader(const SubgraphReader& readSubgraph)
      : readSubgraph_(readSubgraph) {}

  void read(const AttributeProto& attribute);
  std::vector<Parameter> take() { return std::move(parameters_); }

 private:
  void add(Parameter parameter) { parameters_.push_back(std::move(parameter)); }

  template <typename Elements, typename Make>
  void addEach(const std::string& name, const Elements& elements, Make make) {
    int index = 0;
    for (const auto& element : elements)
      add(make(name + "_" + std::to_string(index++), element));
  }

  Parameter graph(const std::string& name, const onnx::GraphProto& proto) {
    return {name, readSubgraph_(proto, name)};
  }

  static Parameter tensor(const std::string& name,
                          const onnx::TensorProto& proto) {
    return {name, readTensor(proto, name)};
  }

  const SubgraphReader& readSubgraph_;
  std::vector<Parameter> parameters_;
};

void AttributeReader::read(const AttributeProto& attribute) {
  const std::string& name = checkedName(attribute.name());
  if (!attribute.ref_attr_name().empty())
    throw NotAccepted("attribute " + name + " refers to a function's");
  const auto readGraph = [this](const std::string& parameter,
                                const onnx::GraphProto& proto) {
    return graph(parameter, proto);
  };
  switch (typeOf(attribute)) {
    case AttributeProto::FLOAT:
      return add({name, attribute.f()});
    case AttributeProto::INT:
      return add(intParameter(name, attribute.i()));
    case AttributeProto::STRING:
      return add(stringParameter(name, attribute.s()));
    case AttributeProto::TENSOR:
      return add(tensor(name, attribute.t()));
    case AttributeProto::GRAPH:
      return add(graph(name, attribute.g()));
    case AttributeProto::FLOATS:
      return add(
          {name, listTensor(KIV_DATA_TYPE_FLOAT_32, attribute.floats())});
    case AttributeProto::INTS:
      return add({name, listTensor(KIV_DATA_TYPE_INT_64, attribute.ints())});
    case AttributeProto::STRINGS:
      return addEach(name, attribute.strings(), stringParameter);
    case AttributeProto::TENSORS:
      return addEach(name, attribute.tensors(), tensor);
    case AttributeProto::GRAPHS:
      return addEach(name, attribute.graphs(), readGraph);
    default:
      throw NotAccepted("attribute " + name + " is of a kind without a match");
  }
}

// Names tensors among the parameters after their node and parameter, so that
// names differ.
void nameTensors(const std::string& node, std::vector<Parameter>& parameters) {
  for (Parameter& parameter : parameters) {
    if (Tensor* tensor = std::get_if<Tensor>(&parameter.value))
      tensor->name = node + "_" + parameter.name;
  }
}

}  // namespace

const std::string& checkedName(const std::string& name) {
  if (name.find('\0') != std::string::npos)
    throw ClientError("a name in the network holds a NUL character");
  return name;
}

std::vector<Parameter> readAttributes(const onnx::NodeProto& node,
                                      const std::string& nodeName,
                                      const SubgraphReader& readSubgraph) {
  AttributeReader reader(readSubgraph);
  for (const AttributeProto& attribute : node.attribute())
    reader.read(attribute);
  std::vector<Parameter> parameters = reader.take();
  nameTensors(nodeName, parameters);
  return parameters;
}

}  // namespace onnx_client
