#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

void describeExecution(Call& call, Kiv_GraphHandle_t graph,
                       const Kiv_Tensor_t* inputs, uint32_t numInputs,
                       const Kiv_Tensor_t* outputs, uint32_t numOutputs) {
  call.handle(Kind::kGraph, graph)
      .value(Array{inputs, numInputs})
      .value(numInputs)
      .value(Array{outputs, numOutputs})
      .value(numOutputs);
}

Kiv_ErrorHandle_t graphCreate(Kiv_ContextHandle_t context, const char* name,
                              const KivGraph_Config_t** config,
                              Kiv_GraphHandle_t* graph) noexcept {
  return traced("graphCreate", [&](Call& call) {
    call.handle(Kind::kContext, context)
        .value(name)
        .value(List{config})
        .create(Kind::kGraph, graph);
    if (graph != nullptr) call.tracer().graphs.add(context, name, *graph);
  });
}

Kiv_ErrorHandle_t graphCreateSubgraph(Kiv_GraphHandle_t graph, const char* name,
                                      Kiv_GraphHandle_t* subgraph) noexcept {
  return traced("graphCreateSubgraph", [&](Call& call) {
    call.handle(Kind::kGraph, graph).value(name);
    call.create(Kind::kGraph, subgraph);
    GraphNames& graphs = call.tracer().graphs;
    if (subgraph != nullptr)
      graphs.add(graphs.contextOf(graph), name, *subgraph);
  });
}

Kiv_ErrorHandle_t graphSetConfig(Kiv_GraphHandle_t graph,
                                 const KivGraph_Config_t** config) noexcept {
  return traced("graphSetConfig", [&](Call& call) {
    call.handle(Kind::kGraph, graph).value(List{config});
  });
}

Kiv_ErrorHandle_t graphAddNode(Kiv_GraphHandle_t graph,
                               Kiv_OpConfig_t opConfig) noexcept {
  return traced("graphAddNode", [&](Call& call) {
    call.handle(Kind::kGraph, graph).value(opConfig);
  });
}

Kiv_ErrorHandle_t graphFinalize(Kiv_GraphHandle_t graph,
                                Kiv_ProfileHandle_t profile,
                                Kiv_SignalHandle_t signal) noexcept {
  return traced("graphFinalize", [&](Call& call) {
    call.handle(Kind::kGraph, graph)
        .handle(Kind::kProfile, profile)
        .handle(Kind::kSignal, signal);
  });
}

Kiv_ErrorHandle_t graphRetrieve(Kiv_ContextHandle_t context, const char* name,
                                Kiv_GraphHandle_t* graph) noexcept {
  return traced("graphRetrieve", [&](Call& call) {
    Tracer& tracer = call.tracer();
    const Kiv_GraphHandle_t found =
        graph == nullptr
            ? nullptr
            : tracer.graphs.findOrCreate(context, name, tracer.handles);
    call.handle(Kind::kContext, context).value(name);
    call.giveHandle(Kind::kGraph, graph, found);
  });
}

// Buffers of the outputs stay as they are: their bytes are part of a
// recording and so of the trace.
Kiv_ErrorHandle_t graphExecute(Kiv_GraphHandle_t graph,
                               const Kiv_Tensor_t* inputs, uint32_t numInputs,
                               Kiv_Tensor_t* outputs, uint32_t numOutputs,
                               Kiv_ProfileHandle_t profile,
                               Kiv_SignalHandle_t signal) noexcept {
  return traced("graphExecute", [&](Call& call) {
    describeExecution(call, graph, inputs, numInputs, outputs, numOutputs);
    call.handle(Kind::kProfile, profile).handle(Kind::kSignal, signal);
  });
}

// The execution ends at once: the client is notified before the call returns.
Kiv_ErrorHandle_t graphExecuteAsync(
    Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs, uint32_t numInputs,
    Kiv_Tensor_t* outputs, uint32_t numOutputs, Kiv_ProfileHandle_t profile,
    Kiv_SignalHandle_t signal, KivGraph_NotifyFn_t notify,
    void* notifyArgument) noexcept {
  const auto status = traced("graphExecuteAsync", [&](Call& call) {
    describeExecution(call, graph, inputs, numInputs, outputs, numOutputs);
    call.handle(Kind::kProfile, profile).handle(Kind::kSignal, signal);
    call.value(Opaque{notify != nullptr});
    call.value(Opaque{notifyArgument != nullptr});
  });
  if (notify != nullptr) notify(notifyArgument, status);
  return status;
}

using Descriptor = KivGraph_EnvironmentDescriptor_t;

Kiv_ErrorHandle_t graphPrepareEnvironment(Kiv_GraphHandle_t graph,
                                          const Descriptor** descriptors,
                                          uint32_t numDescriptors) noexcept {
  return traced("graphPrepareEnvironment", [&](Call& call) {
    call.handle(Kind::kGraph, graph)
        .value(Array{descriptors, numDescriptors})
        .value(numDescriptors);
  });
}

Kiv_ErrorHandle_t graphReleaseEnvironment(Kiv_GraphHandle_t graph,
                                          const Descriptor** descriptors,
                                          uint32_t numDescriptors) noexcept {
  return traced("graphReleaseEnvironment", [&](Call& call) {
    call.handle(Kind::kGraph, graph)
        .value(Array{descriptors, numDescriptors})
        .value(numDescriptors);
  });
}

// The argument is the address of a pointer, so it shows as a list of one.
Kiv_ErrorHandle_t graphGetProperty(Kiv_GraphHandle_t graph,
                                   KivGraph_Property_t** property) noexcept {
  return traced("graphGetProperty", [&](Call& call) {
    call.handle(Kind::kGraph, graph).value(Array{property, 1});
  });
}

}  // namespace

void addGraphEntries(KivInterface_Implementation_t& table) {
  table.graphCreate = graphCreate;
  table.graphCreateSubgraph = graphCreateSubgraph;
  table.graphSetConfig = graphSetConfig;
  table.graphAddNode = graphAddNode;
  table.graphFinalize = graphFinalize;
  table.graphRetrieve = graphRetrieve;
  table.graphExecute = graphExecute;
  table.graphExecuteAsync = graphExecuteAsync;
  table.graphPrepareEnvironment = graphPrepareEnvironment;
  table.graphReleaseEnvironment = graphReleaseEnvironment;
  table.graphGetProperty = graphGetProperty;
}

}  // namespace kiv::tracer
