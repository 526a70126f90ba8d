#include "network_reader.h"

#include <google/protobuf/stubs/logging.h>

#include <filesystem>

#include "attributes.h"
#include "errors.h"
#include "external_data.h"
#include "files.h"
#include "graph_reader.h"
#include "shapes.h"

namespace onnx_client {
namespace {

onnx::ModelProto parseModel(const std::string& path) {
  const std::string bytes = readFile(path);
  google::protobuf::SetLogHandler(nullptr);  // the error below says it all
  onnx::ModelProto model;
  if (!model.ParseFromString(bytes))
    throw ClientError(path + " is not an ONNX network");
  return model;
}

// Files of the first versions name no operator set.
std::vector<OpSet> readOpSets(const onnx::ModelProto& model) {
  std::vector<OpSet> opSets;
  for (const onnx::OperatorSetIdProto& import : model.opset_import()) {
    const std::string& domain = import.domain();
    opSets.push_back({domain.empty() ? kDefaultPackage : checkedName(domain),
                      import.version()});
  }
  if (opSets.empty()) opSets.push_back({kDefaultPackage, 1});
  return opSets;
}

}  // namespace

Network readNetwork(const std::string& path, const GivenShapes& shapes) {
  onnx::ModelProto model = parseModel(path);
  if (!model.has_graph()) throw ClientError(path + " holds no graph");
  readExternalData(model, std::filesystem::path(path).parent_path());
  return readNetwork(model, shapes);
}

Network readNetwork(onnx::ModelProto& model, const GivenShapes& shapes) {
  if (model.functions_size() > 0)
    throw NotAccepted("the network defines functions of its own");
  Network network;
  network.opSets = readOpSets(model);
  const OpenShapes openShapes = settleShapes(model, shapes, network.notes);
  GraphReader(network, openShapes).readMain(model.graph());
  return network;
}

}  // namespace onnx_client
