#pragma once

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "KivInterface.h"

// An ONNX model from the calls that describe a network of ONNX operators to the
// Kiv API: the inverse of what examples/onnx_client does.
//
//   ModelBuilder builder;
//   builder.setPlatformOption("onnx.opset:13");
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

// Why a call cannot be part of a model, with the API's code for it.
struct Fault {
  Kiv_ErrorHandle_t status = KIV_CONTEXT_ERROR_GENERAL;
  std::string message;
};

// Puts the data of a static tensor, or of a Constant, into the model's tensor,
// whose name, type and shape are set. The data is valid during the call only.
using DataSink =
    std::function<void(std::span<const std::byte> data, onnx::TensorProto&)>;

// The data itself, in the field raw_data.
void storeInline(std::span<const std::byte> data, onnx::TensorProto& proto);

// The element type of ONNX for one of the API; quantized numbers are integers
// there. Nothing for 4-bit numbers and for types that tensors do not have.
std::optional<onnx::TensorProto::DataType> onnxTypeOf(Kiv_DataType_t type);
// bytes; 0 for an element type that the API does not have
std::size_t sizeOfElement(std::int32_t onnxType);

// A tensor with its data, as files of test data hold it.
std::optional<Fault> tensorProtoOf(const Kiv_Tensor_t& tensor,
                                   std::string_view name,
                                   onnx::TensorProto& proto,
                                   const DataSink& sink = storeInline);

class ModelBuilder {
 public:
  explicit ModelBuilder(DataSink sink = storeInline) : sink_(std::move(sink)) {}

  // Takes "onnx.opset:13" for the default domain and "onnx.opset.DOMAIN:1" for
  // another one; false for an option that is none of them. Before the first
  // node.
  bool setPlatformOption(std::string_view option);
  // The version of a domain; "" and "ai.onnx" are the default one.
  void setOpset(const std::string& domain, std::int64_t version);
  // What is taken for the default domain where nothing names its version; else
  // the newest that the library of ONNX knows.
  void setNewestOpset(std::int64_t version) { newestOpset_ = version; }

  GraphIndex addGraph(std::string name);
  // A graph that a node of `parent` names in one of its parameters.
  GraphIndex addSubgraph(GraphIndex parent, std::string name);

  // The record's id must differ from all that were added before, and a static
  // tensor's data must be as large as its dimensions say. Inputs and outputs of
  // a graph are in the order of their creation. A tensor of the context that is
  // an input belongs to the graph that was created last.
  std::optional<Fault> addTensor(GraphIndex graph, const Kiv_Tensor_t& tensor);
  std::optional<Fault> addContextTensor(const Kiv_Tensor_t& tensor);

  // Its tensors are the graph's or the context's. The package is the operator's
  // domain. The operator's schema tells how
  // parameters become attributes: a static tensor with one dimension is a list
  // or a tensor, a text is one or names a subgraph, and NAME_0, NAME_1, ... may
  // be elements of the list NAME.
  std::optional<Fault> addNode(GraphIndex graph, const Kiv_OpConfig_t& config);

  // The model of a graph with its subgraphs, copied out of the builder.
  onnx::ModelProto build(GraphIndex graph) const;

  // The value's name in the model: the tensor's, which gets its id behind it
  // if it is taken. Empty for an unknown id. The documentation of inputs and
  // outputs is the tensor's own name.
  std::string_view nameOf(std::uint32_t id) const;

  // What a person should know, a line each: domains whose version nobody gave.
  const std::vector<std::string>& warnings() const { return warnings_; }

 private:
  // A tensor as a value of the model.
  struct Value {
    std::string name;
    Kiv_TensorType_t type = KIV_TENSOR_TYPE_NATIVE;
    // Of inputs and outputs.
    onnx::ValueInfoProto info;
    // Of static tensors.
    std::unique_ptr<onnx::TensorProto> initializer;
    // The graph that it was created in, or that was the last one then.
    std::optional<GraphIndex> graph;
    bool isOfContext = false;
    // The graph whose node writes it.
    std::optional<GraphIndex> producer;
    // Graphs whose nodes read it, for tensors of the context.
    std::set<GraphIndex> readers;
  };
  // Names a subgraph until the model is built.
  struct Graph {
    std::string name;
    std::optional<GraphIndex> parent;
    std::vector<onnx::NodeProto> nodes;
  };

  std::optional<Fault> add(const Kiv_Tensor_t& tensor,
                           std::optional<GraphIndex> graph, bool isOfContext);
  std::int64_t versionOf(const std::string& domain);
  std::optional<Fault> addValues(GraphIndex graph, const Kiv_Tensor_t* tensors,
                                 std::uint32_t count, bool areOutputs,
                                 onnx::NodeProto& node);
  GraphIndex rootOf(GraphIndex graph) const;
  std::optional<GraphIndex> homeOf(const Value& value, GraphIndex root) const;
  std::optional<GraphIndex> childOf(GraphIndex graph,
                                    std::string_view name) const;
  void fillGraph(GraphIndex index,
                 const std::map<GraphIndex, std::vector<const Value*>>& values,
                 bool isMain, onnx::GraphProto& proto) const;

  DataSink sink_;
  std::vector<Graph> graphs_;
  // In the order of creation, and by id.
  std::vector<std::unique_ptr<Value>> values_;
  std::map<std::uint32_t, Value*> valuesById_;
  std::set<std::string, std::less<>> names_;
  std::map<std::string, std::int64_t> opsets_;
  std::int64_t newestOpset_ = 0;
  std::vector<std::string> warnings_;
};

}  // namespace kiv::onnx_model
