#pragma once

#include <cstdint>
#include <string_view>

#include "kiv_recording/answers.h"
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
  using Ids = Answers::Ids;

  explicit CallText(Ids ids = Ids::kGiven) : ids_(ids), answers_(ids) {}

  // The call's line without its end, valid until the next one. Answers the call
  // as Tracer does.
  std::string_view describe(const recording::Arguments& arguments);

 private:
  using Value = recording::Value;

  void appendArgument(const recording::Arguments& arguments, std::size_t index);
  void appendHandle(std::uint64_t handle, std::string_view none);
  void appendAnswers(const recording::Arguments& arguments);

  Ids ids_;
  Answers answers_;
  Text line_;
};

}  // namespace kiv::tool
