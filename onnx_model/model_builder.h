#pragma once

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "KivInterface.h"
#include "onnx_model/opsets.h"
#include "onnx_model/tensors.h"

// An ONNX model from the calls that describe a network of ONNX operators to the
// Kiv API: the inverse of what examples/onnx_client does.
//
//   ModelBuilder builder;
//   builder.opsets().readOption("onnx.opset:13");
//   const GraphIndex graph = builder.addGraph("main");
//   builder.addTensor(graph, tensor);        // with an id of its own
//   builder.addNode(graph, opConfig);
//   const onnx::ModelProto model = builder.build(graph);
//
// One builder serves one context. Records are read during the call only. One
// thread at a time.
namespace kiv::onnx_model {

// The graph's number in its builder, from 0 in the order of creation.
using GraphIndex = std::size_t;

class ModelBuilder {
 public:
  explicit ModelBuilder(DataSink sink = storeInline) : sink_(std::move(sink)) {}

  // The versions of operators, to be set before the first node.
  Opsets& opsets() { return opsets_; }

  GraphIndex addGraph(std::string name);
  // A graph that a node of `parent` names in one of its parameters.
  GraphIndex addSubgraph(GraphIndex parent, std::string name);

  // The record's id must differ from all that were added before, and a static
  // tensor's data must be as large as its dimensions say. Inputs and outputs of
  // a graph are in the order of their creation. A tensor of the context that is
  // an input belongs to the graph that was created last.
  std::optional<Fault> addTensor(GraphIndex graph, const Kiv_Tensor_t& tensor);
  std::optional<Fault> addContextTensor(const Kiv_Tensor_t& tensor);

  // The node's tensors are the graph's or the context's, its subgraphs the
  // graph's. nodes.h says what parameters become.
  std::optional<Fault> addNode(GraphIndex graph, const Kiv_OpConfig_t& config);

  // The model of a graph with its subgraphs, copied out of the builder.
  onnx::ModelProto build(GraphIndex graph) const;

  // The value's name in the model: the tensor's, which gets its id behind it
  // if it is taken. Empty for an unknown id. The documentation of inputs and
  // outputs is the tensor's own name.
  std::string_view nameOf(std::uint32_t id) const;
  // The tensor of a value in the model; nothing for an unknown name.
  std::optional<std::uint32_t> idOf(std::string_view name) const;

  // The types and shapes of the graph's tensors that are neither static nor
  // inputs nor outputs, which the model leaves out: a shape without dimensions
  // may be one that the client does not know.
  std::vector<onnx::ValueInfoProto> intermediatesOf(GraphIndex graph) const;

  // Warnings for a person, a line each: domains whose version nobody gave.
  const std::vector<std::string>& warnings() const { return warnings_; }

 private:
  // A tensor as a value of the model.
  struct Value {
    std::string name;
    Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
    // The description of a tensor that is not static.
    onnx::ValueInfoProto info;
    // The static tensor.
    std::unique_ptr<onnx::TensorProto> initializer;
    // The graph that it was created in, or that was the last one then.
    std::optional<GraphIndex> graph;
    bool isOfContext = false;
    // Graphs whose nodes write and read it; several share tensors of the
    // context.
    std::set<GraphIndex> writers;
    std::set<GraphIndex> readers;
  };
  struct Graph {
    std::string name;
    std::optional<GraphIndex> parent;
    // In order. Their attributes name subgraphs until the model is built.
    std::vector<onnx::NodeProto> nodes;
  };

  using ValuesByHome = std::map<GraphIndex, std::vector<const Value*>>;

  std::optional<Fault> add(const Kiv_Tensor_t& tensor,
                           std::optional<GraphIndex> graph, bool isOfContext);
  std::string uniqueName(const Kiv_TensorV1_t& tensor) const;
  std::int64_t versionOf(const std::string& domain);
  std::optional<Fault> findValues(GraphIndex graph,
                                  std::span<const Kiv_Tensor_t> tensors,
                                  std::vector<Value*>& values) const;
  GraphIndex rootOf(GraphIndex graph) const;
  std::optional<GraphIndex> homeOf(const Value& value, GraphIndex root) const;
  std::optional<GraphIndex> childOf(GraphIndex graph,
                                    std::string_view name) const;
  void fillGraph(GraphIndex index, const ValuesByHome& values,
                 onnx::GraphProto& proto) const;
  void fillSubgraphs(GraphIndex index, const ValuesByHome& values,
                     onnx::NodeProto& node) const;
  static void shapeLoopInputs(onnx::GraphProto& body);

  DataSink sink_;
  std::vector<Graph> graphs_;
  // In the order of creation, and by id.
  std::vector<std::unique_ptr<Value>> values_;
  std::map<std::uint32_t, Value*> valuesById_;
  std::map<std::string, std::uint32_t, std::less<>> idsByName_;
  Opsets opsets_;
  std::vector<std::string> warnings_;
};

}  // namespace kiv::onnx_model
