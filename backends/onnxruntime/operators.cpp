#include "operators.h"

#include <onnx/defs/schema.h>

#include <algorithm>
#include <tuple>

#include "failure.h"
#include "onnx_model/nodes.h"

namespace kiv::ort {
namespace {

[[noreturn]] void refuseNode(const std::string& why) {
  throw Failure(KIV_BACKEND_ERROR_INVALID_ARGUMENT, why);
}

bool isTraining(const std::string& domain) {
  return domain.find("training") != std::string::npos;
}

std::string packageOf(const std::string& domain) {
  return domain.empty() ? std::string(onnx_model::kDefaultPackage) : domain;
}

void checkCount(const std::string& type, const std::string& what,
                std::uint32_t count, int least, int most) {
  if (count < static_cast<std::uint32_t>(least) ||
      count > static_cast<std::uint32_t>(most))
    refuseNode(type + " does not " + what);
}

}  // namespace

std::vector<OperatorName> knownOperators() {
  std::vector<OperatorName> names;
  for (const onnx::OpSchema& schema :
       onnx::OpSchemaRegistry::get_all_schemas()) {
    if (!isTraining(schema.domain()))
      names.push_back({packageOf(schema.domain()), schema.Name()});
  }
  std::sort(names.begin(), names.end(),
            [](const OperatorName& a, const OperatorName& b) {
              return std::tie(a.package, a.type) < std::tie(b.package, b.type);
            });
  return names;
}

void validateOperation(const onnx_model::Opsets& opsets,
                       const Kiv_OpConfig_t& config) {
  onnx::NodeProto node;
  throwIf(onnx_model::startNode(config, node));
  const Kiv_OpConfigV1_t& record = config.v1;
  const std::int64_t version = opsets.versionOf(node.domain());
  const onnx::OpSchema* schema = onnx::OpSchemaRegistry::Schema(
      node.op_type(), static_cast<int>(version), node.domain());
  if (schema == nullptr) {
    refuseNode("the package " + packageOf(node.domain()) + " has no operator " +
               node.op_type() + " in version " + std::to_string(version));
  }
  // Subgraphs are made with the graph, so none exists here.
  throwIf(onnx_model::addAttributes(
      record, version, [](const std::string&) { return true; },
      onnx_model::storeInline, node));
  checkCount(node.op_type(),
             "take " + std::to_string(record.numInputs) + " inputs",
             record.numInputs, schema->min_input(), schema->max_input());
  checkCount(node.op_type(),
             "give " + std::to_string(record.numOutputs) + " outputs",
             record.numOutputs, schema->min_output(), schema->max_output());
}

}  // namespace kiv::ort
