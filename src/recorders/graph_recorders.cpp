#include "recorders/graph_recorders.h"

#include "format/records.h"
#include "recorders/recorded_call.h"
#include "session/new_graph.h"
#include "writers/config_writers.h"
#include "writers/op_config_writer.h"
#include "writers/tensor_writer.h"

namespace kiv::recorders {
namespace {

namespace calls = format::calls;
using format::Part;
using session::NewGraph;
using session::SaverContext;
using session::SaverGraph;
using session::Session;

constexpr output::WriteFailures kGraphFailures = {Status::kContextError,
                                                  Status::kContextError};
constexpr output::WriteFailures kAddNodeFailures = {Status::kBackendError,
                                                    Status::kContextError};
constexpr Failure kNameTaken = {
    Status::kGraphNameTaken,
    "Graph with name %s already exists within the context"};
constexpr Failure kNotCreated = {Status::kOutOfMemory,
                                 "Could not create a new graph"};
constexpr Failure kUnknownGraph = {
    Status::kGraphUnknown, "No graph associated with the provided handle"};
constexpr Failure kTensorsAreNull = {
    Status::kGraphInvalidArgument,
    "Provided tensor array is NULL but %ld tensors are counted"};

constexpr std::string_view kGraphHandle = "Kiv_GraphHandle_t";

Name writeConfigs(RecordedCall& call, const KivGraph_Config_t** config,
                  Name graph) {
  return writers::writeConfigs(call, config, graph.text, graph.text);
}

// Records how a new graph comes into being with `record`.
template <typename Record>
Status createGraph(Session& session, std::shared_ptr<SaverContext> context,
                   const char* name,
                   std::shared_ptr<const session::TensorRegistry> outer,
                   Kiv_GraphHandle_t* out, Record&& record) {
  try {
    NewGraph graph(session, std::move(context), name, std::move(outer));
    if (graph.isNameTaken()) return fail(kNameTaken, name);
    const Status status = record(graph.object());
    if (ok(status)) *out = session::toApi(graph.keep());
    return status;
  } catch (const std::bad_alloc&) {
    return fail(kNotCreated);
  }
}

Status writeRetrieval(Session& session, const SaverContext& context,
                      const char* name, std::string_view variable) {
  RecordedCall call(session, calls::kGraphRetrieve);
  const Argument address = call.declare(kGraphHandle, {variable});
  return call.commit({call.use(context), Argument::literal(name), address},
                     kGraphFailures);
}

Status retrieveAgain(Session& session, const SaverContext& context,
                     const SaverGraph& known, const char* name,
                     Kiv_GraphHandle_t* out) {
  session::GraphVariable variable(session.names(), name);
  const Status status = writeRetrieval(session, context, name, variable.name());
  if (!ok(status)) return status;
  variable.keep();
  *out = session::toApi(session::handleOf(&known));
  return Status::kOk;
}

// The tensors of one side of an execution.
template <Part kTensor>
void writeTensors(RecordedCall& call, const SaverGraph& graph,
                  NameOf<Family::kGraph> variable,
                  std::span<const Kiv_Tensor_t> tensors) {
  const std::uint32_t execution = graph.executionNumber();
  for (std::size_t i = 0; i < tensors.size() && !call.hasFailed(); ++i) {
    writers::writeTensor(call, tensors[i],
                         call.code().name<kTensor>(variable, execution, i),
                         graph.tensors().get());
  }
}

// Their array.
template <Part kTensor, Part kArray>
Name writeArray(RecordedCall& call, const SaverGraph& graph,
                NameOf<Family::kGraph> variable, std::size_t count) {
  const std::uint32_t execution = graph.executionNumber();
  const Name array = call.code().name<kArray>(variable, execution);
  call.code().emitPartArray<kTensor>(format::rows::kTensor.type, array,
                                     variable, count, execution);
  return array;
}

}  // namespace

Status recordGraphCreate(Session& session,
                         std::shared_ptr<SaverContext> context,
                         const char* name, const KivGraph_Config_t** config,
                         Kiv_GraphHandle_t* out) {
  const SaverContext& owner = *context;
  return createGraph(
      session, std::move(context), name, owner.tensors(), out,
      [&](const SaverGraph& graph) {
        RecordedCall call(session, calls::kGraphCreate);
        const Name variable = call.use(graph);
        const Name configs = writeConfigs(call, config, variable);
        const Argument address = call.declare(kGraphHandle, variable);
        return call.commit(
            {call.use(owner), Argument::literal(name), configs, address},
            kGraphFailures);
      });
}

Status recordGraphCreateSubgraph(Session& session, const SaverGraph& parent,
                                 const char* name, Kiv_GraphHandle_t* out) {
  auto context = parent.context();
  if (context == nullptr) return fail(kUnknownGraph);
  return createGraph(
      session, std::move(context), name, parent.tensors(), out,
      [&](const SaverGraph& subgraph) {
        RecordedCall call(session, calls::kGraphCreateSubgraph);
        const Argument address = call.declare(kGraphHandle, call.use(subgraph));
        return call.commit({call.use(parent), Argument::literal(name), address},
                           kGraphFailures);
      });
}

Status recordGraphRetrieve(Session& session,
                           std::shared_ptr<SaverContext> context,
                           const char* name, Kiv_GraphHandle_t* out) {
  const SaverContext& owner = *context;
  try {
    if (const auto known = owner.findGraph(name))
      return retrieveAgain(session, owner, *known, name, out);
  } catch (const std::bad_alloc&) {
    return fail(kNotCreated);
  }
  return createGraph(session, std::move(context), name, owner.tensors(), out,
                     [&](const SaverGraph& graph) {
                       return writeRetrieval(session, owner, name,
                                             graph.variable().name());
                     });
}

Status recordGraphSetConfig(Session& session, const SaverGraph& graph,
                            const KivGraph_Config_t** config) {
  RecordedCall call(session, calls::kGraphSetConfig);
  const Name variable = call.use(graph);
  const Name configs = writeConfigs(call, config, variable);
  return call.commit({variable, configs}, kGraphFailures);
}

Status recordGraphAddNode(Session& session, const SaverGraph& graph,
                          const Kiv_OpConfig_t& opConfig) {
  RecordedCall call(session, calls::kGraphAddNode);
  const auto name = writers::nameOpConfig(call, opConfig);
  writers::writeOpConfig(call, opConfig, name, graph.tensors().get());
  return call.commit({call.use(graph), name}, kAddNodeFailures);
}

Status recordGraphFinalize(Session& session, const SaverGraph& graph,
                           Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, calls::kGraphFinalize);
  return call.commit({call.use(graph), call.profile(profile), Name{}},
                     kGraphFailures);
}

