#include "hostile/random_caller.h"

#include <algorithm>

namespace kiv::test {
namespace {

using Ids = std::vector<std::uint32_t>;

// Neither freed nor in something that was.
bool isThere(const RandomCaller::Object* object) {
  while (object != nullptr && !object->isFreed) object = object->owner;
  return object == nullptr;
}

// Of the tensors that can be seen in an object.
Ids idsOf(const RandomCaller::Object* object) {
  Ids ids;
  for (; object != nullptr; object = object->owner)
    ids.insert(ids.end(), object->ids.begin(), object->ids.end());
  return ids;
}

std::span<const std::uint8_t> randomBinary(Source& source,
                                           RandomRecords& records) {
  const std::size_t size = source.below(32);
  if (size == 0 && source.oneIn(2)) return {};
  return {static_cast<const std::uint8_t*>(records.bytes(size)), size};
}

}  // namespace

// `o` is the object that the call is made with, `handle` its handle.
#define KIV_CALL(function, ...) \
#function, [](RandomCaller& c, [[maybe_unused]] Object* o,                 \
                [[maybe_unused]] void* handle) {                             \
    [[maybe_unused]] RandomRecords& r = c.records_;                          \
    return c.api_.function(__VA_ARGS__);                                     \
  }

std::span<const RandomCaller::Call> RandomCaller::fairCalls() {
  static constexpr Call kCalls[] = {
      {kNone, kNone, KIV_CALL(propertyHasCapability, r.border())},
      {kNone, kBackend,
       KIV_CALL(backendCreate, nullptr, r.configs(), c.newHandle())},
      {kBackend, kNone, KIV_CALL(backendSetConfig, handle, r.configs())},
      {kBackend, kNone,
       KIV_CALL(backendRegisterOpPackage, handle, r.anyText(), r.anyText(),
                r.anyText())},
      {kBackend, kNone,
       KIV_CALL(backendGetSupportedOperations, handle, c.wanted(), c.wanted())},
      {kBackend, kNone,
       KIV_CALL(backendValidateOpConfig, handle, r.make<Kiv_OpConfig_t>())},
      {kBackend, kNone, KIV_CALL(backendFree, handle), true},
      {kNone, kDevice,
       KIV_CALL(deviceCreate, nullptr, r.configs(), c.newHandle())},
      {kDevice, kNone, KIV_CALL(deviceSetConfig, handle, r.configs())},
      {kDevice, kNone, KIV_CALL(deviceGetInfo, handle, c.wanted())},
      {kNone, kNone, KIV_CALL(deviceGetPlatformInfo, nullptr, c.wanted())},
      {kNone, kNone, KIV_CALL(deviceGetInfrastructure, c.wanted())},
      {kDevice, kNone, KIV_CALL(deviceFree, handle), true},
      {kNone, kProfile,
       KIV_CALL(profileCreate, c.optional(kBackend), r.border(),
                c.newHandle())},
      {kProfile, kNone, KIV_CALL(profileSetConfig, handle, r.configs())},
      {kProfile, kNone,
       KIV_CALL(profileGetEvents, handle, c.wanted(), c.wanted())},
      {kNone, kNone,
       KIV_CALL(profileGetSubEvents, r.make<uint64_t>(), c.wanted(),
                c.wanted())},
      {kNone, kNone,
       KIV_CALL(profileGetEventData, r.make<uint64_t>(), c.wanted())},
      {kNone, kNone,
       KIV_CALL(profileGetExtendedEventData, r.make<uint64_t>(), c.wanted())},
      {kProfile, kNone, KIV_CALL(profileFree, handle), true},
      {kNone, kContext,
       KIV_CALL(contextCreate, c.optional(kBackend), c.optional(kDevice),
                r.configs(), c.newHandle())},
      {kData, kNone,
       KIV_CALL(contextValidateBinary, c.optional(kBackend),
                c.optional(kDevice), r.configs(), c.binary(),
                c.binary_.size())},
      {kData, kContext,
       KIV_CALL(contextCreateFromBinary, c.optional(kBackend),
                c.optional(kDevice), r.configs(), c.binary(), c.binary_.size(),
                c.newHandle(), c.optional(kProfile))},
      {kData, kContext,
       KIV_CALL(contextCreateFromBinaryWithSignal, c.optional(kBackend),
                c.optional(kDevice), r.configs(), c.binary(), c.binary_.size(),
                c.newHandle(), c.optional(kProfile), nullptr)},
      {kContext, kNone, KIV_CALL(contextSetConfig, handle, r.configs())},
      {kContext, kNone, KIV_CALL(contextGetBinarySize, handle, c.wanted())},
      {kContext, kNone, "contextGetBinary",
       [](RandomCaller& c, Object*, void* handle) {
         const std::uint32_t room = c.source_.below(64);
         Kiv_ContextBinarySize_t size = 0;
         return c.api_.contextGetBinary(
             handle, c.orNull(c.records_.bytes(room)), room, c.orNull(&size));
       }},
      {kContext, kNone, KIV_CALL(contextFree, handle, c.optional(kProfile)),
       true},
      {kGraph, kNone, KIV_CALL(graphSetConfig, handle, r.configs())},
      {kGraph, kNone,
       KIV_CALL(graphFinalize, handle, c.optional(kProfile), nullptr)},
      {kContext, kGraph,
       KIV_CALL(graphCreate, handle, c.graphName(o, true), r.configs(),
                c.newHandle())},
      {kGraph, kGraph,
       KIV_CALL(graphCreateSubgraph, handle, c.graphName(o, true),
                c.newHandle())},
      {kContext, kGraph,
       KIV_CALL(graphRetrieve, handle, c.graphName(o, false), c.newHandle())},
      {kGraph, kNone, KIV_CALL(graphAddNode, handle, r.make<Kiv_OpConfig_t>())},
      {kGraph, kNone, "graphExecute",
       [](RandomCaller& c, Object*, void* handle) {
         Kiv_Tensor_t* inputs = nullptr;
         Kiv_Tensor_t* outputs = nullptr;
         const std::uint32_t numInputs = c.records_.array(inputs, 3);
         const std::uint32_t numOutputs = c.records_.array(outputs, 3);
         return c.api_.graphExecute(handle, inputs, numInputs, outputs,
                                    numOutputs, c.optional(kProfile), nullptr);
       }},
      {kContext, kData,
       KIV_CALL(tensorCreateContextTensor, handle, c.newTensor())},
      {kGraph, kData, KIV_CALL(tensorCreateGraphTensor, handle, c.newTensor())},
  };
  return kCalls;
}

