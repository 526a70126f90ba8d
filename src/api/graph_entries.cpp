#include <memory>
#include <span>
#include <string>

#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "output/identifiers.h"
#include "recorders/context_recorders.h"
#include "recorders/graph_recorders.h"

namespace kiv::api {
namespace {

using session::SaverContext;
using session::SaverGraph;
using session::Session;

Found<SaverGraph> findGraph(Session& session, Kiv_GraphHandle_t handle) {
  return lookUp(
      handle, kGraphIsNull, kGraphIsUnknown,
      [&](session::Handle known) { return session.findGraph(known); });
}

Found<SaverContext> findContext(Session& session, Kiv_ContextHandle_t handle) {
  return lookUpContext(session, handle, kContextIsNull5002,
                       kContextIsUnknown6001);
}

// A variable for a graph: its name as an identifier.
std::string claimVariable(Session& session, const std::string& name) {
  std::string base = output::sanitizeIdentifier(name);
  if (base.empty()) base = "graph";
  return session.names().claim(base, session::Family::kGraph);
}

// A graph that is being created: its name is set aside in the context and its
// variable in the program, until keep(); given back otherwise.
class NewGraph {
 public:
  NewGraph(Session& session, SaverContext& context, const char* name,
           std::shared_ptr<const session::TensorRegistry> outer)
      : session_(session), context_(context), name_(name) {
    reserved_ = context_.reserveGraphName(name_);
    if (!reserved_) return;
    graph_ = std::make_shared<SaverGraph>(claimVariable(session_, name_),
                                          session_.program(), std::move(outer));
  }
  ~NewGraph() {
    if (!reserved_ || kept_) return;
    context_.dropGraphName(name_);
    if (graph_ != nullptr) session_.names().release(graph_->variable().name());
  }
  NewGraph(const NewGraph&) = delete;
  NewGraph& operator=(const NewGraph&) = delete;

  bool isReserved() const { return reserved_; }
  const SaverGraph& graph() const { return *graph_; }

  Kiv_GraphHandle_t keep() {
    const auto handle = session_.registerGraph(context_, name_, graph_);
    kept_ = true;
    return session::toApi(handle);
  }

 private:
  Session& session_;
  SaverContext& context_;
  const std::string name_;
  std::shared_ptr<SaverGraph> graph_;
  bool reserved_ = false;
  bool kept_ = false;
};

// Records the creation of a graph with `record` and registers it if that
// succeeded.
template <typename Record>
Status createGraph(Session& session, SaverContext& context, const char* name,
                   std::shared_ptr<const session::TensorRegistry> outer,
                   Kiv_GraphHandle_t* out, Record&& record) {
  NewGraph created(session, context, name, std::move(outer));
  if (!created.isReserved()) return fail(kGraphNameTaken, name);
  const Status status = record(created.graph());
  if (ok(status)) *out = created.keep();
  return status;
}

Status createSubgraph(Session& session, Kiv_GraphHandle_t parentHandle,
                      const char* name, Kiv_GraphHandle_t* out) {
  const auto parent = findGraph(session, parentHandle);
  if (!parent) return parent.status;
  if (name == nullptr || out == nullptr) return fail(kSubgraphNameOrOutIsNull);
  const auto context = session.contextOfGraph(session::fromApi(parentHandle));
  if (context == nullptr) return fail(kGraphIsUnknown);
  return createGraph(session, *context, name, parent->tensors(), out,
                     [&](const SaverGraph& subgraph) {
                       return recorders::recordGraphCreateSubgraph(
                           session, *parent, subgraph, name);
                     });
}

// A graph that the context has is retrieved into a second variable and keeps
// its handle; any other name gives a new graph.
Status retrieveGraph(Session& session, SaverContext& context, const char* name,
                     Kiv_GraphHandle_t* out) {
  if (const auto known = context.findGraph(std::string(name))) {
    const std::string variable = claimVariable(session, name);
    const Status status =
        recorders::recordGraphRetrieve(session, context, name, variable);
    if (ok(status)) *out = session::toApi(session::handleOf(known.get()));
    return status;
  }
  NewGraph created(session, context, name, context.tensors());
  if (!created.isReserved()) return fail(kGraphNotCreated);
  const Status status = recorders::recordGraphRetrieve(
      session, context, name, created.graph().variable().name());
  if (ok(status)) *out = created.keep();
  return status;
}

Status executeGraph(Session& session, SaverGraph& graph,
                    std::span<const Kiv_Tensor_t> inputs,
                    std::span<const Kiv_Tensor_t> outputs,
                    Kiv_ProfileHandle_t profile) {
  for (const auto tensors : {inputs, outputs}) {
    if (tensors.data() == nullptr && !tensors.empty())
      return fail(kExecutionTensorsAreNull, static_cast<long>(tensors.size()));
  }
  return recorders::recordGraphExecute(session, graph, inputs, outputs,
                                       profile);
}

}  // namespace

Code graphCreate(Kiv_ContextHandle_t handle, const char* name,
                 const KivGraph_Config_t** config,
                 Kiv_GraphHandle_t* graph) noexcept {
  return enter([&](Session& session) {
    const auto context = findContext(session, handle);
    if (!context) return context.status;
    if (name == nullptr || graph == nullptr) return fail(kGraphNameOrOutIsNull);
    return createGraph(session, *context, name, context->tensors(), graph,
                       [&](const SaverGraph& created) {
                         return recorders::recordGraphCreate(
                             session, *context, created, name, config);
                       });
  });
}

Code graphCreateSubgraph(Kiv_GraphHandle_t graph, const char* name,
                         Kiv_GraphHandle_t* subgraph) noexcept {
  return enter([&](Session& session) {
    return createSubgraph(session, graph, name, subgraph);
  });
}

Code graphSetConfig(Kiv_GraphHandle_t handle,
                    const KivGraph_Config_t** config) noexcept {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphSetConfig(session, *graph, config)
                 : graph.status;
  });
}

Code graphAddNode(Kiv_GraphHandle_t handle, Kiv_OpConfig_t opConfig) noexcept {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphAddNode(session, *graph, opConfig)
                 : graph.status;
  });
}

Code graphFinalize(Kiv_GraphHandle_t handle, Kiv_ProfileHandle_t profile,
                   Kiv_SignalHandle_t) noexcept {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphFinalize(session, *graph, profile)
                 : graph.status;
  });
}

Code graphRetrieve(Kiv_ContextHandle_t handle, const char* name,
                   Kiv_GraphHandle_t* graph) noexcept {
  return enter([&](Session& session) {
    const auto context = findContext(session, handle);
    if (!context) return context.status;
    if (name == nullptr || graph == nullptr) return fail(kGraphNameOrOutIsNull);
    return retrieveGraph(session, *context, name, graph);
  });
}

Code graphExecute(Kiv_GraphHandle_t handle, const Kiv_Tensor_t* inputs,
                  uint32_t numInputs, Kiv_Tensor_t* outputs,
                  uint32_t numOutputs, Kiv_ProfileHandle_t profile,
                  Kiv_SignalHandle_t) noexcept {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? executeGraph(session, *graph, {inputs, numInputs},
                                {outputs, numOutputs}, profile)
                 : graph.status;
  });
}

}  // namespace kiv::api
