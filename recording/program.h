#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "KivInterface.h"
#include "recording/problem.h"
#include "recording/recording.h"

// The recorded program's variables, and the arguments of its calls in memory as
// the API's headers lay them out.
//
//   Program program(*recording, data.bytes());
//   Arguments arguments;
//   for (std::size_t i = 0; i < recording->calls().size(); ++i) {
//     if (auto problem = program.begin(i, arguments)) return *problem;
//     ...  // make the call, or look at its arguments
//     program.end(i);
//   }
//
// Calls are begun in the order of the recording; each may be begun several
// times. What a call writes through its out-arguments (handles, tensors' ids)
// is what later calls use. One thread at a time.
namespace kiv::recording {

// One argument. `bits` holds a number or the value of a pointer.
struct Value {
  const format::Argument* argument = nullptr;
  std::uint64_t bits = 0;
  // The variable behind the argument: the handle's, the array's, the record's,
  // the out-argument's; empty for NULL, numbers and texts.
  std::string_view variable;

  template <typename Type>
  Type* pointer() const {
    return reinterpret_cast<Type*>(static_cast<std::uintptr_t>(bits));
  }
};

// Valid until the next call begins.
struct Arguments {
  const format::Function* function = nullptr;
  std::vector<Value> values;

  // The value of the parameter with that name; null when there is none.
  const Value* find(std::string_view name) const;
};

// The file that a contextGetBinary's statements write.
struct OutputFile {
  // As the text has it: "context_0.bin".
  std::string_view name;
  std::span<const std::byte> bytes;
};

class Program {
 public:
  // `data` is the data file, mapped with private writes since backends write
  // outputs into it; it may be shorter than the recording demands, and then
  // calls that reach beyond it have a problem. Both must outlive the object.
  Program(const Recording& recording, std::span<std::byte> data);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Builds the call's arguments, or says what keeps the call from being made.
  std::optional<Problem> begin(std::size_t call, Arguments& arguments);
  // Keeps what the call wrote. Without a call of `end` nothing is kept.
  void end(std::size_t call);
  // What the program saves behind the call, after end().
  std::optional<OutputFile> output() const;

  // The logger's handle that calls pass.
  void setLogHandle(Kiv_LogHandle_t handle);
  // The value of a handle's variable; null before its creation.
  void* handle(std::string_view variable) const;
  // The client's name of the graph behind a variable, or of the tensor; empty
  // when unknown. For messages.
  std::string_view graphName(std::string_view variable) const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kiv::recording
