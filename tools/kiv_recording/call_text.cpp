#include "kiv_recording/call_text.h"

#include <cstddef>
#include <iterator>

namespace kiv::tool {
namespace {

using format::ArgumentKind;
using recording::Arguments;

void putText(Text& text, std::string_view string) { text.append(string); }

}  // namespace

std::string_view CallText::describe(const Arguments& arguments) {
  line_.clear();
  putText(line_, arguments.function->name);
  line_.push_back('(');
  for (std::size_t i = 0; i < arguments.values.size(); ++i) {
    if (i != 0) putText(line_, ", ");
    appendArgument(arguments, i);
  }
  line_.push_back(')');
  answers_.answer(arguments);
  appendAnswers(arguments);
  return {line_.data(), line_.size()};
}

void CallText::appendArgument(const Arguments& arguments, std::size_t index) {
  const Value& value = arguments.values[index];
  // The count or size of an array is the next argument.
  const auto next = [&] { return arguments.values[index + 1].bits; };
  switch (value.argument->kind) {
    case ArgumentKind::kLogHandle:
      return putText(line_, "log");
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
                 ? putText(line_, "null")
                 : append(line_, *value.pointer<const Kiv_Tensor_t>());
    case ArgumentKind::kTensors:
      return append(line_, value.pointer<const Kiv_Tensor_t>(),
                    static_cast<std::uint32_t>(next()));
    case ArgumentKind::kBuffer:
    case ArgumentKind::kOutHandle:
    case ArgumentKind::kOut:
      return putText(line_, value.bits == 0 ? "null" : "out");
  }
}

void CallText::appendHandle(std::uint64_t handle, std::string_view none) {
  if (handle == 0) return putText(line_, none);
  fmt::format_to(std::back_inserter(line_), "{}#{}", Answers::kindOf(handle),
                 Answers::numberOf(handle));
}

void CallText::appendAnswers(const Arguments& arguments) {
  for (const Value& value : arguments.values) {
    if (value.bits == 0) continue;
    if (value.argument->kind == ArgumentKind::kOutHandle) {
      putText(line_, " -> ");
      appendHandle(*value.pointer<std::uint64_t>(), "null");
    } else if (value.argument->kind == ArgumentKind::kTensor) {
      const auto* tensor = value.pointer<Kiv_Tensor_t>();
      if (ids_ == Ids::kGiven && Answers::hasId(*tensor))
        fmt::format_to(std::back_inserter(line_), " -> id={}", tensor->v1.id);
    } else if (Answers::isSize(value)) {
      fmt::format_to(std::back_inserter(line_), " -> {}",
                     *value.pointer<std::uint64_t>());
    }
  }
}

}  // namespace kiv::tool
