#pragma once

// What handles stand for. A context's mutex guards the context, its graphs and
// tensors; a backend's its options. A session runs on any number of threads.

#include <onnx/onnx_pb.h>

#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "op_schemas.h"
#include "ort_library.h"
#include "tensors.h"
#include "worker.h"

namespace kiv::ort {

class Session;
struct Context;

struct Backend {
  std::mutex mutex;
  std::shared_ptr<const OrtLibrary> library;
  OpSets opSets;
};

// The one device is the processor.
struct Device {};

struct Graph {
  Context* context = nullptr;
  // Null for a graph that is executed itself.
  Graph* parent = nullptr;
  std::string name;
  // Nodes in order. Their attributes name subgraphs, which are put in when the
  // model is built.
  std::vector<onnx::NodeProto> nodes;
  std::vector<std::unique_ptr<Graph>> subgraphs;
  // Null until the graph is finalized.
  std::shared_ptr<const Session> session;

  const Graph& main() const {
    return parent == nullptr ? *this : parent->main();
  }
};

struct Context {
  std::mutex mutex;
  std::shared_ptr<const OrtLibrary> library;
  OpSets opSets;
  // All tensors in order of creation, which is the order of a subgraph's
  // inputs and outputs.
  std::deque<Tensor> tensors;
  // Names that are taken: by owner, and in the model.
  std::set<std::pair<const Graph*, std::string>> names;
  std::unordered_set<std::string> values;
  std::vector<std::unique_ptr<Graph>> graphs;
  const Graph* latestGraph = nullptr;
  // The data of large static tensors; null until the first.
  std::shared_ptr<DataFile> dataFile;
  // Runs asynchronous executions; null until the first.
  std::unique_ptr<Worker> worker;
  std::uint32_t queueDepth = 0;
};

// Creates a graph in the context, below `parent` unless that is null. A Failure
// for a name that the context has already.
Graph& addGraph(Context& context, Graph* parent, const std::string& name);

// Null if the context has no graph of that name.
Graph* findGraph(const Context& context, const std::string& name);
Graph* findSubgraph(const Graph& graph, const std::string& name);

// Puts a tensor into a graph, or into the context if `owner` is null, with a
// copy of its data if it is static; returns its id. A Failure for a name that
// the owner has already.
std::uint32_t addTensor(Context& context, const Graph* owner,
                        const TensorFields& fields);

// The context's worker, which is started with the first call.
Worker& workerOf(Context& context);

// Null for an id that the context did not give.
const Tensor* findTensor(const Context& context, std::uint32_t id);

}  // namespace kiv::ort
