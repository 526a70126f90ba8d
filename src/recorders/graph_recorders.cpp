#include "recorders/graph_recorders.h"

#include "recorders/config_array.h"
#include "recorders/recorded_call.h"
#include "writers/config_writers.h"
#include "writers/op_config_writer.h"
#include "writers/tensor_writer.h"

namespace kiv::recorders {
namespace {

using output::decimal;
using output::Texts;
using session::SaverContext;
using session::SaverGraph;
using session::Session;

constexpr output::WriteFailures kWriteFailures = {Status::kContextError,
                                                  Status::kContextError};
constexpr output::WriteFailures kAddNodeFailures = {Status::kBackendError,
                                                    Status::kContextError};

std::string writeConfigs(RecordedCall& call, const KivGraph_Config_t** config,
                         const std::string& base) {
  return writeConfigArray(call, writers::graphConfigs(), config, base, base,
                          {.noConfigs = NoConfigs::kNullForNull});
}

// The tensors and arrays of one execution.
struct ExecutionTexts {
  std::string inputs;
  std::string outputs;
};

Status writeExecution(writers::WriteScope& scope, const SaverGraph& graph,
                      std::span<const Kiv_Tensor_t> inputs,
                      std::span<const Kiv_Tensor_t> outputs,
                      ExecutionTexts& texts) {
  const std::string& name = graph.variable().name();
  const std::string number = decimal(graph.executionNumber());
  const session::TensorRegistry* created = graph.tensors().get();
  Texts inputNames;
  Texts outputNames;
  if (const Status s = writers::writeTensors(
          scope, inputs, name + "_inputTensor_" + number + '_', created,
          inputNames);
      !ok(s))
    return s;
  if (const Status s = writers::writeTensors(
          scope, outputs, name + "_outputTensor_" + number + '_', created,
          outputNames);
      !ok(s))
    return s;
  texts = {name + "_inputTensors_" + number, name + "_outputTensors_" + number};
  scope.code.emitArray("Kiv_Tensor_t", texts.inputs, inputNames);
  scope.code.emitArray("Kiv_Tensor_t", texts.outputs, outputNames);
  return Status::kOk;
}

}  // namespace

Status recordGraphCreate(Session& session, const SaverContext& context,
                         const SaverGraph& graph, const char* name,
                         const KivGraph_Config_t** config) {
  RecordedCall call(session, "graphCreate");
  const std::string& variable = graph.variable().name();
  const std::string configs = writeConfigs(call, config, variable);
  const std::string address = call.declare("Kiv_GraphHandle_t", variable);
  return call.commit({call.use(context.variable()), call.scope().literal(name),
                      configs, address},
                     kWriteFailures);
}

Status recordGraphCreateSubgraph(Session& session, const SaverGraph& parent,
                                 const SaverGraph& subgraph, const char* name) {
  RecordedCall call(session, "graphCreateSubgraph");
  const std::string address =
      call.declare("Kiv_GraphHandle_t", subgraph.variable().name());
  return call.commit(
      {call.use(parent.variable()), call.scope().literal(name), address},
      kWriteFailures);
}

Status recordGraphSetConfig(Session& session, const SaverGraph& graph,
                            const KivGraph_Config_t** config) {
  RecordedCall call(session, "graphSetConfig");
  const std::string variable = call.use(graph.variable());
  const std::string configs = writeConfigs(call, config, variable);
  return call.commit({variable, configs}, kWriteFailures);
}

Status recordGraphAddNode(Session& session, const SaverGraph& graph,
                          const Kiv_OpConfig_t& opConfig) {
  RecordedCall call(session, "graphAddNode");
  const std::string name = writers::nameOpConfig(call.scope(), opConfig);
  call.write([&](writers::WriteScope& scope) {
    return writers::writeOpConfig(scope, opConfig, name, graph.tensors().get());
  });
  return call.commit({call.use(graph.variable()), name}, kAddNodeFailures);
}

Status recordGraphFinalize(Session& session, const SaverGraph& graph,
                           Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, "graphFinalize");
  return call.commit(
      {call.use(graph.variable()), call.profile(profile), "NULL"},
      kWriteFailures);
}

// The number of the execution and the text that holds it are made under the
// graph's lock. A call that cannot be written uses its number up.
Status recordGraphExecute(Session& session, SaverGraph& graph,
                          std::span<const Kiv_Tensor_t> inputs,
                          std::span<const Kiv_Tensor_t> outputs,
                          Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, "graphExecute");
  const std::string profileText = call.profile(profile);
  ExecutionTexts texts;
  call.write([&](writers::WriteScope& scope) {
    const std::lock_guard lock(graph.executionMutex());
    const Status status = writeExecution(scope, graph, inputs, outputs, texts);
    if (ok(status)) graph.countExecution();
    return status;
  });
  return call.commit(
      {call.use(graph.variable()), texts.inputs, decimal(inputs.size()),
       texts.outputs, decimal(outputs.size()), profileText, "NULL"},
      kWriteFailures);
}

}  // namespace kiv::recorders
