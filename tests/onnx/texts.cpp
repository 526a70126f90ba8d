#include "texts.h"

#include <onnx/defs/parser.h>

#include <array>
#include <sstream>

namespace onnx_client {
namespace {

std::string namesOf(const Network& network,
                    const std::vector<TensorIndex>& indices) {
  std::string names;
  for (const TensorIndex index : indices) {
    if (!names.empty()) names += ", ";
    names += index == kAbsent ? "-" : network.tensors.at(index).name;
  }
  return names;
}

std::string textOf(float value) { return std::to_string(value); }
std::string textOf(int32_t value) { return std::to_string(value); }
std::string textOf(const std::string& value) { return '"' + value + '"'; }
std::string textOf(const std::unique_ptr<Graph>& graph) { return graph->name; }

}  // namespace

onnx::ModelProto modelOf(const std::string& graph) {
  onnx::ModelProto model;
  const auto text = R"(<ir_version: 7, opset_import: ["" : 13]> )" + graph;
  const auto status = onnx::OnnxParser::Parse(model, text.c_str());
  if (!status.IsOK()) throw std::invalid_argument(status.ErrorMessage());
  return model;
}

std::string textOf(const Tensor& tensor) {
  std::ostringstream text;
  text << tensor.name << (tensor.shared ? "* " : " ") << std::hex
       << tensor.dataType << std::dec << '[';
  for (std::size_t i = 0; i < tensor.shape.dimensions.size(); ++i) {
    const auto& dynamic = tensor.shape.dynamic;
    text << (i == 0 ? "" : ",") << tensor.shape.dimensions[i]
         << (!dynamic.empty() && dynamic.at(i) != 0 ? "?" : "");
  }
  text << ']' << (tensor.data.empty() ? "" : " ");
  for (const uint8_t byte : tensor.data) {
    text << "0123456789abcdef"[byte >> 4] << "0123456789abcdef"[byte & 15];
  }
  return text.str();
}

std::string textOf(const Parameter& parameter) {
  return parameter.name + "=" +
         std::visit([](const auto& value) { return textOf(value); },
                    parameter.value);
}

std::string textOf(const Network& network, const Graph& graph) {
  constexpr std::array kKinds = {"input",  "output", "both",
                                 "native", "static", "null"};
  std::string text = graph.name + ": " + namesOf(network, graph.inputs) +
                     " -> " + namesOf(network, graph.outputs) + "\n";
  for (const TensorIndex index : graph.tensors) {
    const Tensor& tensor = network.tensors.at(index);
    text += std::string(kKinds.at(tensor.type)) + " " + textOf(tensor) + "\n";
  }
  for (const Node& node : graph.nodes) {
    std::string parameters;
    for (const Parameter& parameter : node.parameters) {
      parameters += ' ' + textOf(parameter);
      const auto* below = std::get_if<std::unique_ptr<Graph>>(&parameter.value);
      if (below != nullptr) text += textOf(network, **below);
    }
    text += node.name + ": " + namesOf(network, node.outputs) + " = " +
            node.package + "." + node.type + parameters + " (" +
            namesOf(network, node.inputs) + ")\n";
  }
  return text;
}

}  // namespace onnx_client
