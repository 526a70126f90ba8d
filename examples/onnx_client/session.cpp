#include "session.h"

#include <algorithm>
#include <utility>

#include "api_call.h"
#include "errors.h"
#include "files.h"
#include "profile_events.h"

namespace onnx_client {
namespace {

// The least size of the buffer for a binary: some libraries do not know the
// binary's size beforehand.
constexpr Kiv_ContextBinarySize_t kSmallestBuffer = 1 << 20;

// A config list of at most one record; null for none.
template <typename Config>
class ConfigList {
 public:
  ConfigList() = default;
  explicit ConfigList(const Config& config) : config_(config), given_(true) {}

  const Config** get() { return given_ ? list_ : nullptr; }

 private:
  Config config_{};
  bool given_ = false;
  const Config* list_[2] = {&config_, nullptr};
};

template <typename Config, typename Option>
ConfigList<Config> priorityConfig(Option option,
                                  std::optional<std::uint32_t> priority) {
  if (!priority) return {};
  Config config{};
  config.option = option;
  config.priority = static_cast<Kiv_Priority_t>(*priority);
  return ConfigList<Config>(config);
}

// The operator sets as platform options, "onnx.opset:13" for the default
// domain's and "onnx.opset.ai.onnx.ml:3" for another one.
class OpSetConfigs {
 public:
  explicit OpSetConfigs(const std::vector<OpSet>& opSets) {
    for (const OpSet& opSet : opSets) options_.push_back(optionOf(opSet));
    for (const std::string& option : options_) {
      KivBackend_Config_t config{};
      config.option = KIV_BACKEND_CONFIG_OPTION_PLATFORM;
      config.platformOption = option.c_str();
      configs_.push_back(config);
    }
    for (const KivBackend_Config_t& config : configs_) list_.push_back(&config);
    list_.push_back(nullptr);
  }
  OpSetConfigs(const OpSetConfigs&) = delete;
  OpSetConfigs& operator=(const OpSetConfigs&) = delete;

  const KivBackend_Config_t** get() { return list_.data(); }

 private:
  static std::string optionOf(const OpSet& opSet) {
    const bool isDefault = opSet.package == kDefaultPackage;
    return "onnx.opset" + (isDefault ? "" : "." + opSet.package) + ":" +
           std::to_string(opSet.version);
  }

