#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "recording/program.h"

// What a backend answers that does nothing, so that the calls of a recording
// can be looked at one after the other:
//
//   Answers answers;
//   program.begin(call, arguments);
//   answers.answer(arguments);
//   program.end(call);
//
// Handles and ids are Tracer's: numbered from 0 for each kind of handle, from 1
// for tensors. One thread at a time.
namespace kiv::tool {

class Answers {
 public:
  enum class Ids : bool { kLeftOut, kGiven };

  explicit Answers(Ids ids = Ids::kGiven) : ids_(ids) {}

  // Writes where the call's out-arguments point. A graph that is retrieved is
  // the one that was created with that name in the context.
  void answer(const recording::Arguments& arguments);

  // "graph", and its number, of a handle that is not null.
  static std::string_view kindOf(std::uint64_t handle);
  static std::uint64_t numberOf(std::uint64_t handle) {
    return (handle & 0xffffffff) - 1;
  }
  // A record of a known version.
  static bool hasId(const Kiv_Tensor_t& tensor);
  // An out-argument that receives the size of a context's binary.
  static bool isSize(const recording::Value& value);

 private:
  using Arguments = recording::Arguments;
  using Value = recording::Value;

  void answerHandle(const Arguments& arguments, const Value& out);
  void answerSize(const Arguments& arguments, const Value& out);
  void answerId(const Value& tensor);
  std::uint64_t newHandle(std::string_view type);
  std::uint64_t retrieveGraph(const Arguments& arguments);
  void nameGraph(const Arguments& arguments, std::uint64_t graph);

  Ids ids_;
  // By kind, see the handles' form in the implementation.
  std::array<std::uint32_t, 5> created_{};
  std::uint32_t tensors_ = 0;
  // The graphs of a context by their names, and the context of a graph.
  std::map<std::pair<std::uint64_t, std::string>, std::uint64_t> graphs_;
  std::map<std::uint64_t, std::uint64_t> contexts_;
};

}  // namespace kiv::tool
