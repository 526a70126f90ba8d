#pragma once

// The objects behind the handles. A context's mutex guards the context, its
// graphs and tensors; a backend's its options. A session runs on any number of
// threads.

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "data_file.h"
#include "onnx_model/model_builder.h"
#include "ort_library.h"
#include "worker.h"

namespace kiv::ort {

class Session;
struct Context;

struct Backend {
  std::mutex mutex;
  std::shared_ptr<const OrtLibrary> library;
  onnx_model::Opsets opsets;
};

// The one device is the processor.
struct Device {};

struct Graph {
  Context* context = nullptr;
  // Null for a graph that is executed itself.
  Graph* parent = nullptr;
  std::string name;
  onnx_model::GraphIndex index = 0;
  std::vector<std::unique_ptr<Graph>> subgraphs;
  // Null until the graph is finalized.
  std::shared_ptr<const Session> session;

  const Graph& main() const {
    return parent == nullptr ? *this : parent->main();
  }
};

struct Context {
  Context();

  std::mutex mutex;
  std::shared_ptr<const OrtLibrary> library;
  // All tensors and nodes; how many of its warnings were logged.
  onnx_model::ModelBuilder builder;
  std::size_t loggedWarnings = 0;
  // The last tensor's id.
  std::uint32_t lastId = 0;
  // Names that are taken, by owner.
  std::set<std::pair<const Graph*, std::string>> names;
  std::vector<std::unique_ptr<Graph>> graphs;
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

// Puts a tensor into a graph, or into the context if `owner` is null, with a
// copy of its data if it is static; returns its id. A Failure for a record that
// cannot be part of a model, and for a name that the owner has already.
std::uint32_t addTensor(Context& context, const Graph* owner,
                        Kiv_Tensor_t record);

// A Failure for an operation that cannot be part of a model. If no option of
// the backend says the version of its operators, the log says which is taken.
void addNode(Graph& graph, const Kiv_OpConfig_t& config);

// The context's worker, which is started with the first call.
Worker& workerOf(Context& context);

}  // namespace kiv::ort
