#include "recording/types.h"

#include <algorithm>
#include <array>
#include <vector>

#include "KivInterface.h"

namespace kiv::recording {
namespace {

using format::FieldKind;

constexpr TypeRow kOthers[] = {
    {"uint8_t", TypeKind::kNumber, 1, FieldKind::kU8},
    {"uint16_t", TypeKind::kNumber, 2, FieldKind::kU16},
    {"uint32_t", TypeKind::kNumber, 4, FieldKind::kU32},
    {"uint64_t", TypeKind::kNumber, 8, FieldKind::kU64},
    {"int8_t", TypeKind::kNumber, 1, FieldKind::kI8},
    {"int16_t", TypeKind::kNumber, 2, FieldKind::kI16},
    {"int32_t", TypeKind::kNumber, 4, FieldKind::kI32},
    {"int64_t", TypeKind::kNumber, 8},
    {"float", TypeKind::kNumber, 4, FieldKind::kFloat},
    {"double", TypeKind::kNumber, 8},
    {"char", TypeKind::kText, 1},
    {"FILE", TypeKind::kFile, 0},
    {format::kGpuContextCustomConfigType, TypeKind::kGpuContextConfig,
     sizeof(KivGpuContext_CustomConfig_t)},
    {"Kiv_BackendHandle_t", TypeKind::kOut, sizeof(void*)},
    {"Kiv_ContextHandle_t", TypeKind::kOut, sizeof(void*)},
    {"Kiv_DeviceHandle_t", TypeKind::kOut, sizeof(void*)},
    {"Kiv_GraphHandle_t", TypeKind::kOut, sizeof(void*)},
    {"Kiv_ProfileHandle_t", TypeKind::kOut, sizeof(void*)},
    {"Kiv_ContextBinarySize_t", TypeKind::kOut,
     sizeof(Kiv_ContextBinarySize_t)},
    {"KivBackend_OperationName_t", TypeKind::kOut, sizeof(void*)},
    {"KivProfile_EventId_t", TypeKind::kOut, sizeof(KivProfile_EventId_t)},
    {"KivProfile_EventData_t", TypeKind::kOut, sizeof(KivProfile_EventData_t)},
    {"KivProfile_ExtendedEventData_t", TypeKind::kOut,
     sizeof(KivProfile_ExtendedEventData_t)},
    {"KivDevice_Infrastructure_t", TypeKind::kOut,
     sizeof(KivDevice_Infrastructure_t)},
};

std::vector<TypeRow> makeRows() {
  std::vector<TypeRow> rows(std::begin(kOthers), std::end(kOthers));
  for (const format::rows::RecordOfType& record : format::rows::kRecords)
    rows.push_back({record.record->type, TypeKind::kRecord, record.record->size,
                    FieldKind::kFixed, &record});
  for (const format::ConfigFamily* family : format::configs::kFamilies)
    rows.push_back({family->type, TypeKind::kConfig, sizeof(KivGraph_Config_t),
                    FieldKind::kFixed, nullptr, family});
  return rows;
}

constexpr std::size_t kBuckets = 1024;

constexpr std::size_t bucketOf(std::string_view name) {
  const auto at = [name](std::size_t i) {
    return static_cast<std::size_t>(static_cast<unsigned char>(name[i]));
  };
  const std::size_t last = name.size() - 1;
  return (name.size() * 67 + at(0) * 31 + at(last / 2) * 257 +
          at(last * 3 / 4) * 113 + at(last - last / 4) * 59) %
         kBuckets;
}

// Rows whose names fall into one bucket follow each other, as in any open
// table.
struct TypeTable {
  TypeTable() {
    for (const TypeRow& row : rows) {
      std::size_t bucket = bucketOf(row.name);
      while (slots[bucket] != nullptr) bucket = (bucket + 1) % kBuckets;
      slots[bucket] = &row;
    }
  }

  std::vector<TypeRow> rows = makeRows();
  std::array<const TypeRow*, kBuckets> slots{};
};

}  // namespace

const TypeRow* findType(std::string_view name) {
  static const TypeTable kTable;
  if (name.empty()) return nullptr;
  std::size_t bucket = bucketOf(name);
  for (; kTable.slots[bucket] != nullptr; bucket = (bucket + 1) % kBuckets)
    if (kTable.slots[bucket]->name == name) return kTable.slots[bucket];
  return nullptr;
}

}  // namespace kiv::recording
