#include <chrono>
#include <utility>

#include "entries.h"
#include "entry.h"
#include "execution.h"
#include "log.h"
#include "objects.h"
#include "old_op_sets.h"
#include "profile.h"

namespace kiv::ort {
namespace {

constexpr auto kInvalidGraph = KIV_GRAPH_ERROR_INVALID_HANDLE;

using Clock = std::chrono::steady_clock;

std::uint64_t microsecondsSince(Clock::time_point start) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() -
                                                            start)
          .count());
}

void readConfigs(const KivGraph_Config_t** list) {
  forEachConfig(list, [](const KivGraph_Config_t& config) {
    if (config.option != KIV_GRAPH_CONFIG_OPTION_CUSTOM &&
        config.option != KIV_GRAPH_CONFIG_OPTION_PRIORITY) {
      refuse(
          KIV_GRAPH_ERROR_INVALID_ARGUMENT,
          "a config has the unknown option " + std::to_string(config.option));
    }
  });
}

void checkArguments(const char* name, const Kiv_GraphHandle_t* handle) {
  if (name == nullptr || handle == nullptr)
    refuse(KIV_GRAPH_ERROR_INVALID_ARGUMENT,
           "the name or the out-pointer is null");
}

void checkSignal(Kiv_SignalHandle_t signal) {
  if (signal != nullptr)
    refuse(KIV_COMMON_ERROR_NOT_SUPPORTED, "signals are not supported");
}

void checkOpen(const Graph& graph) {
  if (graph.main().session != nullptr)
    refuse(KIV_CONTEXT_ERROR_GENERAL, "the graph is finalized");
}

std::shared_ptr<Context> requireContext(Kiv_ContextHandle_t handle) {
  if (handle == nullptr)
    refuse(KIV_CONTEXT_ERROR_INVALID_HANDLE, "the handle is null");
  return require<Context>(handle, kInvalidGraph);
}

std::shared_ptr<Profile> optionalProfile(Kiv_ProfileHandle_t handle) {
  return optional<Profile>(handle, KIV_PROFILE_ERROR_INVALID_HANDLE);
}

// The graph's handle keeps its context alive while a call uses it.
Kiv_GraphHandle_t handleOf(const std::shared_ptr<Context>& context,
                           Graph& graph) {
  return Handles<Graph>::instance().add({context, &graph});
}

Kiv_ErrorHandle_t graphCreate(Kiv_ContextHandle_t contextHandle,
                              const char* name,
                              const KivGraph_Config_t** config,
                              Kiv_GraphHandle_t* handle) noexcept {
  return enter("graphCreate", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = requireContext(contextHandle);
    checkArguments(name, handle);
    readConfigs(config);
    const std::scoped_lock lock(context->mutex);
    *handle = handleOf(context, addGraph(*context, nullptr, name));
  });
}

Kiv_ErrorHandle_t graphCreateSubgraph(Kiv_GraphHandle_t parentHandle,
                                      const char* name,
                                      Kiv_GraphHandle_t* handle) noexcept {
  return enter("graphCreateSubgraph", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto parent = require<Graph>(parentHandle, kInvalidGraph);
    checkArguments(name, handle);
    const std::scoped_lock lock(parent->context->mutex);
    checkOpen(*parent);
    Graph& graph = addGraph(*parent->context, parent.get(), name);
    *handle = Handles<Graph>::instance().add({parent, &graph});
  });
}

Kiv_ErrorHandle_t graphSetConfig(Kiv_GraphHandle_t handle,
                                 const KivGraph_Config_t** config) noexcept {
  return enter("graphSetConfig", KIV_CONTEXT_ERROR_GENERAL, [&] {
    require<Graph>(handle, kInvalidGraph);
    readConfigs(config);
  });
}

Kiv_ErrorHandle_t graphAddNode(Kiv_GraphHandle_t handle,
                               Kiv_OpConfig_t config) noexcept {
  return enter("graphAddNode", KIV_BACKEND_ERROR_GENERAL, [&] {
    const auto graph = require<Graph>(handle, kInvalidGraph);
    const std::scoped_lock lock(graph->context->mutex);
    checkOpen(*graph);
    addNode(*graph, config);
  });
}

// A network of an old operator set is rewritten if ONNX Runtime does not take
// it as it is.
std::shared_ptr<const Session> createSession(const Graph& graph, Model model,
                                             bool timesNodes) {
  const std::shared_ptr<const OrtLibrary>& library = graph.context->library;
  const bool isOld = isOfOldOpSet(model.proto);
  try {
    return std::make_shared<const Session>(library, std::move(model),
                                           timesNodes);
  } catch (const Failure& failure) {
    if (!isOld) throw;
    log(KIV_LOG_LEVEL_INFO,
        "graph \"" + graph.name +
            "\" is rewritten for a later operator set: " + failure.what());
    try {
      return std::make_shared<const Session>(
          library, buildRewrittenModel(graph), timesNodes);
    } catch (const std::exception& second) {
      refuse(failure.code(),
             std::string(failure.what()) +
                 "; it cannot be rewritten for a later operator set: " +
                 second.what());
    }
  }
}

