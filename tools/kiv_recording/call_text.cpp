#include "kiv_recording/call_text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace kiv::tool {
namespace {

using format::ArgumentKind;
using recording::Arguments;
using recording::Value;

// A handle is its kind's index + 1 in the upper half and its number + 1 in the
// lower one.
struct Kind {
  std::string_view type;
  std::string_view name;
};
constexpr std::array<Kind, 5> kKinds = {{
    {"Kiv_BackendHandle_t", "backend"},
    {"Kiv_DeviceHandle_t", "device"},
    {"Kiv_ContextHandle_t", "context"},
    {"Kiv_GraphHandle_t", "graph"},
    {"Kiv_ProfileHandle_t", "profile"},
}};

std::string_view nameOf(std::uint64_t handle) {
  return kKinds[(handle >> 32) - 1].name;
}

// What Tracer's binary of a context holds.
std::size_t binarySize(std::uint64_t context) {
  return context == 0 ? std::string_view("KIV_TRACER binary of null").size()
                      : fmt::formatted_size("KIV_TRACER binary of context#{}",
                                            (context & 0xffffffff) - 1);
}

std::string textOf(const Value& value) {
  const char* text = value.pointer<const char>();
  return text == nullptr ? "" : text;
}

std::uint64_t bitsOf(const Arguments& arguments, std::string_view name) {
  const Value* value = arguments.find(name);
  return value == nullptr ? 0 : value->bits;
}

void put(Text& text, std::string_view string) { text.append(string); }

}  // namespace

std::string_view CallText::describe(const Arguments& arguments) {
  line_.clear();
  put(line_, arguments.function->name);
  line_.push_back('(');
  for (std::size_t i = 0; i < arguments.values.size(); ++i) {
    if (i != 0) put(line_, ", ");
    appendArgument(arguments, i);
  }
  line_.push_back(')');
  answer(arguments);
  return {line_.data(), line_.size()};
}

void CallText::appendArgument(const Arguments& arguments, std::size_t index) {
  const Value& value = arguments.values[index];
  // The count or size of an array is the next argument.
  const auto next = [&] { return arguments.values[index + 1].bits; };
  switch (value.argument->kind) {
    case ArgumentKind::kLogHandle:
      return put(line_, "log");
    case ArgumentKind::kBackend:
    case ArgumentKind::kDevice:
    case ArgumentKind::kContext:
    case ArgumentKind::kGraph:
    case ArgumentKind::kProfile:
    case ArgumentKind::kSignal:
      return appendHandle(value.bits, "null");
    case ArgumentKind::kBackendConfigs:
      return appendConfigs(line_, value.pointer<const KivBackend_Config_t*>());
    case ArgumentKind::kContextConfigs:
      return appendConfigs(line_, value.pointer<const KivContext_Config_t*>());
    case ArgumentKind::kDeviceConfigs:
      return appendConfigs(line_, value.pointer<const KivDevice_Config_t*>());
    case ArgumentKind::kGraphConfigs:
      return appendConfigs(line_, value.pointer<const KivGraph_Config_t*>());
    case ArgumentKind::kProfileConfigs:
      return appendConfigs(line_, value.pointer<const KivProfile_Config_t*>());
    case ArgumentKind::kText:
    case ArgumentKind::kEscapedText:
      return append(line_, value.pointer<const char>());
    case ArgumentKind::kU32:
    case ArgumentKind::kU64:
    case ArgumentKind::kEnum:
    case ArgumentKind::kEventId:
      fmt::format_to(std::back_inserter(line_), "{}", value.bits);
      return;
    case ArgumentKind::kBinary:
      return append(line_, Bytes{value.pointer<const void>(), next(), next()});
    case ArgumentKind::kOpConfig:
      return append(line_, *value.pointer<const Kiv_OpConfig_t>());
    case ArgumentKind::kTensor:
      return value.bits == 0
                 ? put(line_, "null")
                 : append(line_, *value.pointer<const Kiv_Tensor_t>());
    case ArgumentKind::kTensors:
      return append(line_, value.pointer<const Kiv_Tensor_t>(),
                    static_cast<std::uint32_t>(next()));
    case ArgumentKind::kBuffer:
    case ArgumentKind::kOutHandle:
    case ArgumentKind::kOut:
      return put(line_, value.bits == 0 ? "null" : "out");
  }
}

void CallText::appendHandle(std::uint64_t handle, std::string_view none) {
  if (handle == 0) return put(line_, none);
  fmt::format_to(std::back_inserter(line_), "{}#{}", nameOf(handle),
                 (handle & 0xffffffff) - 1);
}

void CallText::answer(const Arguments& arguments) {
  for (const Value& value : arguments.values) {
    if (value.bits == 0) continue;
    if (value.argument->kind == ArgumentKind::kOutHandle)
      answerHandle(arguments, value);
    else if (value.argument->kind == ArgumentKind::kTensor)
      answerId(value);
    else if (value.argument->kind == ArgumentKind::kOut &&
             value.argument->type == "Kiv_ContextBinarySize_t")
      answerSize(arguments, value);
  }
}

void CallText::answerHandle(const Arguments& arguments, const Value& out) {
  std::uint64_t handle = 0;
  if (arguments.function == &format::calls::kGraphRetrieve)
    handle = retrieveGraph(arguments);
  else
    handle = newHandle(out.argument->type);
  if (nameOf(handle) == "graph") nameGraph(arguments, handle);
  *out.pointer<void*>() = reinterpret_cast<void*>(handle);
  put(line_, " -> ");
  appendHandle(handle, "null");
}

void CallText::answerSize(const Arguments& arguments, const Value& out) {
  std::uint64_t size = binarySize(bitsOf(arguments, "context"));
  if (const Value* buffer = arguments.find("buffer"))
    size = buffer->bits == 0
               ? 0
               : std::min<std::uint64_t>(size, bitsOf(arguments, "bufferSize"));
  *out.pointer<std::uint64_t>() = size;
  fmt::format_to(std::back_inserter(line_), " -> {}", size);
}

void CallText::answerId(const Value& value) {
  auto* tensor = value.pointer<Kiv_Tensor_t>();
  std::uint32_t& id =
      tensor->version == KIV_TENSOR_VERSION_2 ? tensor->v2.id : tensor->v1.id;
  if (tensor->version != KIV_TENSOR_VERSION_1 &&
      tensor->version != KIV_TENSOR_VERSION_2)
    return;
  if (ids_ == Ids::kLeftOut) return;
  id = ++tensors_;
  fmt::format_to(std::back_inserter(line_), " -> id={}", id);
}

std::uint64_t CallText::newHandle(std::string_view type) {
  const auto* const kind = std::ranges::find(kKinds, type, &Kind::type);
  const auto index = static_cast<std::size_t>(kind - kKinds.begin());
  return std::uint64_t{index + 1} << 32 | ++created_[index];
}

std::uint64_t CallText::retrieveGraph(const Arguments& arguments) {
  const std::uint64_t context = bitsOf(arguments, "context");
  const auto found = graphs_.find({context, textOf(*arguments.find("name"))});
  return found == graphs_.end() ? newHandle("Kiv_GraphHandle_t")
                                : found->second;
}

// A graph below another one is known in the same context.
void CallText::nameGraph(const Arguments& arguments, std::uint64_t graph) {
  const Value* context = arguments.find("context");
  const std::uint64_t owner = context != nullptr
                                  ? context->bits
                                  : contexts_[bitsOf(arguments, "graph")];
  graphs_[{owner, textOf(*arguments.find("name"))}] = graph;
  contexts_[graph] = owner;
}

}  // namespace kiv::tool
