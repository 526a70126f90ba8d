#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "recording/arena.h"
#include "recording/name_table.h"
#include "recording/statement_parser.h"

// Statements of one call as records in memory: the same rows that parsed them
// say where each value lies. One thread at a time.
namespace kiv::recording {

// A variable of the call that is being built.
struct Variable {
  enum class Shape : std::uint8_t { kValue, kArray, kNullArray, kData };

  Shape shape = Shape::kValue;
  std::string_view type;
  // The value or the first element.
  std::byte* memory = nullptr;
  std::uint64_t count = 0;
  // bytes
  std::uint64_t elementSize = 0;
};

// A handle or a tensor of an earlier call.
struct EarlierVariable {
  // The handle, or the tensor's id.
  std::uint64_t value = 0;
  // As the client called the graph or the tensor.
  std::string_view clientName;
};

class RecordBuilder {
 public:
  // `data` is the data file.
  RecordBuilder(std::span<std::byte> data,
                const NameTable<EarlierVariable>& earlier)
      : data_(data), earlier_(earlier) {}

  // Begins a call whose runs lie there in the data file.
  void begin(std::uint64_t dataOffset);

  // Builds the variable that the statement declares, or reads its run; false
  // with fault() for what C or the API would not take.
  bool build(const ParsedStatement& statement);

  Variable* find(std::string_view name) { return variables_.find(name); }
  Arena& arena() { return arena_; }

  // What went wrong, and with which part of the text.
  const std::string& fault() const { return fault_; }
  const char* faultAt() const { return faultAt_; }
  bool fail(const char* at, std::string fault);

  // The variable behind a reference of that type and shape; null with a fault.
  Variable* resolve(const Item& item, std::string_view type,
                    Variable::Shape shape);
  bool parseInteger(const Item& item, std::uint64_t& number);

 private:
  bool declare(const ParsedStatement& statement, Variable variable);
  bool buildRecord(const ParsedStatement& statement);
  bool buildConfig(const ParsedStatement& statement);
  bool buildArray(const ParsedStatement& statement);
  bool readRun(const ParsedStatement& statement);
  bool storeItems(const ParsedStatement& statement, std::byte* memory);
  bool store(const ParsedStatement& statement, const Item& item,
             std::byte* memory);
  bool storeReference(const ParsedStatement& statement, const Item& item,
                      std::byte* memory);
  bool storeNumber(const Item& item, std::byte* memory);
  bool storeTensorId(const Item& item, std::byte* memory);
  bool checkCounts(const ParsedStatement& statement, const std::byte* memory);
  bool checkBuffer(const ParsedStatement& statement, std::byte* memory);

  const std::span<std::byte> data_;
  const NameTable<EarlierVariable>& earlier_;
  Arena arena_;
  NameTable<Variable> variables_;
  std::uint64_t dataOffset_ = 0;
  std::string fault_;
  const char* faultAt_ = nullptr;
};

// Whether two types of the text are the same but for blanks.
bool isSameType(std::string_view a, std::string_view b);

}  // namespace kiv::recording
