#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/graph_recorders.h"

namespace kiv::api {
namespace {

using session::SaverContext;
using session::SaverGraph;
using session::Session;

Found<SaverGraph> findGraph(Session& session, Kiv_GraphHandle_t handle) {
  return lookUp(session.graphs(), handle, kGraphIsNull, kGraphIsUnknown);
}

Found<SaverContext> findGraphsContext(Session& session,
                                      Kiv_ContextHandle_t handle) {
  return lookUp(session.contexts(), handle, kContextIsNull5002,
                kContextIsUnknown6001);
}

}  // namespace

Code graphCreate(Kiv_ContextHandle_t handle, const char* name,
                 const KivGraph_Config_t** config, Kiv_GraphHandle_t* graph) {
  return enter([&](Session& session) {
    const auto context = findGraphsContext(session, handle);
    if (!context) return context.status;
    if (name == nullptr || graph == nullptr) return fail(kGraphNameOrOutIsNull);
    return recorders::recordGraphCreate(session, context.object, name, config,
                                        graph);
  });
}

Code graphCreateSubgraph(Kiv_GraphHandle_t handle, const char* name,
                         Kiv_GraphHandle_t* subgraph) {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    if (!graph) return graph.status;
    if (name == nullptr || subgraph == nullptr)
      return fail(kSubgraphNameOrOutIsNull);
    return recorders::recordGraphCreateSubgraph(session, *graph, name,
                                                subgraph);
  });
}

Code graphSetConfig(Kiv_GraphHandle_t handle,
                    const KivGraph_Config_t** config) {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphSetConfig(session, *graph, config)
                 : graph.status;
  });
}

Code graphAddNode(Kiv_GraphHandle_t handle, Kiv_OpConfig_t opConfig) {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphAddNode(session, *graph, opConfig)
                 : graph.status;
  });
}

Code graphFinalize(Kiv_GraphHandle_t handle, Kiv_ProfileHandle_t profile,
                   Kiv_SignalHandle_t) {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphFinalize(session, *graph, profile)
                 : graph.status;
  });
}

Code graphRetrieve(Kiv_ContextHandle_t handle, const char* name,
                   Kiv_GraphHandle_t* graph) {
  return enter([&](Session& session) {
    const auto context = findGraphsContext(session, handle);
    if (!context) return context.status;
    if (name == nullptr || graph == nullptr) return fail(kGraphNameOrOutIsNull);
    return recorders::recordGraphRetrieve(session, context.object, name, graph);
  });
}

Code graphExecute(Kiv_GraphHandle_t handle, const Kiv_Tensor_t* inputs,
                  uint32_t numInputs, Kiv_Tensor_t* outputs,
                  uint32_t numOutputs, Kiv_ProfileHandle_t profile,
                  Kiv_SignalHandle_t) {
  return enter([&](Session& session) {
    const auto graph = findGraph(session, handle);
    return graph ? recorders::recordGraphExecute(session, *graph,
                                                 {inputs, numInputs},
                                                 {outputs, numOutputs}, profile)
                 : graph.status;
  });
}

}  // namespace kiv::api