// Slots that are not offered read nothing, or the first word of a record.
std::span<const RandomCaller::Call> RandomCaller::hostileCalls() {
  static constexpr Call kCalls[] = {
      {kNone, kNone, KIV_CALL(backendGetApiVersion, c.wanted())},
      {kNone, kNone, KIV_CALL(backendGetBuildId, c.wanted())},
      {kGraph, kNone,
       KIV_CALL(graphPrepareEnvironment, handle,
                c.words<const KivGraph_EnvironmentDescriptor_t>(),
                c.source_.below(2))},
      {kGraph, kNone,
       KIV_CALL(graphGetProperty, handle, c.words<KivGraph_Property_t>())},
      {kGraph, kNone,
       KIV_CALL(graphExecuteAsync, handle, kTrap, 1, kTrap, 1, handle, handle,
                nullptr, kTrap)},
      {kContext, kNone, KIV_CALL(memRegister, handle, kTrap, 1, kTrap)},
      {kBackend, kNone, KIV_CALL(signalCreate, handle, kTrap, kTrap)},
      {kNone, kNone, KIV_CALL(errorGetMessage, r.border(), kTrap)},
      {kNone, kNone, KIV_CALL(errorFreeLongMessage, kTrap)},
      {kNone, kNone, KIV_CALL(deviceFreePlatformInfo, nullptr, kTrap)},
      {kGraph, kNone, KIV_CALL(laterOperation56, handle, kTrap)},
  };
  return kCalls;
}

// Half of the calls are of those at the table's end.
void RandomCaller::step() {
  const std::span<const Call> calls = fairCalls();
  if (hostile_ && source_.oneIn(12)) return make(source_.oneOf(hostileCalls()));
  make(source_.oneOf(source_.oneIn(2) ? calls.last(7) : calls));
}

// A recorder has no binary to give; its size and bytes are recorded all the
// same. Tensors are new when they are created, and refer to others later.
void RandomCaller::make(const Call& call) {
  Object* object = pick(call.with);
  const bool needsObject = call.with != kNone && call.with != kData;
  if (needsObject && object == nullptr)
    return make(*std::ranges::find(fairCalls(), call.with, &Call::creates));
  if (call.with == kData) binary_ = randomBinary(source_, records_);
  records_.setIds(call.creates == kData ? Ids() : idsOf(object));
  if (call.creates == kData) tensor_ = records_.make<Kiv_Tensor_t>();
  const auto code = call.make(*this, object, handleOf(object));
  if (code != KIV_SUCCESS && code != KIV_BACKEND_ERROR_NOTHING_TO_REPORT)
    failures_.push_back(call.name + (": " + std::to_string(code)));
  if (code != KIV_SUCCESS) return;
  if (call.frees) object->isFreed = true;
  if (call.creates == kData)
    object->ids.push_back(tensor_.v1.id);
  else if (call.creates != kNone)
    objects_.push_back({call.creates, created_, object});
}

RandomCaller::Object* RandomCaller::pick(Kind kind) {
  std::vector<Object*> candidates;
  for (Object& object : objects_)
    if (object.kind == kind && (hostile_ || isThere(&object)))
      candidates.push_back(&object);
  return candidates.empty() ? nullptr : source_.oneOf(candidates);
}

void* RandomCaller::handleOf(const Object* object) {
  const std::uint32_t choice = hostile_ ? source_.below(24) : 0;
  if (choice == 1) return nullptr;
  if (choice == 2) return source_.number<void*>();
  if (choice == 3)
    return reinterpret_cast<void*>(std::uintptr_t{source_.below(8)});
  if (choice == 4) object = pick(static_cast<Kind>(1 + source_.below(5)));
  return object == nullptr ? nullptr : object->handle;
}

void* RandomCaller::optional(Kind kind) {
  return source_.oneIn(3) ? nullptr : handleOf(pick(kind));
}

const char* RandomCaller::graphName(Object* owner, bool isNew) {
  while (owner->owner != nullptr) owner = owner->owner;
  const bool isKnown = !names_.empty() && source_.oneIn(4);
  std::string name = isKnown ? source_.oneOf(names_) : records_.text();
  while (isNew && !hostile_ && owner->graphNames.contains(name)) name += '_';
  owner->graphNames.insert(name);
  names_.push_back(name);
  return orNull(records_.keep(name));
}

}  // namespace kiv::test