  std::vector<std::string> options_;
  std::vector<KivBackend_Config_t> configs_;
  std::vector<const KivBackend_Config_t*> list_;
};

ConfigList<KivContext_Config_t> contextConfig(const Options& options) {
  return priorityConfig<KivContext_Config_t>(KIV_CONTEXT_CONFIG_OPTION_PRIORITY,
                                             options.priority);
}

ConfigList<KivGraph_Config_t> graphConfig(const Options& options) {
  return priorityConfig<KivGraph_Config_t>(KIV_GRAPH_CONFIG_OPTION_PRIORITY,
                                           options.priority);
}

}  // namespace

Session::Session(const Api& api, const Options& options)
    : api_(api), options_(options) {}

Session::~Session() {
  while (isOpen()) {
    try {
      close();
    } catch (const ClientError&) {
      // The first failure has been reported; free the rest.
    }
  }
}

void Session::open(Network& network) {
  OpSetConfigs opSets(network.opSets);
  call("backendCreate", api_.backendCreate, nullptr, opSets.get(), &backend_);
  if (options_.device) openDevice();
  if (options_.profileLevel) {
    call("profileCreate", api_.profileCreate, backend_, *options_.profileLevel,
         &profile_);
  }
  if (options_.fromBinary.empty()) {
    buildGraph(network);
  } else {
    loadGraph(network);
  }
  if (!options_.saveBinary.empty()) saveBinary(network.notes);
}

void Session::execute(Execution& execution, Results& results) {
  Progress progress;
  for (std::uint32_t i = 0; i < options_.executions; ++i) {
    execution.prepare();
    std::vector<Kiv_Tensor_t> inputs = execution.inputs();
    std::vector<Kiv_Tensor_t> outputs = execution.outputs();
    call("graphExecute", api_.graphExecute, graph_, inputs.data(),
         static_cast<std::uint32_t>(inputs.size()), outputs.data(),
         static_cast<std::uint32_t>(outputs.size()), profile_, nullptr);
    results.take(i, outputs);
    totals_.bytes += execution.bytes();
    progress.report("executions done", i + 1);
  }
  if (profile_ != nullptr) listEvents(api_, profile_);
}

// Each handle is set to null before it is freed, so that none is freed twice.
void Session::close() {
  graph_ = nullptr;
  if (context_ != nullptr) {
    call("contextFree", api_.contextFree, std::exchange(context_, nullptr),
         profile_);
  }
  if (profile_ != nullptr)
    call("profileFree", api_.profileFree, std::exchange(profile_, nullptr));
  if (device_ != nullptr)
    call("deviceFree", api_.deviceFree, std::exchange(device_, nullptr));
  if (backend_ != nullptr)
    call("backendFree", api_.backendFree, std::exchange(backend_, nullptr));
}

void Session::openDevice() {
  const KivDevice_PlatformInfo_t* info = nullptr;
  call("deviceGetPlatformInfo", api_.deviceGetPlatformInfo, nullptr, &info);
  call("deviceCreate", api_.deviceCreate, nullptr, nullptr, &device_);
  call("deviceGetInfo", api_.deviceGetInfo, device_, &info);
}

void Session::buildGraph(Network& network) {
  auto forContext = contextConfig(options_);
  auto forGraph = graphConfig(options_);
  call("contextCreate", api_.contextCreate, backend_, device_, forContext.get(),
       &context_);
  call("graphCreate", api_.graphCreate, context_, network.graph.name.c_str(),
       forGraph.get(), &graph_);
  GraphBuilder(api_, context_, network, totals_).build(network.graph, graph_);
  call("graphFinalize", api_.graphFinalize, graph_, profile_, nullptr);
}

void Session::loadGraph(const Network& network) {
  const std::string binary = readFile(options_.fromBinary);
  auto config = contextConfig(options_);
  call("contextCreateFromBinary", api_.contextCreateFromBinary, backend_,
       device_, config.get(), binary.data(),
       static_cast<Kiv_ContextBinarySize_t>(binary.size()), &context_,
       profile_);
  call("graphRetrieve", api_.graphRetrieve, context_,
       network.graph.name.c_str(), &graph_);
}

// A recorder has no binary, but records that one is to be saved.
void Session::saveBinary(std::vector<std::string>& notes) {
  std::vector<std::uint8_t> buffer(std::max(binarySize(), kSmallestBuffer));
  Kiv_ContextBinarySize_t written = 0;
  const std::uint32_t code =
      tryCall("contextGetBinary", api_.contextGetBinary, context_,
              buffer.data(), buffer.size(), &written);
  if (code == KIV_BACKEND_ERROR_NOTHING_TO_REPORT) {
    notes.emplace_back("the library has no binary to save");
    return;
  }
  if (code != KIV_SUCCESS) throwFailure("contextGetBinary", code);
  if (written > buffer.size())
    throw ClientError("contextGetBinary wrote more than its buffer holds");
  writeFile(options_.saveBinary, std::span(buffer).first(written));
}

Kiv_ContextBinarySize_t Session::binarySize() {
  Kiv_ContextBinarySize_t size = 0;
  const std::uint32_t code = tryCall(
      "contextGetBinarySize", api_.contextGetBinarySize, context_, &size);
  if (code == KIV_BACKEND_ERROR_NOTHING_TO_REPORT) return 0;
  if (code != KIV_SUCCESS) throwFailure("contextGetBinarySize", code);
  return size;
}

bool Session::isOpen() const {
  return context_ != nullptr || profile_ != nullptr || device_ != nullptr ||
         backend_ != nullptr;
}

}  // namespace onnx_client
