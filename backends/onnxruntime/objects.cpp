#include "objects.h"

#include <span>
#include <utility>

#include "failure.h"
#include "session.h"

namespace kiv::ort {
namespace {

template <typename Graphs>
Graph* findByName(const Graphs& graphs, const std::string& name) {
  for (const auto& graph : graphs)
    if (graph->name == name) return graph.get();
  return nullptr;
}

// Names that graphs share, and no name, get the tensor's number.
std::string uniqueValue(Context& context, const Tensor& tensor) {
  std::string value = tensor.name;
  if (value.empty() || context.values.contains(value))
    value.append("#").append(std::to_string(tensor.id));
  while (!context.values.insert(value).second) value += "#";
  return value;
}

// Small data stays at hand: shapes are inferred from it, for which it must be
// in the model.
void keepData(Context& context, const Kiv_ClientBuffer_t& buffer,
              Tensor& tensor) {
  constexpr std::size_t kLargestAtHand = 1024;
  if (buffer.data == nullptr) return;
  const std::span bytes(static_cast<const std::uint8_t*>(buffer.data),
                        buffer.dataSize);
  if (bytes.size() <= kLargestAtHand) {
    tensor.data.assign(bytes.begin(), bytes.end());
    return;
  }
  if (context.dataFile == nullptr)
    context.dataFile = std::make_shared<DataFile>();
  tensor.place = context.dataFile->append(bytes);
}

}  // namespace

Graph* findGraph(const Context& context, const std::string& name) {
  return findByName(context.graphs, name);
}

Graph* findSubgraph(const Graph& graph, const std::string& name) {
  return findByName(graph.subgraphs, name);
}

Graph& addGraph(Context& context, Graph* parent, const std::string& name) {
  auto& siblings = parent == nullptr ? context.graphs : parent->subgraphs;
  if (findByName(siblings, name) != nullptr) {
    throw Failure(KIV_GRAPH_ERROR_NAME_TAKEN,
                  "there is a graph \"" + name + "\" already");
  }
  siblings.push_back(std::make_unique<Graph>());
  Graph& graph = *siblings.back();
  graph.context = &context;
  graph.parent = parent;
  graph.name = name;
  context.latestGraph = &graph;
  return graph;
}

std::uint32_t addTensor(Context& context, const Graph* owner,
                        const TensorFields& fields) {
  Tensor tensor = makeTensor(fields);
  if (!tensor.name.empty() &&
      !context.names.emplace(owner, tensor.name).second) {
    throw Failure(KIV_TENSOR_ERROR_ALREADY_EXISTS,
                  "there is a tensor \"" + tensor.name + "\" already");
  }
  tensor.id = static_cast<std::uint32_t>(context.tensors.size()) + 1;
  tensor.owner = owner;
  tensor.home = owner != nullptr ? owner : context.latestGraph;
  tensor.value = uniqueValue(context, tensor);
  if (tensor.type == KIV_TENSOR_TYPE_STATIC)
    keepData(context, fields.buffer, tensor);
  context.tensors.push_back(std::move(tensor));
  return context.tensors.back().id;
}

Worker& workerOf(Context& context) {
  const std::scoped_lock lock(context.mutex);
  if (context.worker == nullptr)
    context.worker = std::make_unique<Worker>(context.queueDepth);
  return *context.worker;
}

const Tensor* findTensor(const Context& context, std::uint32_t id) {
  if (id == 0 || id > context.tensors.size()) return nullptr;
  return &context.tensors[id - 1];
}

}  // namespace kiv::ort
