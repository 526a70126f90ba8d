#include "api/entries.h"
#include "call.h"
#include "entries.h"

namespace kiv::relay {
namespace {

using api::Code;

// Notes a graph that the real backend has given.
void noteGraph(Relay& relay, void* context, const char* name,
               const Kiv_GraphHandle_t* graph, Kiv_GraphHandle_t recorded) {
  if (graph == nullptr) return;
  const auto known = relay.graphs.find(*graph);
  if (known != nullptr && known->recorded == recorded) return;
  relay.graphs.add(graph, {.recorded = recorded,
                           .context = context,
                           .name = name == nullptr ? "" : name});
}

void noteGraphOf(Call& call, Code code, Kiv_ContextHandle_t context,
                 const char* name, const Kiv_GraphHandle_t* graph,
                 Kiv_GraphHandle_t recorded) {
  if (code != KIV_SUCCESS) return;
  call.note(
      [&](Relay& relay) { noteGraph(relay, context, name, graph, recorded); });
}

Code graphCreate(Kiv_ContextHandle_t context, const char* name,
                 const KivGraph_Config_t** config, Kiv_GraphHandle_t* graph) {
  Call call("graphCreate");
  Kiv_GraphHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::graphCreate(relay.contexts.recorded(context), name, config,
                            graph ? &recorded : nullptr);
  });
  const Code code = real().graphCreate(context, name, config, graph);
  noteGraphOf(call, code, context, name, graph, recorded);
  return call.answer(code);
}

Code graphRetrieve(Kiv_ContextHandle_t context, const char* name,
                   Kiv_GraphHandle_t* graph) {
  Call call("graphRetrieve");
  Kiv_GraphHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::graphRetrieve(relay.contexts.recorded(context), name,
                              graph ? &recorded : nullptr);
  });
  const Code code = real().graphRetrieve(context, name, graph);
  noteGraphOf(call, code, context, name, graph, recorded);
  return call.answer(code);
}

Code graphCreateSubgraph(Kiv_GraphHandle_t graph, const char* name,
                         Kiv_GraphHandle_t* subgraph) {
  Call call("graphCreateSubgraph");
  Kiv_GraphHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::graphCreateSubgraph(relay.graphs.recorded(graph), name,
                                    subgraph ? &recorded : nullptr);
  });
  const Code code = real().graphCreateSubgraph(graph, name, subgraph);
  if (code == KIV_SUCCESS) {
    call.note([&](Relay& relay) {
      const auto above = relay.graphs.find(graph);
      noteGraph(relay, above == nullptr ? nullptr : above->context, name,
                subgraph, recorded);
    });
  }
  return call.answer(code);
}

Code graphSetConfig(Kiv_GraphHandle_t graph, const KivGraph_Config_t** config) {
  Call call("graphSetConfig");
  call.record([&](Relay& relay) {
    return api::graphSetConfig(relay.graphs.recorded(graph), config);
  });
  return call.answer(real().graphSetConfig(graph, config));
}

Code graphAddNode(Kiv_GraphHandle_t graph, Kiv_OpConfig_t config) {
  Call call("graphAddNode");
  call.record([&](Relay& relay) {
    return api::graphAddNode(relay.graphs.recorded(graph), config);
  });
  return call.answer(real().graphAddNode(graph, config));
}

Code graphFinalize(Kiv_GraphHandle_t graph, Kiv_ProfileHandle_t profile,
                   Kiv_SignalHandle_t signal) {
  Call call("graphFinalize");
  call.record([&](Relay& relay) {
    return api::graphFinalize(relay.graphs.recorded(graph),
                              relay.profiles.recorded(profile), signal);
  });
  return call.answer(real().graphFinalize(graph, profile, signal));
}

// ---- executions ----

// The arguments that an execution has on all its ways.
struct ExecutionArguments {
  Kiv_GraphHandle_t graph;
  const Kiv_Tensor_t* inputs;
  uint32_t numInputs;
  Kiv_Tensor_t* outputs;
  uint32_t numOutputs;
  Kiv_ProfileHandle_t profile;
  Kiv_SignalHandle_t signal;
};

Execution recordExecution(Call& call, const ExecutionArguments& arguments) {
  Execution execution;
  call.record([&](Relay& relay) {
    const auto graph = relay.graphs.find(arguments.graph);
    const output::CallWatch watch(graph ? &graph->executions : nullptr);
    const Code code = api::graphExecute(
        relay.graphs.recorded(arguments.graph), arguments.inputs,
        arguments.numInputs, arguments.outputs, arguments.numOutputs,
        relay.profiles.recorded(arguments.profile), arguments.signal);
    execution.number = watch.execution();
    if (relay.outputs.isOn() && graph != nullptr) execution.graph = graph->name;
    return code;
  });
  execution.place = call.place();
  return execution;
}

