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

// A variable for a graph: its name as an identifier. Given back unless kept.
class GraphVariable {
 public:
  GraphVariable(Session& session, const std::string& graphName)
      : session_(session) {
    std::string base = output::sanitizeIdentifier(graphName);
    if (base.empty()) base = "graph";
    name_ = session.names().claim(base, session::Family::kGraph);
  }
  ~GraphVariable() {
    if (!kept_) session_.names().release(name_);
  }
  GraphVariable(const GraphVariable&) = delete;
  GraphVariable& operator=(const GraphVariable&) = delete;

  const std::string& name() const { return name_; }
  void keep() { kept_ = true; }

 private:
  Session& session_;
  std::string name_;
  bool kept_ = false;
};

// A graph's name, set aside in its context. Given back unless kept.
class GraphName {
 public:
  GraphName(SaverContext& context, const char* name)
      : context_(context),
        name_(name),
        isReserved_(context.reserveGraphName(name_)) {}
  ~GraphName() {
    if (isReserved_ && !kept_) context_.dropGraphName(name_);
  }
  GraphName(const GraphName&) = delete;
  GraphName& operator=(const GraphName&) = delete;

  const std::string& text() const { return name_; }
  // False when the context has a graph of that name, or is about to.
  bool isReserved() const { return isReserved_; }
  void keep() { kept_ = true; }

 private:
  SaverContext& context_;
  const std::string name_;
  const bool isReserved_;
  bool kept_ = false;
};

// Records how a graph comes into being with `record`, and registers it if that
// succeeded.
template <typename Record>
Status createGraph(Session& session, SaverContext& context, const char* text,
                   std::shared_ptr<const session::TensorRegistry> outer,
                   const Failure& ifTaken, Kiv_GraphHandle_t* out,
                   Record&& record) {
  GraphName name(context, text);
  if (!name.isReserved()) return fail(ifTaken, text);
  GraphVariable variable(session, name.text());
  auto graph = std::make_shared<SaverGraph>(variable.name(), session.program(),
                                            std::move(outer));
  const Status status = record(*graph);
  if (!ok(status)) return status;
  *out = session::toApi(
      session.registerGraph(context, name.text(), std::move(graph)));
  name.keep();
  variable.keep();
  return Status::kOk;
}

Status createSubgraph(Session& session, Kiv_GraphHandle_t parentHandle,
                      const char* name, Kiv_GraphHandle_t* out) {
  const auto parent = findGraph(session, parentHandle);
  if (!parent) return parent.status;
  if (name == nullptr || out == nullptr) return fail(kSubgraphNameOrOutIsNull);
  const auto context = session.contextOfGraph(session::fromApi(parentHandle));
  if (context == nullptr) return fail(kGraphIsUnknown);
  return createGraph(session, *context, name, parent->tensors(),
                     kGraphNameTaken, out, [&](const SaverGraph& subgraph) {
                       return recorders::recordGraphCreateSubgraph(
                           session, *parent, subgraph, name);
                     });
}

// A graph that the context has is retrieved into a second variable and keeps
// its handle; any other name gives a new graph.
Status retrieveGraph(Session& session, SaverContext& context, const char* name,
                     Kiv_GraphHandle_t* out) {
  const auto known = context.findGraph(std::string(name));
  if (known == nullptr) {
    return createGraph(session, context, name, context.tensors(),
                       kGraphNotCreated, out, [&](const SaverGraph& created) {
                         return recorders::recordGraphRetrieve(
                             session, context, name, created.variable().name());
                       });
  }
  GraphVariable variable(session, name);
  const Status status =
      recorders::recordGraphRetrieve(session, context, name, variable.name());
  if (!ok(status)) return status;
  variable.keep();
  *out = session::toApi(session::handleOf(known.get()));
  return Status::kOk;
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
    return createGraph(session, *context, name, context->tensors(),
                       kGraphNameTaken, graph, [&](const SaverGraph& created) {
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
