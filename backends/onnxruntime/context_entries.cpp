#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include "context_binary.h"
#include "entries.h"
#include "entry.h"
#include "execution.h"
#include "objects.h"
#include "profile.h"

namespace kiv::ort {
namespace {

using Size = Kiv_ContextBinarySize_t;
using Clock = std::chrono::steady_clock;

constexpr auto kInvalidContext = KIV_CONTEXT_ERROR_INVALID_HANDLE;

struct Options {
  std::uint32_t queueDepth = 0;
  // The graphs to load; all if there is no such option.
  std::optional<std::set<std::string>> graphs;
};

std::set<std::string> names(const char* const* list) {
  std::set<std::string> names;
  for (; list != nullptr && *list != nullptr; ++list) names.insert(*list);
  return names;
}

// Priorities, hints and reports of errors are taken and have no effect.
void readConfigs(const KivContext_Config_t** list, Options& options) {
  forEachConfig(list, [&](const KivContext_Config_t& config) {
    switch (config.option) {
      case KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH:
        options.queueDepth = config.asyncExeQueueDepth.depth;
        return;
      case KIV_CONTEXT_CONFIG_ENABLE_GRAPHS:
        options.graphs = names(config.enableGraphs);
        return;
      case KIV_CONTEXT_CONFIG_OPTION_CUSTOM:
      case KIV_CONTEXT_CONFIG_OPTION_PRIORITY:
      case KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING:
      case KIV_CONTEXT_CONFIG_OPTION_OEM_STRING:
      case KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT:
      case KIV_CONTEXT_CONFIG_PERSISTENT_BINARY:
        return;
      default:
        refuse(
            KIV_CONTEXT_ERROR_INVALID_ARGUMENT,
            "a config has the unknown option " + std::to_string(config.option));
    }
  });
}

// A context without a backend has no operator sets but the newest.
std::shared_ptr<Context> makeContext(Kiv_BackendHandle_t backendHandle,
                                     Kiv_DeviceHandle_t device) {
  const auto backend =
      optional<Backend>(backendHandle, KIV_BACKEND_ERROR_INVALID_HANDLE);
  optional<Device>(device, KIV_DEVICE_ERROR_INVALID_HANDLE);
  auto context = std::make_shared<Context>();
  if (backend == nullptr) {
    context->library = OrtLibrary::get();
    context->builder.opsets().setNewest(context->library->newestOpset());
    return context;
  }
  const std::scoped_lock lock(backend->mutex);
  context->library = backend->library;
  context->builder.opsets() = backend->opsets;
  return context;
}

void checkOutPointer(Kiv_ContextHandle_t* handle) {
  if (handle == nullptr)
    refuse(KIV_CONTEXT_ERROR_INVALID_ARGUMENT, "the out-pointer is null");
  *handle = nullptr;
}

Kiv_ErrorHandle_t contextCreate(Kiv_BackendHandle_t backend,
                                Kiv_DeviceHandle_t device,
                                const KivContext_Config_t** config,
                                Kiv_ContextHandle_t* handle) noexcept {
  return enter("contextCreate", KIV_CONTEXT_ERROR_GENERAL, [&] {
    checkOutPointer(handle);
    Options options;
    readConfigs(config, options);
    auto context = makeContext(backend, device);
    context->queueDepth = options.queueDepth;
    *handle = Handles<Context>::instance().add(std::move(context));
  });
}

Kiv_ErrorHandle_t contextSetConfig(
    Kiv_ContextHandle_t handle, const KivContext_Config_t** config) noexcept {
  return enter("contextSetConfig", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = require<Context>(handle, kInvalidContext);
    const std::scoped_lock lock(context->mutex);
    Options options;
    options.queueDepth = context->queueDepth;
    readConfigs(config, options);
    context->queueDepth = options.queueDepth;
  });
}

Bytes binaryOf(Context& context) {
  const std::scoped_lock lock(context.mutex);
  std::vector<const Model*> models;
  for (const auto& graph : context.graphs) {
    if (graph->session == nullptr)
      refuse(KIV_CONTEXT_ERROR_GENERAL,
             "the graph \"" + graph->name + "\" is not finalized");
    models.push_back(&graph->session->model());
  }
  return writeBinary(models);
}

Kiv_ErrorHandle_t contextGetBinarySize(Kiv_ContextHandle_t handle,
                                       Size* size) noexcept {
  return enter("contextGetBinarySize", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = require<Context>(handle, kInvalidContext);
    if (size == nullptr)
      refuse(KIV_CONTEXT_ERROR_INVALID_ARGUMENT, "the out-pointer is null");
    *size = binaryOf(*context).size();
  });
}