void keepOutputs(const Execution& execution,
                 std::span<const Kiv_Tensor_t> outputs) {
  if (execution.place.call == 0 || outputs.data() == nullptr) return;
  whileRecording([&](session::Session&, Relay& relay) {
    if (relay.outputs.isOn())
      relay.outputs.keep(relay.answers, execution, outputs);
  });
}

Code graphExecute(Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs,
                  uint32_t numInputs, Kiv_Tensor_t* outputs,
                  uint32_t numOutputs, Kiv_ProfileHandle_t profile,
                  Kiv_SignalHandle_t signal) {
  Call call("graphExecute");
  const Execution execution = recordExecution(
      call, {graph, inputs, numInputs, outputs, numOutputs, profile, signal});
  const Code code = real().graphExecute(graph, inputs, numInputs, outputs,
                                        numOutputs, profile, signal);
  if (code == KIV_SUCCESS) keepOutputs(execution, {outputs, numOutputs});
  return call.answer(code);
}

// An execution that goes on when its call has returned. It is destroyed when
// both have come to their end.
class AsyncExecution {
 public:
  AsyncExecution(Execution execution, const Kiv_Tensor_t* outputs,
                 uint32_t numOutputs, KivGraph_NotifyFn_t notify,
                 void* argument)
      : execution_(std::move(execution)),
        outputs_(outputs, numOutputs),
        notify_(notify),
        argument_(argument) {}

  // The outputs are kept before the client is notified, which may use their
  // buffers again.
  static void end(void* self, Code status) {
    std::unique_ptr<AsyncExecution> ended(static_cast<AsyncExecution*>(self));
    if (status == KIV_SUCCESS)
      keepOutputs(ended->execution_, ended->outputs_.tensors());
    else
      ended->listFailure(status);
    const KivGraph_NotifyFn_t notify = ended->notify_;
    void* const argument = ended->argument_;
    ended.reset();
    notify(argument, status);
  }

 private:
  void listFailure(Code status) const {
    if (execution_.place.call == 0) return;
    whileRecording([&](session::Session&, Relay& relay) {
      relay.answers.refused(execution_.place, "graphExecuteAsync", status);
    });
  }

  Execution execution_;
  OwnedTensors outputs_;
  KivGraph_NotifyFn_t notify_;
  void* argument_;
};

// Null where the client is not notified or there is no memory: then the real
// backend gets the client's own function.
AsyncExecution* watchAsync(const Execution& execution,
                           const ExecutionArguments& arguments,
                           KivGraph_NotifyFn_t notify, void* argument) {
  if (notify == nullptr || execution.place.call == 0) return nullptr;
  try {
    const bool keeps = Relay::instance()->outputs.isOn();
    return new AsyncExecution(execution, keeps ? arguments.outputs : nullptr,
                              arguments.numOutputs, notify, argument);
  } catch (...) {
    return nullptr;
  }
}

// Recorded as an execution that is waited for, which computes the same.
Code graphExecuteAsync(Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs,
                       uint32_t numInputs, Kiv_Tensor_t* outputs,
                       uint32_t numOutputs, Kiv_ProfileHandle_t profile,
                       Kiv_SignalHandle_t signal, KivGraph_NotifyFn_t notify,
                       void* argument) {
  Call call("graphExecuteAsync");
  const ExecutionArguments arguments = {graph,      inputs,  numInputs, outputs,
                                        numOutputs, profile, signal};
  const Execution execution = recordExecution(call, arguments);
  if (call.isRecorded())
    call.note([&](Relay& relay) {
      relay.answers.recordedAs(call.place(), "graphExecuteAsync",
                               "graphExecute");
    });
  AsyncExecution* const watched =
      watchAsync(execution, arguments, notify, argument);
  const Code code = real().graphExecuteAsync(
      graph, inputs, numInputs, outputs, numOutputs, profile, signal,
      watched == nullptr ? notify : AsyncExecution::end,
      watched == nullptr ? argument : watched);
  // A backend that refuses a call notifies nobody.
  if (code != KIV_SUCCESS) delete watched;
  return call.answer(code);
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
}

}  // namespace kiv::relay
