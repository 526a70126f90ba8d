#include "network.h"

#include <functional>
#include <numeric>

namespace reading_client {
namespace {

std::size_t countOf(const Sizes& sizes) {
  return std::accumulate(sizes.begin(), sizes.end(), std::size_t{1},
                         std::multiplies<>());
}

// The record points into the value.
Kiv_Tensor_t recordOf(const Value& value, const void* data = nullptr,
                      std::size_t size = 0) {
  Kiv_Tensor_t record{};
  record.version = KIV_TENSOR_VERSION_1;
  record.v1.id = value.id;
  record.v1.name = value.name.c_str();
  record.v1.type = value.type;
  record.v1.dataFormat = KIV_TENSOR_DATA_FORMAT_DENSE;
  record.v1.dataType = value.dataType;
  record.v1.quantizeParams.encodingDefinition = KIV_DEFINITION_UNDEFINED;
  record.v1.quantizeParams.quantizationEncoding =
      KIV_QUANTIZATION_ENCODING_UNDEFINED;
  record.v1.rank = static_cast<std::uint32_t>(value.sizes.size());
  record.v1.dimensions = const_cast<std::uint32_t*>(value.sizes.data());
  record.v1.memType = KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER;
  record.v1.clientBuf = {const_cast<void*>(data),
                         static_cast<std::uint32_t>(size)};
  return record;
}

std::vector<Kiv_Tensor_t> recordsOf(const std::vector<Value>& values) {
  std::vector<Kiv_Tensor_t> records;
  records.reserve(values.size());
  for (const Value& value : values) records.push_back(recordOf(value));
  return records;
}

std::vector<Kiv_Tensor_t> recordsOf(const std::vector<Value>& values,
                                    std::vector<Floats>& data) {
  std::vector<Kiv_Tensor_t> records;
  records.reserve(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    records.push_back(
        recordOf(values[i], data.at(i).data(), data[i].size() * sizeof(float)));
  return records;
}

// A list is a static tensor, described by `list`.
Kiv_Param_t paramOf(const Attribute& attribute, Value& list) {
  Kiv_Param_t param{};
  param.name = attribute.name;
  if (const auto* number = std::get_if<std::int32_t>(&attribute.value)) {
    param.paramType = KIV_PARAM_TYPE_SCALAR;
    param.scalarParam.dataType = KIV_DATA_TYPE_INT_32;
    param.scalarParam.int32Value = *number;
    return param;
  }
  const auto& numbers = std::get<std::vector<std::int64_t>>(attribute.value);
  list.name = attribute.name;
  list.type = KIV_TENSOR_TYPE_STATIC;
  list.dataType = KIV_DATA_TYPE_INT_64;
  list.sizes = {static_cast<std::uint32_t>(numbers.size())};
  param.paramType = KIV_PARAM_TYPE_TENSOR;
  param.tensorParam =
      recordOf(list, numbers.data(), numbers.size() * sizeof(std::int64_t));
  return param;
}

}  // namespace

Network::Network(const Session& session, const char* name)
    : api_(session.api()) {
  check("graphCreate",
        api_.graphCreate(session.context(), name, nullptr, &graph_));
}

// The library gives the tensor its id.
Value Network::create(Value value, void* data, std::size_t size) {
  Kiv_Tensor_t record = recordOf(value, data, size);
  check("tensorCreateGraphTensor",
        api_.tensorCreateGraphTensor(graph_, &record));
  value.id = record.v1.id;
  return value;
}

Value Network::input(std::string name, Sizes sizes) {
  inputs_.push_back(create({0, std::move(name), KIV_TENSOR_TYPE_INPUT,
                            KIV_DATA_TYPE_FLOAT_32, std::move(sizes)},
                           nullptr, 0));
  return inputs_.back();
}

Value Network::weight(std::string name, Sizes sizes, Floats data) {
  return create({0, std::move(name), KIV_TENSOR_TYPE_STATIC,
                 KIV_DATA_TYPE_FLOAT_32, std::move(sizes)},
                data.data(), data.size() * sizeof(float));
}

Value Network::weight(std::string name, std::vector<std::int64_t> data) {
  return create({0,
                 std::move(name),
                 KIV_TENSOR_TYPE_STATIC,
                 KIV_DATA_TYPE_INT_64,
                 {static_cast<std::uint32_t>(data.size())}},
                data.data(), data.size() * sizeof(std::int64_t));
}

Value Network::node(const char* type, const std::vector<Value>& inputs,
                    std::string name, Sizes sizes,
                    const std::vector<Attribute>& attributes) {
  Value result = create({0, std::move(name), KIV_TENSOR_TYPE_NATIVE,
                         KIV_DATA_TYPE_FLOAT_32, std::move(sizes)},
                        nullptr, 0);
  add(type, inputs, result, attributes);
  return result;
}

Value Network::outputNode(const char* type, const std::vector<Value>& inputs,
                          std::string name, Sizes sizes,
                          const std::vector<Attribute>& attributes) {
  outputs_.push_back(create({0, std::move(name), KIV_TENSOR_TYPE_OUTPUT,
                             KIV_DATA_TYPE_FLOAT_32, std::move(sizes)},
                            nullptr, 0));
  add(type, inputs, outputs_.back(), attributes);
  return outputs_.back();
}

void Network::add(const char* type, const std::vector<Value>& inputs,
                  const Value& output,
                  const std::vector<Attribute>& attributes) {
  std::vector<Kiv_Tensor_t> operands = recordsOf(inputs);
  Kiv_Tensor_t result = recordOf(output);
  std::vector<Value> lists(attributes.size());
  std::vector<Kiv_Param_t> params;
  params.reserve(attributes.size());
  for (std::size_t i = 0; i < attributes.size(); ++i)
    params.push_back(paramOf(attributes[i], lists[i]));
  Kiv_OpConfig_t config{};
  config.version = KIV_OP_CONFIG_VERSION_1;
  config.v1.name = output.name.c_str();
  config.v1.packageName = "ai.onnx";
  config.v1.typeName = type;
  config.v1.numParams = static_cast<std::uint32_t>(params.size());
  config.v1.params = params.data();
  config.v1.numInputs = static_cast<std::uint32_t>(operands.size());
  config.v1.inputTensors = operands.data();
  config.v1.numOutputs = 1;
  config.v1.outputTensors = &result;
  check("graphAddNode", api_.graphAddNode(graph_, config));
}

void Network::finalize() {
  check("graphFinalize", api_.graphFinalize(graph_, nullptr, nullptr));
}

std::vector<Floats> Network::execute(std::vector<Floats> inputs) const {
  std::vector<Floats> outputs;
  outputs.reserve(outputs_.size());
  for (const Value& output : outputs_)
    outputs.emplace_back(countOf(output.sizes));
  const std::vector<Kiv_Tensor_t> in = recordsOf(inputs_, inputs);
  std::vector<Kiv_Tensor_t> out = recordsOf(outputs_, outputs);
  check("graphExecute",
        api_.graphExecute(graph_, in.data(),
                          static_cast<std::uint32_t>(in.size()), out.data(),
                          static_cast<std::uint32_t>(out.size()), nullptr,
                          nullptr));
  return outputs;
}

}  // namespace reading_client