// The number of the execution and the text that holds it are made under the
// graph's lock. A call that cannot be written uses its number up.
Status recordGraphExecute(Session& session, SaverGraph& graph,
                          std::span<const Kiv_Tensor_t> inputs,
                          std::span<const Kiv_Tensor_t> outputs,
                          Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, calls::kGraphExecute);
  const auto variable = call.use(graph);
  for (const auto tensors : {inputs, outputs})
    if (tensors.data() == nullptr && !tensors.empty())
      call.fail(kTensorsAreNull, static_cast<long>(tensors.size()));
  Name inputArray;
  Name outputArray;
  const Name profileVariable = call.profile(profile);
  {
    const std::lock_guard lock(graph.executionMutex());
    writeTensors<Part::kInputTensor>(call, graph, variable, inputs);
    writeTensors<Part::kOutputTensor>(call, graph, variable, outputs);
    if (!call.hasFailed()) {
      inputArray = writeArray<Part::kInputTensor, Part::kInputTensors>(
          call, graph, variable, inputs.size());
      outputArray = writeArray<Part::kOutputTensor, Part::kOutputTensors>(
          call, graph, variable, outputs.size());
      graph.countExecution();
    }
  }
  return call.commit(
      {variable, inputArray, Argument::number(inputs.size()), outputArray,
       Argument::number(outputs.size()), profileVariable, Name{}},
      kGraphFailures);
}

}  // namespace kiv::recorders
