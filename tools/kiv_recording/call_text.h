#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "kiv_recording/record_text.h"
#include "recording/program.h"

// The calls of a recording as text, a line each, in the grammar of
// backends/tracer/README.md:
//
//   CallText text;
//   program.begin(0, arguments);
//   text.describe(arguments);  // backendCreate(log, [], out) -> backend#0
//   program.end(0);
//
// One thread at a time.
namespace kiv::tool {

class CallText {
 public:
  // Without ids, those of tensors are left out: they count the tensors created
  // so far, and differ from there on when one recording creates one more.
  enum class Ids : bool { kLeftOut, kShown };

  explicit CallText(Ids ids = Ids::kShown) : ids_(ids) {}

  // The call's line without its end, valid until the next one. Answers the call
  // as Tracer does: handles and ids that it creates are written where its
  // out-arguments point.
  std::string_view describe(const recording::Arguments& arguments);

 private:
  using Value = recording::Value;

  void appendArgument(const recording::Arguments& arguments, std::size_t index);
  void appendHandle(std::uint64_t handle, std::string_view none);
  void answer(const recording::Arguments& arguments);
  void answerHandle(const recording::Arguments& arguments, const Value& out);
  void answerSize(const recording::Arguments& arguments, const Value& out);
  void answerId(const Value& tensor);
  std::uint64_t newHandle(std::string_view type);
  std::uint64_t retrieveGraph(const recording::Arguments& arguments);
  void nameGraph(const recording::Arguments& arguments, std::uint64_t graph);

  Ids ids_;
  Text line_;
  // By kind, see the handles' form in the implementation.
  std::array<std::uint32_t, 5> created_{};
  std::uint32_t tensors_ = 0;
  // The graphs of a context by their names, and the context of a graph.
  std::map<std::pair<std::uint64_t, std::string>, std::uint64_t> graphs_;
  std::map<std::uint64_t, std::uint64_t> contexts_;
};

}  // namespace kiv::tool
