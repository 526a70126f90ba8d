#include "attributes.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

#include "failure.h"
#include "tensors.h"

namespace kiv::ort {
namespace {

using onnx::AttributeProto;

[[noreturn]] void refuse(const std::string& why) {
  throw Failure(KIV_BACKEND_ERROR_INVALID_ARGUMENT, why);
}

// Splits "values_12" into "values" and 12; the index is -1 without one.
std::pair<std::string, int> splitIndex(const std::string& name) {
  const std::size_t line = name.rfind('_');
  if (line == name.npos || line + 1 == name.size() || name.size() - line > 8)
    return {name, -1};
  const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
  if (!std::all_of(name.begin() + static_cast<std::ptrdiff_t>(line) + 1,
                   name.end(), isDigit))
    return {name, -1};
  return {name.substr(0, line), std::stoi(name.substr(line + 1))};
}

bool isList(AttributeProto::AttributeType kind) {
  return kind == AttributeProto::STRINGS || kind == AttributeProto::TENSORS ||
         kind == AttributeProto::GRAPHS;
}

onnx::TensorProto tensorProto(const TensorFields& fields,
                              const ElementType& elements) {
  onnx::TensorProto proto;
  proto.set_data_type(elements.onnxType);
  for (const std::int64_t size : fields.dimensions) proto.add_dims(size);
  if (fields.buffer.data != nullptr)
    proto.set_raw_data(fields.buffer.data, fields.buffer.dataSize);
  return proto;
}

template <typename Element>
void fillList(const TensorFields& fields,
              google::protobuf::RepeatedField<Element>& list) {
  const std::size_t size = fields.buffer.data == nullptr
                               ? 0
                               : fields.buffer.dataSize / sizeof(Element);
  list.Resize(static_cast<int>(size), Element{});
  if (size > 0)
    std::memcpy(list.mutable_data(), fields.buffer.data,
                size * sizeof(Element));
}

// The kind of a tensor parameter that the schema does not know.
AttributeProto::AttributeType guess(const TensorFields& fields) {
  if (fields.dimensions.size() != 1) return AttributeProto::TENSOR;
  if (fields.dataType == KIV_DATA_TYPE_INT_64) return AttributeProto::INTS;
  if (fields.dataType == KIV_DATA_TYPE_FLOAT_32) return AttributeProto::FLOATS;
  return AttributeProto::TENSOR;
}

void setInt(AttributeProto& attribute, std::int64_t value) {
  attribute.set_type(AttributeProto::INT);
  attribute.set_i(value);
}

void setFloat(AttributeProto& attribute, float value) {
  attribute.set_type(AttributeProto::FLOAT);
  attribute.set_f(value);
}

}  // namespace

void AttributeReader::read(const Kiv_Param_t& param,
                           onnx::NodeProto& node) const {
  if (param.name == nullptr) refuse("a parameter has no name");
  const std::string name = param.name;
  if (readElement(param, name, node)) return;
  onnx::AttributeProto& attribute = *node.add_attribute();
  attribute.set_name(name);
  switch (param.paramType) {
    case KIV_PARAM_TYPE_SCALAR:
      return readScalar(param.scalarParam, attribute);
    case KIV_PARAM_TYPE_TENSOR:
      return readTensor(param.tensorParam, attribute);
    default:
      refuse("parameter " + name + " is neither scalar nor tensor");
  }
}

AttributeReader::Kind AttributeReader::kindOf(const std::string& name) const {
  if (schema_ == nullptr) return AttributeProto::UNDEFINED;
  const auto found = schema_->attributes().find(name);
  return found == schema_->attributes().end() ? AttributeProto::UNDEFINED
                                              : found->second.type;
}

// Returns whether the parameter is an element of a list.
bool AttributeReader::readElement(const Kiv_Param_t& param,
                                  const std::string& name,
                                  onnx::NodeProto& node) const {
  const auto [listName, index] = splitIndex(name);
  const Kind kind = kindOf(listName);
  if (index < 0 || !isList(kind)) return false;
  AttributeProto* list = nullptr;
  for (AttributeProto& attribute : *node.mutable_attribute())
    if (attribute.name() == listName) list = &attribute;
  if (list == nullptr) {
    list = node.add_attribute();
    list->set_name(listName);
    list->set_type(kind);
  }
  if (list->strings_size() + list->tensors_size() + list->graphs_size() !=
      index)
    refuse("parameter " + name + " is out of order");
  AttributeProto element;
  element.set_name(name);
  if (kind == AttributeProto::TENSORS &&
      param.paramType == KIV_PARAM_TYPE_TENSOR) {
    const TensorFields fields = readFields(param.tensorParam, name);
    *list->add_tensors() =
        tensorProto(fields, elementType(fields.dataType, describe(fields)));
  } else if (param.paramType == KIV_PARAM_TYPE_TENSOR) {
    const TensorFields fields = readFields(param.tensorParam, name);
    list->add_strings(fields.buffer.data, fields.buffer.dataSize);
  } else if (kind == AttributeProto::GRAPHS) {
    readScalar(param.scalarParam, element);
    *list->add_graphs() = std::move(*element.mutable_g());
  } else {
    readScalar(param.scalarParam, element);
    list->add_strings(element.s());
  }
  return true;
}

void AttributeReader::readScalar(const Kiv_Scalar_t& scalar,
                                 AttributeProto& attribute) const {
  switch (scalar.dataType) {
    case KIV_DATA_TYPE_FLOAT_32:
      return setFloat(attribute, scalar.floatValue);
    case KIV_DATA_TYPE_FLOAT_64:
      return setFloat(attribute, static_cast<float>(scalar.doubleValue));
    case KIV_DATA_TYPE_INT_8:
      return setInt(attribute, scalar.int8Value);
    case KIV_DATA_TYPE_INT_16:
      return setInt(attribute, scalar.int16Value);
    case KIV_DATA_TYPE_INT_32:
      return setInt(attribute, scalar.int32Value);
    case KIV_DATA_TYPE_INT_64:
      return setInt(attribute, scalar.int64Value);
    case KIV_DATA_TYPE_UINT_8:
      return setInt(attribute, scalar.uint8Value);
    case KIV_DATA_TYPE_UINT_16:
      return setInt(attribute, scalar.uint16Value);
    case KIV_DATA_TYPE_UINT_32:
      return setInt(attribute, scalar.uint32Value);
    case KIV_DATA_TYPE_UINT_64:
      return setInt(attribute, static_cast<std::int64_t>(scalar.uint64Value));
    case KIV_DATA_TYPE_BOOL_8:
      return setInt(attribute, scalar.bool8Value);
    case KIV_DATA_TYPE_STRING:
      return readText(scalar.stringValue, attribute);
    default:
      throw Failure(KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
                    "parameter " + attribute.name() +
                        " is of a type that no attribute has");
  }
}

void AttributeReader::readText(const char* text,
                               AttributeProto& attribute) const {
  if (text == nullptr) refuse("parameter " + attribute.name() + " has no text");
  const auto [listName, index] = splitIndex(attribute.name());
  const bool isGraph =
      schema_ == nullptr ? hasSubgraph_(text)
                         : kindOf(attribute.name()) == AttributeProto::GRAPH ||
                               kindOf(listName) == AttributeProto::GRAPHS;
  if (!isGraph) {
    attribute.set_type(AttributeProto::STRING);
    attribute.set_s(text);
    return;
  }
  if (!hasSubgraph_(text)) {
    refuse("parameter " + attribute.name() + " names the subgraph \"" + text +
           "\", which the graph does not have");
  }
  attribute.set_type(AttributeProto::GRAPH);
  attribute.mutable_g()->set_name(text);
}

void AttributeReader::readTensor(const Kiv_Tensor_t& record,
                                 AttributeProto& attribute) const {
  const TensorFields fields =
      readFields(record, "parameter " + attribute.name());
  const ElementType& elements =
      elementType(fields.dataType, "parameter " + attribute.name());
  checkBuffer(fields, elements);
  const bool isInt64 = fields.dataType == KIV_DATA_TYPE_INT_64;
  const bool isFloat = fields.dataType == KIV_DATA_TYPE_FLOAT_32;
  Kind kind = kindOf(attribute.name());
  if (kind == AttributeProto::UNDEFINED) kind = guess(fields);
  if (kind == AttributeProto::INTS && isInt64) {
    attribute.set_type(kind);
    fillList(fields, *attribute.mutable_ints());
  } else if (kind == AttributeProto::FLOATS && isFloat) {
    attribute.set_type(kind);
    fillList(fields, *attribute.mutable_floats());
  } else if (kind == AttributeProto::INT && isInt64 &&
             fields.buffer.dataSize == sizeof(std::int64_t)) {
    std::int64_t value = 0;
    std::memcpy(&value, fields.buffer.data, sizeof value);
    setInt(attribute, value);
  } else if (kind == AttributeProto::STRING &&
             fields.dataType == KIV_DATA_TYPE_UINT_8) {
    attribute.set_type(kind);
    attribute.set_s(fields.buffer.data, fields.buffer.dataSize);
  } else {
    attribute.set_type(AttributeProto::TENSOR);
    *attribute.mutable_t() = tensorProto(fields, elements);
  }
}

}  // namespace kiv::ort
