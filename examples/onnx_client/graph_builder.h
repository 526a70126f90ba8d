#pragma once

// Builds a network in a context: its tensors, subgraphs and nodes.

#include <cstdint>
#include <string>
#include <vector>

#include "library_loader.h"
#include "network.h"
#include "progress.h"

namespace onnx_client {

// Amounts that were handed to the library, subgraphs included.
struct Totals {
  std::uint64_t nodes = 0;
  std::uint64_t tensors = 0;
  // Bytes of tensor data.
  std::uint64_t bytes = 0;
};

class GraphBuilder {
 public:
  GraphBuilder(const Api& api, Kiv_ContextHandle_t context, Network& network,
               Totals& totals)
      : api_(api), context_(context), network_(network), totals_(totals) {}

  // Creates the graph's tensors, then adds its nodes. Tensors that a subgraph
  // uses too are created in the context.
  void build(Graph& graph, Kiv_GraphHandle_t handle);

 private:
  void createTensor(Tensor& tensor, Kiv_GraphHandle_t graph);
  void addNode(Node& node, Kiv_GraphHandle_t graph);
  void buildSubgraphs(Node& node, Kiv_GraphHandle_t graph);
  std::vector<Kiv_Tensor_t> tensorRecords(
      const std::vector<TensorIndex>& indices);
  std::vector<Kiv_Param_t> paramRecords(std::vector<Parameter>& parameters);

  const Api& api_;
  Kiv_ContextHandle_t context_;
  Network& network_;
  Totals& totals_;
  Progress progress_;
};

}  // namespace onnx_client
