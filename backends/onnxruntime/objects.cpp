#include "objects.h"

#include "external_data.h"
#include "failure.h"
#include "log.h"
#include "session.h"
#include "tensors.h"

namespace kiv::ort {
namespace {

template <typename Graphs>
Graph* findByName(const Graphs& graphs, const std::string& name) {
  for (const auto& graph : graphs)
    if (graph->name == name) return graph.get();
  return nullptr;
}

// Small data stays in the model, where shapes are inferred from it; so does
// that of attributes, which have no name.
void keepData(Context& context, std::span<const std::byte> data,
              onnx::TensorProto& proto) {
  constexpr std::size_t kLargestInModel = 1024;
  if (data.size() <= kLargestInModel || proto.name().empty())
    return onnx_model::storeInline(data, proto);
  if (context.dataFile == nullptr)
    context.dataFile = std::make_shared<DataFile>();
  setPlace(proto, context.dataFile->append(data));
}

}  // namespace

Context::Context()
    : builder(
          [this](std::span<const std::byte> data, onnx::TensorProto& proto) {
            keepData(*this, data, proto);
          }) {}

Graph* findGraph(const Context& context, const std::string& name) {
  return findByName(context.graphs, name);
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
  graph.index = parent == nullptr
                    ? context.builder.addGraph(name)
                    : context.builder.addSubgraph(parent->index, name);
  return graph;
}

std::uint32_t addTensor(Context& context, const Graph* owner,
                        Kiv_Tensor_t record) {
  checkRecord(record);
  // The id lies at the same place in all versions.
  record.v1.id = context.lastId + 1;
  const char* const name = record.v1.name;
  const std::pair key(owner, std::string(name == nullptr ? "" : name));
  if (!key.second.empty() && context.names.contains(key)) {
    throw Failure(KIV_TENSOR_ERROR_ALREADY_EXISTS,
                  "there is a " + onnx_model::describe(record) + " already");
  }
  throwIf(owner == nullptr ? context.builder.addContextTensor(record)
                           : context.builder.addTensor(owner->index, record));
  context.names.insert(key);
  return ++context.lastId;
}

void addNode(Graph& graph, const Kiv_OpConfig_t& config) {
  Context& context = *graph.context;
  throwIf(context.builder.addNode(graph.index, config));
  const std::vector<std::string>& warnings = context.builder.warnings();
  while (context.loggedWarnings < warnings.size())
    log(KIV_LOG_LEVEL_WARN,
        "graphAddNode: " + warnings[context.loggedWarnings++]);
}

Worker& workerOf(Context& context) {
  const std::scoped_lock lock(context.mutex);
  if (context.worker == nullptr)
    context.worker = std::make_unique<Worker>(context.queueDepth);
  return *context.worker;
}

}  // namespace kiv::ort
