#include <gtest/gtest.h>

#include <algorithm>

#include "recording/recording.h"
#include "support/files.h"
#include "support/sanitized.h"

namespace kiv::test {
namespace {

using namespace recording;

const std::string& golden() {
  static const std::string text =
      readFile(std::filesystem::path(KIV_GOLDEN_DIR) / "saver_output.c");
  return text;
}

std::string replaced(std::string text, std::string_view from,
                     std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::string problemsOf(const Recording& recording) {
  std::string text;
  for (const Problem& problem : recording.problems())
    text += toString(problem) + "\n";
  return text;
}

// The call's function with its parts, for one that has all of them.
TEST(RecordingReading, FindsTheCallsAndTheirParts) {
  const auto recording = Recording::parse(golden());
  EXPECT_EQ(problemsOf(*recording), "");
  EXPECT_TRUE(recording->isComplete());
  EXPECT_EQ(recording->calls().size(), 67U);
  EXPECT_EQ(recording->dataSize(), 88U);
  EXPECT_EQ(recording->header().dataFile, "params.bin");
  EXPECT_EQ(recording->header().includes,
            (std::vector<std::string_view>{
                "KivInterface.h", "GPU/KivGpuBackend.h", "GPU/KivGpuGraph.h",
                "GPU/KivGpuContext.h"}));
  const auto calls = recording->calls();
  const auto call = std::ranges::find(
      calls, &format::calls::kTensorCreateContextTensor, &Call::function);
  ASSERT_NE(call, calls.end());
  const auto details =
      recording->details(static_cast<std::size_t>(call - calls.begin()));
  std::vector<std::string_view> names;
  for (const Statement& statement : details.statements)
    names.push_back(statement.name);
  const std::string_view t = "context_0_tensor_0";
  EXPECT_EQ(names.size(), 8U);
  EXPECT_EQ(names[6], t);
  ASSERT_EQ(details.runs.size(), 1U);
  EXPECT_EQ(details.runs[0].offset, 8U);
  EXPECT_EQ(details.runs[0].elementSize, 4U);
  EXPECT_EQ(details.runs[0].count, 6U);
  EXPECT_EQ(details.uses, std::vector<std::string_view>{"context_0"});
  EXPECT_EQ(details.texts, std::vector<std::string_view>{"weights/0"});
  EXPECT_EQ(details.statements[7].line, call->line);
  EXPECT_TRUE(recording->text(details.statements[7].span)
                  .starts_with("VALIDATE(error, interface.tensorCreate"));
  // Records of the call itself are no earlier ones.
  const auto context =
      std::ranges::find(calls, &format::calls::kContextCreate, &Call::function);
  ASSERT_NE(context, calls.end());
  EXPECT_EQ(
      recording->details(static_cast<std::size_t>(context - calls.begin()))
          .uses,
      (std::vector<std::string_view>{"backend_0", "device_0"}));
}

// As editors, other systems and people leave a recording.
TEST(RecordingReading, TakesOtherLineEndsIndentationAndComments) {
  const std::string broken = replaced(
      replaced(replaced(golden(), " = {", " =\n        {"),
               "   VALIDATE(error, ", "\t/* by hand */ VALIDATE( error,\n\t\t"),
      "_v1 =", "_v1/**/=");
  const std::string noBlankLines = replaced(golden(), ");\n\n", ");\n");
  for (const std::string& text :
       {replaced(golden(), "\n", "\r\n"), broken, noBlankLines}) {
    const auto recording = Recording::parse(text);
    EXPECT_EQ(problemsOf(*recording), "");
    EXPECT_TRUE(recording->isComplete());
    EXPECT_EQ(recording->calls().size(), 67U);
    EXPECT_EQ(recording->dataSize(), 88U);
  }
}

// Whole calls in the first bytes of a recording, by its lines alone: a call is
// whole with the blank line behind it.
std::size_t wholeCalls(std::string_view text) {
  constexpr std::string_view kCall = "\n   VALIDATE(error, interface.";
  std::size_t count = 0;
  for (std::size_t at = text.find(kCall); at != std::string_view::npos;
       at = text.find(kCall, at + 1))
    count += text.find("\n\n", at + 1) != std::string_view::npos ? 1 : 0;
  return count;
}

TEST(RecordingReading, ReadsACutRecordingUpToItsLastWholeCall) {
  const std::size_t footer =
      golden().find("   if (logging) {\n", golden().find("backendFree"));
  const std::size_t closely = golden().find("contextGetBinarySize");
  constexpr std::size_t kFar = kIsSanitized ? 211 : 61;
  constexpr std::size_t kNear = kIsSanitized ? 3 : 1;
  const auto step = [closely](std::size_t size) {
    return closely < size && size < closely + 4000 ? kNear : kFar;
  };
  for (std::size_t size = 0; size < footer; size += step(size)) {
    const auto recording = Recording::parse(golden().substr(0, size));
    ASSERT_EQ(recording->calls().size(), wholeCalls(golden().substr(0, size)))
        << size << " bytes\n"
        << problemsOf(*recording);
    EXPECT_FALSE(recording->isComplete());
  }
}

TEST(RecordingReading, ReadsWhatSeveralProcessesWrote) {
  const auto whole = Recording::parse(golden());
  const auto begin = static_cast<std::size_t>(whole->calls()[0].span.begin);
  const auto end = static_cast<std::size_t>(whole->footer().span.begin);
  const auto calls = Recording::parse(golden().substr(begin, end - begin));
  EXPECT_EQ(problemsOf(*calls), "");
  EXPECT_EQ(calls->calls().size(), 67U);
  EXPECT_FALSE(calls->header().isThere);
  EXPECT_FALSE(calls->footer().isThere);
  // A recorder goes on behind the end of another one.
  const auto twice = Recording::parse(
      golden() + "   VALIDATE(error, interface.backendFree(backend_0));\n\n");
  EXPECT_EQ(twice->calls().size(), 68U);
  EXPECT_EQ(problemsOf(*twice),
            "model.c:516:4: error: more stands behind the program's end\n");
}

TEST(RecordingReading, SaysWhereAndWhatWasExpected) {
  struct Case {
    std::string_view from;
    std::string_view to;
    std::string_view problem;
  };
  constexpr Case kCases[] = {
      {"VALIDATE(error, interface.propertyHasCapability((KivProperty_Key_t)5))",
       "VALIDATE(error, interface.propertyHasCapability(5))",
       "model.c:107:52: error: expected '(' here, found 5));\n"},
      {"uint32_t numOperations_0;", "puts(\"here\");",
       "model.c:111:4: error: expected a statement of a recording here, found "
       "puts(\"here\");\n"},
      {"interface.deviceFree(", "interface.deviceLose(",
       "model.c:503:30: error: expected a function that recordings call here, "
       "found deviceLose(device_0));\n"},
  };
  for (const Case& edit : kCases) {
    const auto recording =
        Recording::parse(replaced(golden(), edit.from, edit.to));
    EXPECT_EQ(problemsOf(*recording), edit.problem);
  }
}

}  // namespace
}  // namespace kiv::test
