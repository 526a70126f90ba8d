#include "recording/record_builder.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "KivInterface.h"
#include "format/identifiers.h"
#include "format/numbers.h"

namespace kiv::recording {
namespace {

using format::FieldKind;
using Shape = Variable::Shape;
namespace rows = format::rows;

template <typename Type>
void put(std::byte* memory, Type value) {
  std::memcpy(memory, &value, sizeof(value));
}

template <typename Type>
Type get(const std::byte* memory) {
  Type value{};
  std::memcpy(&value, memory, sizeof(value));
  return value;
}

// An array of a record and the member that counts its elements.
struct CountedArray {
  std::string_view record;
  std::size_t count;
  std::size_t array;
};

constexpr CountedArray kCountedArrays[] = {
    {rows::kAxisScaleOffset.type,
     offsetof(Kiv_AxisScaleOffset_t, numScaleOffsets),
     offsetof(Kiv_AxisScaleOffset_t, scaleOffset)},
    {rows::kBwAxisScaleOffset.type,
     offsetof(Kiv_BwAxisScaleOffset_t, numElements),
     offsetof(Kiv_BwAxisScaleOffset_t, scales)},
    {rows::kBwAxisScaleOffset.type,
     offsetof(Kiv_BwAxisScaleOffset_t, numElements),
     offsetof(Kiv_BwAxisScaleOffset_t, offsets)},
    {rows::kTensorV1.type, offsetof(Kiv_TensorV1_t, rank),
     offsetof(Kiv_TensorV1_t, dimensions)},
    {rows::kTensorV2.type, offsetof(Kiv_TensorV2_t, rank),
     offsetof(Kiv_TensorV2_t, dimensions)},
    {rows::kTensorV2.type, offsetof(Kiv_TensorV2_t, rank),
     offsetof(Kiv_TensorV2_t, isDynamicDimensions)},
    {rows::kOpConfigV1.type, offsetof(Kiv_OpConfigV1_t, numParams),
     offsetof(Kiv_OpConfigV1_t, params)},
    {rows::kOpConfigV1.type, offsetof(Kiv_OpConfigV1_t, numInputs),
     offsetof(Kiv_OpConfigV1_t, inputTensors)},
    {rows::kOpConfigV1.type, offsetof(Kiv_OpConfigV1_t, numOutputs),
     offsetof(Kiv_OpConfigV1_t, outputTensors)},
    {rows::kHardwareDeviceInfoV1.type,
     offsetof(KivDevice_HardwareDeviceInfoV1_t, numCores),
     offsetof(KivDevice_HardwareDeviceInfoV1_t, cores)},
    {rows::kPlatformInfoV1.type,
     offsetof(KivDevice_PlatformInfoV1_t, numHwDevices),
     offsetof(KivDevice_PlatformInfoV1_t, hwDevices)},
};

// What a reference of a record or config points to, as the text declares it.
std::string_view pointedType(const ParsedStatement& statement,
                             const Item& item) {
  if (!item.type.empty() || statement.kind != StatementKind::kConfig)
    return item.type;
  const format::ConfigFamily* family = statement.typeRow->family;
  if (family == &format::configs::kGraph)
    return rows::kGpuGraphCustomConfig.type;
  if (family == &format::configs::kContext)
    return format::kGpuContextCustomConfigType;
  return {};
}

}  // namespace

bool isSameType(std::string_view a, std::string_view b) {
  if (a == b) return true;
  const auto next = [](std::string_view& text) {
    while (!text.empty() && !format::isIdentifierCharacter(text[0]) &&
           text[0] != '*')
      text.remove_prefix(1);
    const char c = text.empty() ? '\0' : text[0];
    if (!text.empty()) text.remove_prefix(1);
    return c;
  };
  for (;;) {
    const char c = next(a);
    if (c != next(b)) return false;
    if (c == '\0') return true;
  }
}

void RecordBuilder::begin(std::uint64_t dataOffset) {
  arena_.reset();
  variables_.clear();
  dataOffset_ = dataOffset;
  fault_.clear();
  faultAt_ = nullptr;
}

bool RecordBuilder::fail(const char* at, std::string fault) {
  fault_ = std::move(fault);
  faultAt_ = at;
  return false;
}

bool RecordBuilder::declare(const ParsedStatement& statement,
                            Variable variable) {
  if (variable.memory == nullptr && variable.shape != Shape::kNullArray)
    return fail(statement.begin, "there is no memory for the variable");
  if (!variables_.insert(statement.name, variable).isNew)
    return fail(statement.name.data(), std::string(statement.name) +
                                           " is declared twice in this call");
  return true;
}

Variable* RecordBuilder::resolve(const Item& item, std::string_view type,
                                 Shape shape) {
  Variable* const variable = variables_.find(item.text());
  if (variable == nullptr) {
    fail(item.begin,
         std::string(item.text()) + " is not declared in this call");
    return nullptr;
  }
  const bool fits =
      variable->shape == shape ||
      (shape == Shape::kArray && variable->shape == Shape::kNullArray);
  if (!fits || !isSameType(variable->type, type)) {
    fail(item.begin, std::string(item.text()) + " is of type " +
                         std::string(variable->type) + ", not " +
                         std::string(type));
    return nullptr;
  }
  return variable;
}

bool RecordBuilder::parseInteger(const Item& item, std::uint64_t& number) {
  const auto parsed = format::parseNumber<std::uint64_t>(item.text());
  if (!parsed)
    return fail(item.begin, std::string(item.text()) + " is out of range");
  number = *parsed;
  return true;
}

// ---- values ----

bool RecordBuilder::storeNumber(const Item& item, std::byte* memory) {
  const auto number = [&]<typename Type>(Type) {
    const auto parsed = format::parseNumber<Type>(item.text());
    if (!parsed)
      return fail(item.begin, std::string(item.text()) + " is out of range");
    put(memory, *parsed);
    return true;
  };
  switch (item.kind) {
    case FieldKind::kU8:
    case FieldKind::kBool:
      return number(std::uint8_t{});
    case FieldKind::kU16:
      return number(std::uint16_t{});
    case FieldKind::kU32:
    case FieldKind::kEnum:
      return number(std::uint32_t{});
    case FieldKind::kU64:
      return number(std::uint64_t{});
    case FieldKind::kI8:
      return number(std::int8_t{});
    case FieldKind::kI16:
      return number(std::int16_t{});
    case FieldKind::kI32:
      return number(std::int32_t{});
    default:
      break;
  }
  const auto parsed = format::parseFloat(item.text());
  if (!parsed)
    return fail(item.begin, std::string(item.text()) + " is no float");
  put(memory, *parsed);
  return true;
}

bool RecordBuilder::storeTensorId(const Item& item, std::byte* memory) {
  if (format::isDigit(*item.begin)) {
    Item number = item;
    number.kind = FieldKind::kU32;
    return storeNumber(number, memory);
  }
  const EarlierVariable* const tensor = earlier_.find(item.text());
  if (tensor == nullptr)
    return fail(item.begin,
                std::string(item.text()) + " is no tensor of an earlier call");
  put(memory, static_cast<std::uint32_t>(tensor->value));
  return true;
}

bool RecordBuilder::storeReference(const ParsedStatement& statement,
                                   const Item& item, std::byte* memory) {
  const std::string_view type = pointedType(statement, item);
  if (item.kind == FieldKind::kRecord) {
    const Variable* const record = resolve(item, type, Shape::kValue);
    if (record == nullptr) return false;
    std::memcpy(memory, record->memory,
                static_cast<std::size_t>(record->elementSize));
    return true;
  }
  Variable* variable = nullptr;
  if (item.kind == FieldKind::kAddress) {
    variable = resolve(item, type, Shape::kValue);
  } else if (item.kind == FieldKind::kArray) {
    variable = resolve(item, type, Shape::kArray);
  } else {
    variable = variables_.find(item.text());
    if (variable == nullptr || variable->shape != Shape::kData)
      return fail(item.begin, std::string(item.text()) +
                                  " is no array of this call's data");
  }
  if (variable == nullptr) return false;
  put(memory, variable->memory);
  return true;
}

bool RecordBuilder::store(const ParsedStatement& statement, const Item& item,
                          std::byte* memory) {
  if (item.isNull()) return true;
  switch (item.kind) {
    case FieldKind::kText: {
      const char* const text = arena_.takeText(item.text());
      if (text == nullptr)
        return fail(item.begin, "there is no memory for the text");
      put(memory, text);
      return true;
    }
    case FieldKind::kTensorId:
      return storeTensorId(item, memory);
    case FieldKind::kRecord:
    case FieldKind::kArray:
    case FieldKind::kAddress:
    case FieldKind::kData:
      return storeReference(statement, item, memory);
    default:
      return storeNumber(item, memory);
  }
}

bool RecordBuilder::storeItems(const ParsedStatement& statement,
                               std::byte* memory) {
  return std::ranges::all_of(statement.items, [&](const Item& item) {
    return store(statement, item, memory + item.offset);
  });
}

// ---- checks: no backend is led beyond an array ----

bool RecordBuilder::checkCounts(const ParsedStatement& statement,
                                const std::byte* memory) {
  for (const CountedArray& row : kCountedArrays) {
    if (row.record != statement.typeRow->name) continue;
    const auto count = get<std::uint32_t>(memory + row.count);
    const auto isArray = [&](const Item& item) {
      return item.kind == FieldKind::kArray && item.offset == row.array;
    };
    const auto item = std::ranges::find_if(statement.items, isArray);
    if (item == statement.items.end() || item->isNull()) continue;
    const Variable* const array = variables_.find(item->text());
    if (array->shape == Shape::kArray && array->count < count)
      return fail(item->begin, std::string(item->text()) + " has " +
                                   std::to_string(array->count) +
                                   " elements, and " + std::to_string(count) +
                                   " are counted");
  }
  return true;
}

// A size that is no multiple of the element's reaches beyond the run by less
// than an element: zeros stand there.
bool RecordBuilder::checkBuffer(const ParsedStatement& statement,
                                std::byte* memory) {
  const Item& item = statement.items.front();
  if (item.isNull()) return true;
  const Variable& data = *variables_.find(item.text());
  const std::uint64_t size = data.count * data.elementSize;
  const auto wanted =
      get<std::uint32_t>(memory + offsetof(Kiv_ClientBuffer_t, dataSize));
  if (wanted <= size) return true;
  if (wanted - size >= data.elementSize)
    return fail(item.begin, std::string(item.text()) + " has " +
                                std::to_string(size) + " bytes, and " +
                                std::to_string(wanted) + " are counted");
  std::byte* const copy = arena_.take(wanted);
  if (copy == nullptr)
    return fail(item.begin, "there is no memory for the data");
  std::memcpy(copy, data.memory, static_cast<std::size_t>(size));
  put(memory, copy);
  return true;
}

// ---- statements ----

bool RecordBuilder::buildRecord(const ParsedStatement& statement) {
  const std::size_t size = statement.typeRow->size;
  std::byte* const memory = arena_.take(size);
  if (memory == nullptr)
    return fail(statement.begin, "there is no memory for the record");
  if (!storeItems(statement, memory) || !checkCounts(statement, memory))
    return false;
  if (statement.typeRow->name == rows::kClientBuffer.type &&
      !checkBuffer(statement, memory))
    return false;
  return declare(statement, {Shape::kValue, statement.type, memory, 1, size});
}

// The option is the record's first member.
bool RecordBuilder::buildConfig(const ParsedStatement& statement) {
  const std::size_t size = statement.typeRow->size;
  std::byte* const memory = arena_.take(size);
  if (memory == nullptr)
    return fail(statement.begin, "there is no memory for the record");
  put(memory, statement.option->member.tag);
  return storeItems(statement, memory) &&
         declare(statement, {Shape::kValue, statement.type, memory, 1, size});
}

bool RecordBuilder::buildArray(const ParsedStatement& statement) {
  const std::size_t element =
      statement.stars != 0 ? sizeof(void*) : statement.typeRow->size;
  const auto count = static_cast<std::size_t>(statement.count);
  std::byte* const memory = arena_.take(count * element);
  if (memory == nullptr)
    return fail(statement.begin, "there is no memory for the array");
  return storeItems(statement, memory) &&
         declare(statement,
                 {Shape::kArray, statement.type, memory, count, element});
}

// Aligned bytes are used where they lie in the file.
bool RecordBuilder::readRun(const ParsedStatement& statement) {
  Variable* const array = variables_.find(statement.name);
  if (array == nullptr || array->shape != Shape::kData ||
      array->memory != nullptr)
    return fail(statement.name.data(),
                std::string(statement.name) + " is no array to read into");
  if (statement.elementSize != array->elementSize ||
      statement.count != array->count)
    return fail(statement.begin,
                std::string(statement.name) + " has another size than is read");
  const std::uint64_t left =
      data_.size() - std::min<std::uint64_t>(dataOffset_, data_.size());
  if (array->count > left / array->elementSize)
    return fail(statement.begin, "the data file is too short: bytes from " +
                                     std::to_string(dataOffset_) +
                                     " on are read, it has " +
                                     std::to_string(data_.size()));
  const auto size = static_cast<std::size_t>(array->count * array->elementSize);
  std::byte* const bytes = data_.data() + dataOffset_;
  dataOffset_ += size;
  if (size == 0 ||
      reinterpret_cast<std::uintptr_t>(bytes) % array->elementSize != 0) {
    array->memory = arena_.takeRaw(size);
    if (array->memory == nullptr)
      return fail(statement.begin, "there is no memory for the data");
    if (size != 0) std::memcpy(array->memory, bytes, size);
  } else {
    array->memory = bytes;
  }
  return true;
}

bool RecordBuilder::build(const ParsedStatement& statement) {
  const TypeRow* const type = statement.typeRow;
  switch (statement.kind) {
    case StatementKind::kDeclaration: {
      const std::size_t size =
          statement.stars != 0 ? sizeof(void*) : type->size;
      return declare(statement, {Shape::kValue, statement.type,
                                 arena_.take(size), 1, size});
    }
    case StatementKind::kRecord:
      return buildRecord(statement);
    case StatementKind::kConfig:
      return buildConfig(statement);
    case StatementKind::kArray:
      return buildArray(statement);
    case StatementKind::kNullArray: {
      std::string_view element = statement.type;
      element.remove_suffix(1);
      return declare(statement, {Shape::kNullArray, element, nullptr, 0, 0});
    }
    case StatementKind::kStaticArray: {
      if (type->size == 0)
        return fail(statement.begin, "an array of no numbers");
      const Variable array = {Shape::kData, statement.type, nullptr,
                              statement.count, type->size};
      if (!variables_.insert(statement.name, array).isNew)
        return fail(statement.name.data(),
                    std::string(statement.name) + " is declared twice");
      return true;
    }
    case StatementKind::kRead:
      return readRun(statement);
    case StatementKind::kMalloc: {
      const auto size = static_cast<std::size_t>(statement.count);
      std::byte* const memory =
          size > std::numeric_limits<std::ptrdiff_t>::max() / 2
              ? nullptr
              : arena_.takeRaw(size);
      return declare(statement,
                     {Shape::kData, statement.type, memory, size, 1});
    }
    default:
      return true;
  }
}

}  // namespace kiv::recording
