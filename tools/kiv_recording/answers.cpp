#include "kiv_recording/answers.h"

#include <algorithm>

#include "kiv_recording/recordings.h"

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

// Of Tracer's binary of a context, which says whose it is.
std::size_t binarySize(std::uint64_t context) {
  const std::string number =
      context == 0 ? "null"
                   : "context#" + std::to_string(Answers::numberOf(context));
  return ("KIV_TRACER binary of " + number).size();
}

std::string stringOf(const Value& value) {
  return orEmpty(value.pointer<const char>());
}

std::uint64_t bitsOf(const Arguments& arguments, std::string_view name) {
  const Value* value = arguments.find(name);
  return value == nullptr ? 0 : value->bits;
}

}  // namespace

std::string_view Answers::kindOf(std::uint64_t handle) {
  return kKinds[(handle >> 32) - 1].name;
}

bool Answers::hasId(const Kiv_Tensor_t& tensor) {
  return tensor.version == KIV_TENSOR_VERSION_1 ||
         tensor.version == KIV_TENSOR_VERSION_2;
}

bool Answers::isSize(const Value& value) {
  return value.argument->kind == ArgumentKind::kOut &&
         value.argument->type == "Kiv_ContextBinarySize_t";
}

void Answers::answer(const Arguments& arguments) {
  for (const Value& value : arguments.values) {
    if (value.bits == 0) continue;
    if (value.argument->kind == ArgumentKind::kOutHandle)
      answerHandle(arguments, value);
    else if (value.argument->kind == ArgumentKind::kTensor)
      answerId(value);
    else if (isSize(value))
      answerSize(arguments, value);
  }
}

void Answers::answerHandle(const Arguments& arguments, const Value& out) {
  std::uint64_t handle = 0;
  if (arguments.function == &format::calls::kGraphRetrieve)
    handle = retrieveGraph(arguments);
  else
    handle = newHandle(out.argument->type);
  if (kindOf(handle) == "graph") nameGraph(arguments, handle);
  *out.pointer<void*>() = reinterpret_cast<void*>(handle);
}

void Answers::answerSize(const Arguments& arguments, const Value& out) {
  std::uint64_t size = binarySize(bitsOf(arguments, "context"));
  if (const Value* buffer = arguments.find("buffer"))
    size = buffer->bits == 0
               ? 0
               : std::min<std::uint64_t>(size, bitsOf(arguments, "bufferSize"));
  *out.pointer<std::uint64_t>() = size;
}

void Answers::answerId(const Value& value) {
  auto* const tensor = value.pointer<Kiv_Tensor_t>();
  if (ids_ == Ids::kGiven && hasId(*tensor)) tensor->v1.id = ++tensors_;
}

std::uint64_t Answers::newHandle(std::string_view type) {
  const auto* const kind = std::ranges::find(kKinds, type, &Kind::type);
  const auto index = static_cast<std::size_t>(kind - kKinds.begin());
  return std::uint64_t{index + 1} << 32 | ++created_[index];
}

std::uint64_t Answers::retrieveGraph(const Arguments& arguments) {
  const std::uint64_t context = bitsOf(arguments, "context");
  const auto found = graphs_.find({context, stringOf(*arguments.find("name"))});
  return found == graphs_.end() ? newHandle("Kiv_GraphHandle_t")
                                : found->second;
}

// A graph below another one is known in the same context.
void Answers::nameGraph(const Arguments& arguments, std::uint64_t graph) {
  const Value* context = arguments.find("context");
  const std::uint64_t owner = context != nullptr
                                  ? context->bits
                                  : contexts_[bitsOf(arguments, "graph")];
  graphs_[{owner, stringOf(*arguments.find("name"))}] = graph;
  contexts_[graph] = owner;
}

}  // namespace kiv::tool
