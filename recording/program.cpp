#include "recording/program.h"

#include <algorithm>
#include <cstring>

#include "format/literals.h"
#include "recording/record_builder.h"
#include "recording/statement_parser.h"

namespace kiv::recording {
namespace {

using format::ArgumentKind;
using format::FieldKind;
using Shape = Variable::Shape;

// Whose records a config list points to.
std::string_view configListType(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::kBackendConfigs:
      return format::configs::kBackend.pointerType;
    case ArgumentKind::kContextConfigs:
      return format::configs::kContext.pointerType;
    case ArgumentKind::kDeviceConfigs:
      return format::configs::kDevice.pointerType;
    case ArgumentKind::kGraphConfigs:
      return format::configs::kGraph.pointerType;
    default:
      return format::configs::kProfile.pointerType;
  }
}

std::uint64_t bitsOf(const void* pointer) {
  return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace

const Value* Arguments::find(std::string_view name) const {
  const auto found = std::ranges::find_if(values, [name](const Value& value) {
    return value.argument->name == name;
  });
  return found == values.end() ? nullptr : &*found;
}

class Program::Impl {
 public:
  Impl(const Recording& recording, std::span<std::byte> data)
      : recording_(recording),
        budget_{1'000'000 + 8 * recording.text().size()},
        parser_(recording.text(), recording.limits(), budget_),
        builder_(data, earlier_) {}

  std::optional<Problem> begin(std::size_t call, Arguments& arguments);
  void end(std::size_t call);
  std::optional<OutputFile> output() const;

  Kiv_LogHandle_t logHandle = nullptr;

  const EarlierVariable* earlier(std::string_view name) const {
    return earlier_.find(name);
  }

 private:
  // What a call writes and later calls use.
  struct Result {
    std::string_view variable;
    const std::byte* memory;
    bool isTensor;
    std::string_view clientName;
  };

  Problem problemOf(std::size_t call) const;
  bool buildStatement(std::size_t call, Arguments& arguments);
  bool buildCall(Arguments& arguments);
  void releaseText(std::uint64_t end);
  bool buildArgument(const Item& item, Value& value);
  bool buildHandle(const Item& item, Value& value);
  bool buildConfigs(const Item& item, Value& value);
  bool buildOut(const Item& item, Value& value);
  bool buildBytes(const Item& item, Value& value);
  bool buildText(const Item& item, Value& value);
  bool checkCounts(const Arguments& arguments);
  void noteResults(const Arguments& arguments);
  std::string_view clientName() const;

  const Recording& recording_;
  TextBudget budget_;
  StatementParser parser_;
  NameTable<EarlierVariable> earlier_;
  RecordBuilder builder_;
  std::vector<Result> results_;
  std::uint64_t released_ = 0;
  std::string_view fileName_;
  std::span<const std::byte> buffer_;
  const std::byte* writtenSize_ = nullptr;
};

Problem Program::Impl::problemOf(std::size_t call) const {
  const char* const at = builder_.faultAt();
  const std::string_view text = recording_.text();
  const auto offset = at == nullptr
                          ? recording_.calls()[call].span.begin
                          : static_cast<std::uint64_t>(at - text.data());
  return recording_.problemAt(
      offset, "in the arguments of " +
                  std::string(recording_.functionName(call)) + ": " +
                  builder_.fault());
}

std::optional<Problem> Program::Impl::begin(std::size_t index,
                                            Arguments& arguments) {
  const Call& call = recording_.calls()[index];
  builder_.begin(call.dataOffset);
  results_.clear();
  fileName_ = {};
  buffer_ = {};
  writtenSize_ = nullptr;
  const std::string_view text = recording_.text();
  const char* const end = text.data() + call.span.end;
  const char* at = text.data() + call.span.begin;
  for (;;) {
    at = StatementParser::skipBlanks(at, end);
    if (at == end) {
      releaseText(call.span.begin);
      return std::nullopt;
    }
    const auto& readings = recording_.readings();
    const Recording::Reading* reading = nullptr;
    if (!readings.empty()) {
      const auto found =
          readings.find(static_cast<std::uint64_t>(at - text.data()));
      if (found != readings.end()) reading = &found->second;
    }
    if (!parser_.parse(at, reading)) {
      Problem problem = recording_.problemAt(
          static_cast<std::uint64_t>(at - text.data()),
          "this statement is unknown, so that the call cannot be made");
      problem.found = shortened(
          {at, static_cast<std::size_t>(parser_.statement().end - at)});
      return problem;
    }
    if (!buildStatement(index, arguments)) return problemOf(index);
    at = parser_.statement().end;
  }
}

// Text of earlier calls, which is looked at no more.
void Program::Impl::releaseText(std::uint64_t end) {
  constexpr std::uint64_t kReleased = std::uint64_t{1} << 25;
  if (end < released_ + 2 * kReleased) return;
  recording_.release(released_, released_ + kReleased);
  released_ += kReleased;
}

bool Program::Impl::buildStatement(std::size_t call, Arguments& arguments) {
  const ParsedStatement& statement = parser_.statement();
  switch (statement.kind) {
    case StatementKind::kCall:
      arguments.function = recording_.calls()[call].function;
      return buildCall(arguments);
    case StatementKind::kOpen:
      fileName_ = statement.items.front().text();
      return true;
    default:
      return builder_.build(statement);
  }
}

// ---- arguments ----

bool Program::Impl::buildHandle(const Item& item, Value& value) {
  value.variable = item.text();
  if (const EarlierVariable* earlier = earlier_.find(item.text());
      earlier != nullptr) {
    value.bits = earlier->value;
    return true;
  }
  return builder_.fail(
      item.begin, std::string(item.text()) + " is created by no earlier call");
}

// A backend reads a list up to its null.
bool Program::Impl::buildConfigs(const Item& item, Value& value) {
  const std::string_view type = configListType(value.argument->kind);
  const Variable* const list = builder_.resolve(item, type, Shape::kArray);
  if (list == nullptr) return false;
  value.bits = bitsOf(list->memory);
  if (list->memory == nullptr) return true;
  const void* last = nullptr;
  if (list->count != 0)
    std::memcpy(&last, list->memory + (list->count - 1) * sizeof(void*),
                sizeof(last));
  if (list->count == 0 || last != nullptr)
    return builder_.fail(item.begin,
                         std::string(item.text()) + " does not end with NULL");
  return true;
}

bool Program::Impl::buildOut(const Item& item, Value& value) {
  const Variable* const variable =
      builder_.resolve(item, value.argument->type, Shape::kValue);
  if (variable == nullptr) return false;
  value.bits = bitsOf(variable->memory);
  return true;
}

bool Program::Impl::buildBytes(const Item& item, Value& value) {
  const Variable* const bytes = builder_.find(item.text());
  if (bytes == nullptr || bytes->shape != Shape::kData ||
      bytes->memory == nullptr ||
      !isSameType(bytes->type, value.argument->type))
    return builder_.fail(item.begin, std::string(item.text()) +
                                         " is no array of bytes of this call");
  value.bits = bitsOf(bytes->memory);
  return true;
}

bool Program::Impl::buildText(const Item& item, Value& value) {
  std::string unescaped;
  std::string_view text = item.text();
  if (value.argument->kind == ArgumentKind::kEscapedText) {
    auto plain = format::unescaped(text);
    if (!plain)
      return builder_.fail(item.begin,
                           "the text holds an escape that is unknown");
    unescaped = *std::move(plain);
    text = unescaped;
  }
  value.bits = bitsOf(builder_.arena().takeText(text));
  return true;
}

bool Program::Impl::buildArgument(const Item& item, Value& value) {
  const ArgumentKind kind = value.argument->kind;
  if (item.isNull()) return true;
  const bool isReference = item.kind == FieldKind::kArray ||
                           item.kind == FieldKind::kAddress ||
                           item.kind == FieldKind::kRecord;
  if (isReference) value.variable = item.text();
  switch (kind) {
    case ArgumentKind::kBackend:
    case ArgumentKind::kDevice:
    case ArgumentKind::kContext:
    case ArgumentKind::kGraph:
    case ArgumentKind::kProfile:
      return buildHandle(item, value);
    case ArgumentKind::kText:
    case ArgumentKind::kEscapedText:
      return buildText(item, value);
    case ArgumentKind::kU32:
    case ArgumentKind::kEnum:
    case ArgumentKind::kU64:
    case ArgumentKind::kEventId:
      return builder_.parseInteger(item, value.bits) &&
             (item.kind == FieldKind::kU64 || value.bits <= ~std::uint32_t{0} ||
              builder_.fail(item.begin, "the number is out of range"));
    case ArgumentKind::kBinary:
    case ArgumentKind::kBuffer:
      return buildBytes(item, value);
    case ArgumentKind::kOpConfig:
    case ArgumentKind::kTensor: {
      const std::string_view type = kind == ArgumentKind::kTensor
                                        ? format::rows::kTensor.type
                                        : format::rows::kOpConfig.type;
      const Variable* const record =
          builder_.resolve(item, type, Shape::kValue);
      if (record != nullptr) value.bits = bitsOf(record->memory);
      return record != nullptr;
    }
    case ArgumentKind::kTensors: {
      const Variable* const array =
          builder_.resolve(item, format::rows::kTensor.type, Shape::kArray);
      if (array != nullptr) value.bits = bitsOf(array->memory);
      return array != nullptr;
    }
    case ArgumentKind::kOut:
    case ArgumentKind::kOutHandle:
      return buildOut(item, value);
    case ArgumentKind::kLogHandle:
    case ArgumentKind::kSignal:
      return true;
    default:
      return buildConfigs(item, value);
  }
}

// The argument behind an array counts what lies there.
bool Program::Impl::checkCounts(const Arguments& arguments) {
  for (std::size_t i = 0; i + 1 < arguments.values.size(); ++i) {
    const Value& value = arguments.values[i];
    const ArgumentKind kind = value.argument->kind;
    const bool isCounted = kind == ArgumentKind::kTensors ||
                           kind == ArgumentKind::kBinary ||
                           kind == ArgumentKind::kBuffer;
    if (!isCounted || value.variable.empty()) continue;
    const Variable& array = *builder_.find(value.variable);
    const std::uint64_t counted = arguments.values[i + 1].bits;
    if (array.shape != Shape::kNullArray && array.count < counted)
      return builder_.fail(value.variable.data(),
                           std::string(value.variable) + " has " +
                               std::to_string(array.count) + " elements, and " +
                               std::to_string(counted) + " are counted");
    if (kind == ArgumentKind::kBuffer)
      buffer_ = {value.pointer<const std::byte>(),
                 static_cast<std::size_t>(counted)};
  }
  return true;
}

// The graph's name, as it stands in the recording's text.
std::string_view Program::Impl::clientName() const {
  for (const Item& item : parser_.statement().items)
    if (item.kind == FieldKind::kText && !item.isNull()) return item.text();
  return {};
}

void Program::Impl::noteResults(const Arguments& arguments) {
  for (const Value& value : arguments.values) {
    const ArgumentKind kind = value.argument->kind;
    const auto* const memory = value.pointer<const std::byte>();
    if (memory == nullptr) continue;
    if (kind == ArgumentKind::kOutHandle)
      results_.push_back({value.variable, memory, false, clientName()});
    if (kind == ArgumentKind::kTensor)
      results_.push_back({value.variable, memory, true, {}});
    if (arguments.function == &format::calls::kContextGetBinary &&
        kind == ArgumentKind::kOut)
      writtenSize_ = memory;
  }
}

bool Program::Impl::buildCall(Arguments& arguments) {
  const auto rows = arguments.function->arguments;
  arguments.values.assign(rows.size(), {});
  for (std::size_t i = 0; i < rows.size(); ++i) {
    arguments.values[i].argument = &rows[i];
    if (rows[i].kind == ArgumentKind::kLogHandle)
      arguments.values[i].bits = bitsOf(logHandle);
  }
  for (const Item& item : parser_.statement().items)
    if (!buildArgument(item, arguments.values[item.offset])) return false;
  if (!checkCounts(arguments)) return false;
  noteResults(arguments);
  return true;
}

void Program::Impl::end(std::size_t) {
  for (const Result& result : results_) {
    EarlierVariable variable{0, result.clientName};
    if (result.isTensor) {
      const auto* const tensor =
          reinterpret_cast<const Kiv_Tensor_t*>(result.memory);
      variable.value = tensor->v1.id;
    } else {
      std::memcpy(&variable.value, result.memory, sizeof(void*));
    }
    earlier_.insert(result.variable, variable).value = variable;
  }
}

std::optional<OutputFile> Program::Impl::output() const {
  if (fileName_.empty() || writtenSize_ == nullptr) return std::nullopt;
  Kiv_ContextBinarySize_t size = 0;
  std::memcpy(&size, writtenSize_, sizeof(size));
  const auto count =
      static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer_.size()));
  return OutputFile{fileName_, buffer_.first(count)};
}

// ---- Program ----

Program::Program(const Recording& recording, std::span<std::byte> data)
    : impl_(std::make_unique<Impl>(recording, data)) {}
Program::~Program() = default;

std::optional<Problem> Program::begin(std::size_t call, Arguments& arguments) {
  return impl_->begin(call, arguments);
}

void Program::end(std::size_t call) { impl_->end(call); }

std::optional<OutputFile> Program::output() const { return impl_->output(); }

void Program::setLogHandle(Kiv_LogHandle_t handle) {
  impl_->logHandle = handle;
}

void* Program::handle(std::string_view variable) const {
  const EarlierVariable* const found = impl_->earlier(variable);
  return found == nullptr ? nullptr
                          : reinterpret_cast<void*>(
                                static_cast<std::uintptr_t>(found->value));
}

std::string_view Program::graphName(std::string_view variable) const {
  const EarlierVariable* const found = impl_->earlier(variable);
  return found == nullptr ? std::string_view{} : found->clientName;
}

}  // namespace kiv::recording
