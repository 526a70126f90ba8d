#pragma once

// Turns an ONNX graph, and the graphs in its nodes' attributes, into Graph.

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "network.h"
#include "shapes.h"

namespace onnx_client {

// Hands out names that differ from one another.
class UniqueNames {
 public:
  // `base` itself, or with the first free number behind it.
  std::string make(const std::string& base);

 private:
  std::unordered_set<std::string> taken_;
  std::unordered_map<std::string, std::size_t> next_;
};

class GraphReader {
 public:
  GraphReader(Network& network, const OpenShapes& openShapes)
      : network_(network), openShapes_(openShapes) {}

  // Fills network.graph; the sizes of its inputs and outputs must be known.
  void readMain(const onnx::GraphProto& proto);

 private:
  // The values that a graph's nodes may use, by their ONNX names.
  struct Scope {
    const onnx::GraphProto& proto;
    const Scope* outer;
    Graph& graph;
    ValueTypes types;
    std::unordered_map<std::string, TensorIndex> values;
    std::unordered_set<std::string> outputs;
  };

  void read(const onnx::GraphProto& proto, const Scope* outer, Graph& graph);
  void readInitializers(Scope& scope);
  void readInputs(Scope& scope);
  void readNodes(Scope& scope);
  void readOutputs(Scope& scope);
  void readSubgraphOutputs(Scope& scope);
  TensorIndex addCopy(Graph& graph, TensorIndex source);
  Node readNode(const onnx::NodeProto& proto, Scope& scope);
  std::unique_ptr<Graph> readSubgraph(const onnx::GraphProto& proto,
                                      const std::string& name,
                                      const Scope& outer);

  // Adds a tensor to the scope's graph under an ONNX name.
  TensorIndex declare(Scope& scope, const std::string& value, Tensor tensor);
  TensorIndex declareValue(Scope& scope, const std::string& value,
                           Kiv_TensorType_t type);
  TensorIndex lookUp(const Scope& scope, const std::string& value);
  void settleMainTensor(TensorIndex index);

  Network& network_;
  const OpenShapes& openShapes_;
  UniqueNames tensorNames_;
  UniqueNames nodeNames_;
  UniqueNames graphNames_;
};

}  // namespace onnx_client
