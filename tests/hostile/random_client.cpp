#include "hostile/random_client.h"

#include <algorithm>

namespace kiv::test {

RandomClient::RandomClient(const KivInterface_Implementation_t& api,
                           Source& source, Manner manner)
    : api_(api),
      source_(source),
      hostile_(manner == Manner::kHostile),
      records_(source, hostile_) {}

void RandomClient::run() {
  while (!source_.isEmpty()) step();
}

void RandomClient::step() {
  using Calls = void (RandomClient::*)();
  static constexpr Calls kCalls[] = {
      &RandomClient::backendCalls,   &RandomClient::contextCreation,
      &RandomClient::graphCreation,  &RandomClient::tensorCreation,
      &RandomClient::tensorCreation, &RandomClient::graphCalls,
      &RandomClient::graphCalls,     &RandomClient::execution,
      &RandomClient::contextCalls,   &RandomClient::deviceCalls,
      &RandomClient::profileCalls,   &RandomClient::eventCalls,
      &RandomClient::otherCalls};
  (this->*kCalls[source_.below(std::size(kCalls))])();
}

// A recorder has no binary to give; its size and bytes are recorded all the
// same.
bool RandomClient::note(const char* function, Kiv_ErrorHandle_t code) {
  if (code == KIV_SUCCESS) return true;
  if (code != KIV_BACKEND_ERROR_NOTHING_TO_REPORT)
    failures_.push_back(function + (": " + std::to_string(code)));
  return false;
}

RandomClient::Object* RandomClient::pick(Kind kind) {
  const auto& all = objects_[kind];
  std::vector<Object*> candidates;
  std::ranges::copy_if(
      all, std::back_inserter(candidates),
      [this](const Object* object) { return hostile_ || !object->isFreed; });
  if (candidates.empty()) return nullptr;
  return candidates[source_.below(256) % candidates.size()];
}

void* RandomClient::handleOf(const Object* object, Kind kind) {
  if (hostile_) {
    switch (source_.below(24)) {
      case 1:
        return nullptr;
      case 2:
        return source_.number<void*>();
      case 3:
        return reinterpret_cast<void*>(std::uintptr_t{source_.below(8)});
      case 4:
        object = pick(static_cast<Kind>((kind + 1 + source_.below(4)) % 5));
        break;
      default:
        break;
    }
  }
  return object == nullptr ? nullptr : object->handle;
}

void* RandomClient::optional(Kind kind) {
  return source_.oneIn(3) ? nullptr : handleOf(pick(kind), kind);
}

RandomClient::Object* RandomClient::add(Kind kind, void* handle) {
  memory_.push_back(std::make_unique<Object>());
  memory_.back()->handle = handle;
  return objects_[kind].emplace_back(memory_.back().get());
}

void RandomClient::release(Object* object, Kind kind) {
  if (object == nullptr) return;
  object->isFreed = true;
  if (kind != kContext) return;
  for (Object* graph : objects_[kGraph])
    if (graph->context == object) graph->isFreed = true;
}

std::vector<std::uint32_t> RandomClient::idsOf(const Object* object) {
  std::vector<std::uint32_t> ids;
  for (; object != nullptr; object = object->outer)
    ids.insert(ids.end(), object->ids.begin(), object->ids.end());
  return ids;
}

void RandomClient::backendCalls() {
  Object* backend = pick(kBackend);
  if (backend == nullptr || source_.oneIn(6)) {
    void* handle = nullptr;
    if (note("backendCreate",
             api_.backendCreate(optional(kBackend), records_.backendConfigs(),
                                orNull(&handle))))
      add(kBackend, handle);
    return;
  }
  void* handle = handleOf(backend, kBackend);
  uint32_t count = 0;
  const KivBackend_OperationName_t* operations = nullptr;
  switch (source_.below(5)) {
    case 0:
      note("backendSetConfig",
           api_.backendSetConfig(handle, records_.backendConfigs()));
      break;
    case 1:
      note("backendRegisterOpPackage",
           api_.backendRegisterOpPackage(handle, records_.anyText(),
                                         records_.anyText(),
                                         records_.anyText()));
      break;
    case 2:
      note("backendGetSupportedOperations",
           api_.backendGetSupportedOperations(handle, wanted(&count),
                                              wanted(&operations)));
      break;
    case 3:
      note("backendValidateOpConfig",
           api_.backendValidateOpConfig(handle, records_.opConfig({})));
      break;
    default:
      // A null one is not there to be freed.
      if (source_.oneIn(4) && note("backendFree", api_.backendFree(handle)))
        release(backend, kBackend);
  }
}

void RandomClient::deviceCalls() {
  Object* device = pick(kDevice);
  const KivDevice_PlatformInfo_t* info = nullptr;
  if (device == nullptr || source_.oneIn(6)) {
    void* handle = nullptr;
    if (note("deviceCreate",
             api_.deviceCreate(optional(kBackend), records_.deviceConfigs(),
                               orNull(&handle))))
      add(kDevice, handle);
    return;
  }
  void* handle = handleOf(device, kDevice);
  KivDevice_Infrastructure_t infrastructure = nullptr;
  switch (source_.below(5)) {
    case 0:
      note("deviceSetConfig",
           api_.deviceSetConfig(handle, records_.deviceConfigs()));
      break;
    case 1:
      note("deviceGetInfo", api_.deviceGetInfo(handle, wanted(&info)));
      break;
    case 2:
      note("deviceGetPlatformInfo",
           api_.deviceGetPlatformInfo(nullptr, wanted(&info)));
      break;
    case 3:
      note("deviceGetInfrastructure",
           api_.deviceGetInfrastructure(wanted(&infrastructure)));
      break;
    default:
      if (source_.oneIn(3) && note("deviceFree", api_.deviceFree(handle)))
        release(device, kDevice);
  }
}

void RandomClient::profileCalls() {
  Object* profile = pick(kProfile);
  if (profile == nullptr || source_.oneIn(6)) {
    void* handle = nullptr;
    if (note("profileCreate",
             api_.profileCreate(optional(kBackend), records_.border(),
                                orNull(&handle))))
      add(kProfile, handle);
    return;
  }
  void* handle = handleOf(profile, kProfile);
  const KivProfile_EventId_t* events = nullptr;
  uint32_t count = 0;
  switch (source_.below(3)) {
    case 0:
      note("profileSetConfig",
           api_.profileSetConfig(handle, records_.profileConfigs()));
      break;
    case 1:
      note("profileGetEvents",
           api_.profileGetEvents(handle, wanted(&events), wanted(&count)));
      break;
    default:
      if (source_.oneIn(3) && note("profileFree", api_.profileFree(handle)))
        release(profile, kProfile);
  }
}

void RandomClient::eventCalls() {
  const auto event = source_.number<KivProfile_EventId_t>();
  const KivProfile_EventId_t* events = nullptr;
  uint32_t count = 0;
  KivProfile_EventData_t data{};
  KivProfile_ExtendedEventData_t extended{};
  switch (source_.below(4)) {
    case 0:
      note("profileGetSubEvents",
           api_.profileGetSubEvents(event, wanted(&events), wanted(&count)));
      break;
    case 1:
      note("profileGetEventData",
           api_.profileGetEventData(event, wanted(&data)));
      break;
    case 2:
      note("profileGetExtendedEventData",
           api_.profileGetExtendedEventData(event, wanted(&extended)));
      break;
    default:
      note("propertyHasCapability",
           api_.propertyHasCapability(static_cast<std::uint32_t>(event)));
  }
}

void RandomClient::contextCreation() {
  void* backend = optional(kBackend);
  void* device = optional(kDevice);
  const KivContext_Config_t** configs = records_.contextConfigs();
  const std::size_t size = source_.below(32);
  const void* binary =
      size == 0 && source_.oneIn(2) ? nullptr : records_.bytes(size);
  if (hostile_ && source_.oneIn(16)) binary = nullptr;
  void* handle = nullptr;
  void** out = orNull(&handle);
  void* profile = optional(kProfile);
  bool created = false;
  switch (source_.below(5)) {
    case 0:
      note("contextValidateBinary",
           api_.contextValidateBinary(backend, device, configs, binary, size));
      break;
    case 1:
      created = note("contextCreateFromBinary",
                     api_.contextCreateFromBinary(backend, device, configs,
                                                  binary, size, out, profile));
      break;
    case 2:
      created =
          note("contextCreateFromBinaryWithSignal",
               api_.contextCreateFromBinaryWithSignal(
                   backend, device, configs, binary, size, out, profile, {}));
      break;
    default:
      created = note("contextCreate",
                     api_.contextCreate(backend, device, configs, out));
  }
  if (created) add(kContext, handle);
}

void RandomClient::contextCalls() {
  Object* context = pick(kContext);
  if (context == nullptr) return contextCreation();
  void* handle = handleOf(context, kContext);
  Kiv_ContextBinarySize_t size = 0;
  switch (source_.below(4)) {
    case 0:
      note("contextSetConfig",
           api_.contextSetConfig(handle, records_.contextConfigs()));
      break;
    case 1:
      note("contextGetBinarySize",
           api_.contextGetBinarySize(handle, wanted(&size)));
      break;
    case 2: {
      const std::uint32_t room = source_.below(64);
      note("contextGetBinary",
           api_.contextGetBinary(handle, orNull(records_.bytes(room)), room,
                                 orNull(&size)));
      break;
    }
    default:
      if (source_.oneIn(3) &&
          note("contextFree", api_.contextFree(handle, optional(kProfile))))
        release(context, kContext);
  }
}

void RandomClient::graphCreation() {
  Object* parent = source_.oneIn(4) ? pick(kGraph) : nullptr;
  Object* context =
      parent != nullptr ? const_cast<Object*>(parent->context) : pick(kContext);
  if (context == nullptr) return contextCreation();
  // One of the names that there are, in this context or in another, or a new
  // one.
  const bool isKnown = !names_.empty() && source_.oneIn(4);
  const char* name = orNull(isKnown ? names_[source_.below(256) % names_.size()]
                                    : records_.nonNullText());
  const std::string text = name == nullptr ? "" : name;
  const bool isNew = !context->graphNames.contains(text);
  if (!isNew && !hostile_ && parent != nullptr) return;
  void* handle = nullptr;
  void** out = orNull(&handle);
  bool created = false;
  if (parent != nullptr) {
    created =
        note("graphCreateSubgraph",
             api_.graphCreateSubgraph(handleOf(parent, kGraph), name, out));
  } else if (source_.oneIn(4) || (!hostile_ && !isNew)) {
    created = note("graphRetrieve",
                   api_.graphRetrieve(handleOf(context, kContext), name, out));
  } else {
    created =
        note("graphCreate", api_.graphCreate(handleOf(context, kContext), name,
                                             records_.graphConfigs(), out));
  }
  if (!created || !isNew) return;
  context->graphNames.insert(text);
  names_.push_back(name);
  Object* graph = add(kGraph, handle);
  graph->context = context;
  graph->outer = parent != nullptr ? parent : context;
}

void RandomClient::graphCalls() {
  Object* graph = pick(kGraph);
  if (graph == nullptr) return graphCreation();
  void* handle = handleOf(graph, kGraph);
  switch (source_.below(6)) {
    case 0:
      note("graphSetConfig",
           api_.graphSetConfig(handle, records_.graphConfigs()));
      break;
    case 1:
      note("graphFinalize",
           api_.graphFinalize(handle, optional(kProfile), nullptr));
      break;
    default:
      note("graphAddNode",
           api_.graphAddNode(handle, records_.opConfig(idsOf(graph))));
  }
}

void RandomClient::execution() {
  Object* graph = pick(kGraph);
  if (graph == nullptr) return graphCreation();
  const std::vector<std::uint32_t> ids = idsOf(graph);
  const auto tensor = [&] { return records_.tensor(ids); };
  Kiv_Tensor_t* inputs = nullptr;
  Kiv_Tensor_t* outputs = nullptr;
  const std::uint32_t numInputs = records_.array(inputs, 3, tensor);
  const std::uint32_t numOutputs = records_.array(outputs, 3, tensor);
  note("graphExecute",
       api_.graphExecute(handleOf(graph, kGraph), inputs, numInputs, outputs,
                         numOutputs, optional(kProfile), nullptr));
}

void RandomClient::tensorCreation() {
  const bool inGraph = !source_.oneIn(3);
  Object* owner = pick(inGraph ? kGraph : kContext);
  if (owner == nullptr) return graphCreation();
  Kiv_Tensor_t tensor = records_.tensor({});
  void* handle = handleOf(owner, inGraph ? kGraph : kContext);
  Kiv_Tensor_t* argument = orNull(&tensor);
  const bool created =
      inGraph ? note("tensorCreateGraphTensor",
                     api_.tensorCreateGraphTensor(handle, argument))
              : note("tensorCreateContextTensor",
                     api_.tensorCreateContextTensor(handle, argument));
  if (created) owner->ids.push_back(tensor.v1.id);
}

// Slots that are not offered read nothing, or the first word of a record.
void RandomClient::otherCalls() {
  if (!hostile_) return;
  void* handle = handleOf(pick(kGraph), kGraph);
  std::uint32_t word = records_.border();
  auto* descriptor = reinterpret_cast<KivGraph_EnvironmentDescriptor_t*>(&word);
  const KivGraph_EnvironmentDescriptor_t* descriptors[] = {orNull(descriptor)};
  auto* property = orNull(reinterpret_cast<KivGraph_Property_t*>(&word));
  Kiv_ApiVersion_t version{};
  const char* text = nullptr;
  switch (source_.below(11)) {
    case 0:
      api_.graphPrepareEnvironment(handle, orNull(&descriptors[0]),
                                   records_.border() == 0 ? 0 : 1);
      break;
    case 1:
      api_.graphGetProperty(handle, orNull(&property));
      break;
    case 2:
      api_.backendGetApiVersion(orNull(&version));
      break;
    case 3:
      api_.backendGetBuildId(orNull(&text));
      break;
    case 4:
      api_.graphExecuteAsync(handle, trap<Kiv_Tensor_t*>(), word,
                             trap<Kiv_Tensor_t*>(), word, handle, handle,
                             nullptr, trap<void*>());
      break;
    case 5:
      api_.memRegister(handle, trap<KivMem_Descriptor_t*>(), word,
                       trap<Kiv_MemHandle_t*>());
      break;
    case 6:
      api_.signalCreate(handle, trap<const KivSignal_Config_t**>(),
                        trap<Kiv_SignalHandle_t*>());
      break;
    case 7:
      api_.errorGetMessage(word, trap<const char**>());
      break;
    case 8:
      api_.errorFreeLongMessage(trap<const char*>());
      break;
    case 9:
      api_.deviceFreePlatformInfo(handle,
                                  trap<const KivDevice_PlatformInfo_t*>());
      break;
    default:
      api_.laterOperation56(trap<void*>(), trap<void*>());
  }
}

}  // namespace kiv::test