void finalize(Graph& graph, Profile* profile) {
  const auto start = Clock::now();
  Model model = buildModel(graph);
  const std::uint64_t building = microsecondsSince(start);
  const auto creating = Clock::now();
  graph.session = createSession(graph, std::move(model),
                                profile != nullptr && profile->timesNodes());
  if (profile == nullptr) return;
  const EventValues steps[] = {
      {EventType::kStep, "build model", building},
      {EventType::kStep, "create session", microsecondsSince(creating)}};
  profile->add({EventType::kFinalize, "finalize " + graph.name,
                microsecondsSince(start)},
               steps);
  profile->watch(graph.name, graph.session);
}

Kiv_ErrorHandle_t graphFinalize(Kiv_GraphHandle_t handle,
                                Kiv_ProfileHandle_t profileHandle,
                                Kiv_SignalHandle_t signal) noexcept {
  return enter("graphFinalize", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto graph = require<Graph>(handle, kInvalidGraph);
    const auto profile = optionalProfile(profileHandle);
    checkSignal(signal);
    if (graph->parent != nullptr)
      refuse(KIV_CONTEXT_ERROR_GENERAL,
             "a subgraph is finalized with the graph above it");
    const std::scoped_lock lock(graph->context->mutex);
    checkOpen(*graph);
    finalize(*graph, profile.get());
  });
}

Kiv_ErrorHandle_t graphRetrieve(Kiv_ContextHandle_t contextHandle,
                                const char* name,
                                Kiv_GraphHandle_t* handle) noexcept {
  return enter("graphRetrieve", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = requireContext(contextHandle);
    checkArguments(name, handle);
    const std::scoped_lock lock(context->mutex);
    Graph* graph = findGraph(*context, name);
    if (graph == nullptr)
      refuse(KIV_GRAPH_ERROR_INVALID_ARGUMENT,
             "the context has no graph \"" + std::string(name) + "\"");
    *handle = handleOf(context, *graph);
  });
}

template <typename Record>
std::span<Record> tensors(Record* records, std::uint32_t count) {
  if (records == nullptr && count > 0)
    refuse(KIV_BACKEND_ERROR_INVALID_ARGUMENT,
           "a list of tensors is null, its count is not");
  return {records, count};
}

std::shared_ptr<const Session> sessionOf(const Graph& graph) {
  const std::scoped_lock lock(graph.context->mutex);
  if (graph.session == nullptr)
    refuse(KIV_GRAPH_ERROR_INVALID_ARGUMENT,
           "the graph \"" + graph.name + "\" is not finalized");
  return graph.session;
}

void addEvent(Profile* profile, const std::string& graph,
              const RunTimes& times) {
  if (profile == nullptr) return;
  const EventValues steps[] = {
      {EventType::kStep, "compute", times.computing},
      {EventType::kStep, "copy outputs", times.copying}};
  profile->add({EventType::kExecute, "execute " + graph, times.total}, steps);
}

Kiv_ErrorHandle_t graphExecute(Kiv_GraphHandle_t handle,
                               const Kiv_Tensor_t* inputs, uint32_t numInputs,
                               Kiv_Tensor_t* outputs, uint32_t numOutputs,
                               Kiv_ProfileHandle_t profileHandle,
                               Kiv_SignalHandle_t signal) noexcept {
  return enter("graphExecute", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto graph = require<Graph>(handle, kInvalidGraph);
    const auto profile = optionalProfile(profileHandle);
    checkSignal(signal);
    const auto results = tensors(outputs, numOutputs);
    Execution execution(sessionOf(*graph), tensors(inputs, numInputs), results);
    addEvent(profile.get(), graph->name, execution.run());
    for (Kiv_Tensor_t& result : results)
      if (result.version == KIV_TENSOR_VERSION_2) result.v2.isProduced = 1;
  });
}

// The records are read before the call returns; their buffers must stay until
// the notification.
Kiv_ErrorHandle_t graphExecuteAsync(
    Kiv_GraphHandle_t handle, const Kiv_Tensor_t* inputs, uint32_t numInputs,
    Kiv_Tensor_t* outputs, uint32_t numOutputs,
    Kiv_ProfileHandle_t profileHandle, Kiv_SignalHandle_t signal,
    KivGraph_NotifyFn_t notify, void* argument) noexcept {
  return enter("graphExecuteAsync", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto graph = require<Graph>(handle, kInvalidGraph);
    const auto profile = optionalProfile(profileHandle);
    checkSignal(signal);
    const auto execution = std::make_shared<Execution>(
        sessionOf(*graph), tensors(inputs, numInputs),
        tensors<const Kiv_Tensor_t>(outputs, numOutputs));
    const auto task = [execution, profile, name = graph->name, notify,
                       argument] {
      const Kiv_ErrorHandle_t status =
          enter("graphExecuteAsync", KIV_CONTEXT_ERROR_GENERAL,
                [&] { addEvent(profile.get(), name, execution->run()); });
      if (notify != nullptr) notify(argument, status);
    };
    workerOf(*graph->context).post(task);
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
}

}  // namespace kiv::ort