Kiv_ErrorHandle_t contextGetBinary(Kiv_ContextHandle_t handle, void* buffer,
                                   Size bufferSize, Size* written) noexcept {
  return enter("contextGetBinary", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = require<Context>(handle, kInvalidContext);
    if (buffer == nullptr || written == nullptr)
      refuse(KIV_CONTEXT_ERROR_INVALID_ARGUMENT,
             "the buffer or the out-pointer is null");
    *written = 0;
    const Bytes binary = binaryOf(*context);
    if (binary.size() > bufferSize) {
      refuse(KIV_CONTEXT_ERROR_GENERAL,
             "the binary takes " + std::to_string(binary.size()) +
                 " bytes, the buffer has " + std::to_string(bufferSize));
    }
    std::memcpy(buffer, binary.data(), binary.size());
    *written = binary.size();
  });
}

std::span<const std::uint8_t> bytesOf(const void* binary, Size size) {
  if (binary == nullptr && size > 0)
    refuse(KIV_CONTEXT_ERROR_BINARY, "the binary is null");
  return {static_cast<const std::uint8_t*>(binary), size};
}

void addGraphs(Context& context, std::vector<Model> models,
               const Options& options, Profile* profile) {
  for (Model& model : models) {
    const std::string name = model.proto.graph().name();
    if (options.graphs && !options.graphs->contains(name)) continue;
    Graph& graph = addGraph(context, nullptr, name);
    graph.session = std::make_shared<const Session>(
        context.library, std::move(model),
        profile != nullptr && profile->timesNodes());
    if (profile != nullptr) profile->watch(name, graph.session);
  }
}

Kiv_ErrorHandle_t contextCreateFromBinary(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary, Size size,
    Kiv_ContextHandle_t* handle, Kiv_ProfileHandle_t profileHandle) noexcept {
  return enter("contextCreateFromBinary", KIV_CONTEXT_ERROR_BINARY, [&] {
    checkOutPointer(handle);
    const auto profile =
        optional<Profile>(profileHandle, KIV_PROFILE_ERROR_INVALID_HANDLE);
    Options options;
    readConfigs(config, options);
    const auto start = Clock::now();
    auto context = makeContext(backend, device);
    context->queueDepth = options.queueDepth;
    addGraphs(*context, readBinary(bytesOf(binary, size)), options,
              profile.get());
    if (profile != nullptr) {
      const auto time = std::chrono::duration_cast<std::chrono::microseconds>(
          Clock::now() - start);
      profile->add(
          {EventType::kLoad, "load", static_cast<std::uint64_t>(time.count())},
          {});
    }
    *handle = Handles<Context>::instance().add(std::move(context));
  });
}

Kiv_ErrorHandle_t contextValidateBinary(Kiv_BackendHandle_t backend,
                                        Kiv_DeviceHandle_t device,
                                        const KivContext_Config_t** config,
                                        const void* binary,
                                        Size size) noexcept {
  return enter("contextValidateBinary", kInvalidContext, [&] {
    Options options;
    readConfigs(config, options);
    const auto context = makeContext(backend, device);
    try {
      addGraphs(*context, readBinary(bytesOf(binary, size)), options, nullptr);
    } catch (const Failure& failure) {
      refuse(kInvalidContext, failure.what());
    }
  });
}

// Asynchronous executions of the context end before the call does.
Kiv_ErrorHandle_t contextFree(Kiv_ContextHandle_t handle,
                              Kiv_ProfileHandle_t profileHandle) noexcept {
  return enter("contextFree", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto context = require<Context>(handle, kInvalidContext);
    const auto profile =
        optional<Profile>(profileHandle, KIV_PROFILE_ERROR_INVALID_HANDLE);
    if (profile != nullptr) profile->collectNodes();
    Handles<Graph>::instance().removeIf(
        [&](const Graph& graph) { return graph.context == context.get(); });
    Handles<Context>::instance().remove(handle);
  });
}

}  // namespace

void addContextEntries(KivInterface_Implementation_t& table) {
  table.contextCreate = contextCreate;
  table.contextSetConfig = contextSetConfig;
  table.contextGetBinarySize = contextGetBinarySize;
  table.contextGetBinary = contextGetBinary;
  table.contextCreateFromBinary = contextCreateFromBinary;
  table.contextValidateBinary = contextValidateBinary;
  table.contextFree = contextFree;
}

}  // namespace kiv::ort
