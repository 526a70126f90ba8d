#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "recording/replayer.h"
#include "support/files.h"
#include "support/saver_library.h"
#include "tracer/tracer_run.h"

namespace kiv::test {
namespace {

namespace fs = std::filesystem;
using namespace recording;

const fs::path kGolden = KIV_GOLDEN_DIR;

std::string goldenText() { return readFile(kGolden / "saver_output.c"); }

std::vector<std::byte> goldenData() {
  const std::string data = readFile(kGolden / "params.bin");
  std::vector<std::byte> bytes(data.size());
  std::memcpy(bytes.data(), data.data(), data.size());
  return bytes;
}

Backend tracer() {
  std::string why;
  auto backend = Backend::load(KIV_TRACER_LIBRARY, why);
  EXPECT_TRUE(backend.has_value()) << why;
  return *std::move(backend);
}

std::string edited(std::string_view from, std::string_view to) {
  std::string text = goldenText();
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST(RecordingReplay, TracerSeesTheClientsCalls) {
  auto data = goldenData();
  std::string crlf;
  for (const char c : goldenText())
    crlf += c == '\n' ? "\r\n" : std::string(1, c);
  for (const std::string& text : {goldenText(), crlf}) {
    const TracerRun run("KIV_TRACER_CUSTOM", "gpu");
    const auto recording = Recording::parse(text);
    const Backend backend = tracer();
    const TempDirectory directory;
    ReplayOptions options;
    options.outputDirectory = directory.path();
    const auto result = Replayer(*recording, data, backend).run(options);
    EXPECT_FALSE(result.refusal || result.fault);
    EXPECT_EQ(result.exitStatus(), 0);
    EXPECT_EQ(run.text(), readFile(KIV_GOLDEN_TRACE));
    EXPECT_TRUE(fs::exists(directory.path() / "context_0.bin"));
  }
}

// The compiled program's rule: nothing behind the first error, but "not
// supported" is none; and the lines that it prints.
TEST(RecordingReplay, StopsBehindTheFirstErrorAndSaysWhatItIs) {
  SaverLibrary saver;
  auto data = goldenData();
  const auto recording = Recording::parse(goldenText());
  std::string why;
  const auto backend = Backend::load(KIV_SAVER_LIBRARY, why);
  std::vector<std::string> lines;
  ReplayOptions options;
  options.print = [&](const std::string& line) { lines.push_back(line); };
  const auto result = Replayer(*recording, data, *backend).run(options);
  ASSERT_FALSE(result.failures.empty());
  const CallFailure& failure = result.failures.front();
  EXPECT_EQ(result.failures.size(), 1U);
  EXPECT_EQ(result.callsMade, failure.call + 1);
  EXPECT_EQ(result.exitStatus(), static_cast<int>(failure.status));
  EXPECT_EQ(lines, std::vector<std::string>{
                       "ERROR! Line " + std::to_string(failure.problem.line) +
                       " with error value: " + std::to_string(failure.status)});
}

TEST(RecordingReplay, NamesTheNodeAndItsTensorsWhenACallFails) {
  SaverLibrary saver;
  const auto recording = Recording::parse(
      edited("graphAddNode(main_graph,", "graphAddNode(NULL,"));
  auto data = goldenData();
  std::string why;
  const auto backend = Backend::load(KIV_SAVER_LIBRARY, why);
  ReplayOptions options;
  options.continueOnError = true;
  options.print = [](const std::string&) {};
  const auto result = Replayer(*recording, data, *backend).run(options);
  ASSERT_EQ(result.failures.size(), 4U);
  EXPECT_EQ(result.exitStatus(),
            static_cast<int>(result.failures.front().status));
  const Problem& problem = result.failures.back().problem;
  EXPECT_EQ(problem.message,
            "graphAddNode of node \"1x1 conv\" (Conv2d), inputs \"weights/0\", "
            "\"unknown\", outputs \"activation\" failed with 6001 "
            "(KIV_GRAPH_ERROR_INVALID_HANDLE: the graph's handle is null or "
            "unknown)");
  EXPECT_EQ(problem.line, 420U);
}

// What a recording says in a wrong way never reaches a backend.
TEST(RecordingReplay, LeadsNoBackendBeyondItsMemory) {
  struct Case {
    std::string_view from;
    std::string_view to;
    std::string_view problem;
  };
  constexpr Case kCases[] = {
      {"main_graph_tensor_0_dims[] = {2, 3}",
       "main_graph_tensor_0_dims[] = {2}",
       "main_graph_tensor_0_dims has 1 elements, and 2 are counted"},
      {"context_0_tensor_0_data, 24}", "context_0_tensor_0_data, 28}",
       "context_0_tensor_0_data has 24 bytes, and 28 are counted"},
      {"fread(context_0_tensor_0_data, 4, 6",
       "fread(context_0_tensor_0_data, 4, 60",
       "context_0_tensor_0_data has another size than is read"},
      {"&context_0_isPersistentBinary_0, NULL}",
       "&context_0_isPersistentBinary_0}",
       "context_0_config_0 does not end with NULL"},
      {"main_graph_inputTensors_0, 1,", "main_graph_inputTensors_0, 2,",
       "main_graph_inputTensors_0 has 1 elements, and 2 are counted"},
      {"context_1_binary, 5, &", "context_1_binary, 6, &",
       "context_1_binary has 5 elements, and 6 are counted"},
      {"context_0_buffer, 10, &", "context_0_buffer, 11, &",
       "context_0_buffer has 10 elements, and 11 are counted"},
      {"&context_0_tensor_0)", "&context_0_tensor_0_v1)",
       "context_0_tensor_0_v1 is of type Kiv_TensorV1_t, not Kiv_Tensor_t"},
      {".int8Value = -128", ".int8Value = -129", "-129 is out of range"},
      {"graphFinalize(loop_body,", "graphFinalize(nobody,",
       "nobody is created by no earlier call"},
      {"{context_0_tensor_0.v1.id, \"weights/0\"",
       "{context_9_tensor_0.v1.id, \"weights/0\"",
       "context_9_tensor_0 is no tensor of an earlier call"},
      {"fread(loop_body_tensor_4_data, 1, 10",
       "fread(loop_body_tensor_9_data, 1, 10",
       "loop_body_tensor_9_data is no array to read into"},
  };
  auto data = goldenData();
  for (const Case& edit : kCases) {
    const auto recording = Recording::parse(edited(edit.from, edit.to));
    Program program(*recording, data);
    Arguments arguments;
    std::optional<Problem> problem;
    for (std::size_t i = 0; i < recording->calls().size() && !problem; ++i) {
      problem = program.begin(i, arguments);
      if (!problem) program.end(i);
    }
    ASSERT_TRUE(problem.has_value()) << edit.problem;
    EXPECT_NE(problem->message.find(edit.problem), std::string::npos)
        << toString(*problem);
    EXPECT_NE(problem->line, 0U);
  }
}

TEST(RecordingReplay, RefusesADataFileOfAnotherSize) {
  const auto recording = Recording::parse(goldenText());
  auto data = goldenData();
  const TracerRun run;
  for (const std::size_t size : {std::size_t{0}, data.size() - 1}) {
    const auto result =
        Replayer(*recording, std::span(data).first(size), tracer()).run({});
    ASSERT_TRUE(result.refusal);
    EXPECT_EQ(toString(*result.refusal),
              "params.bin: error: the data file is too short: the calls read "
              "88 bytes, it has " +
                  std::to_string(size));
    EXPECT_EQ(result.exitStatus(), 1);
  }
  data.push_back({});
  EXPECT_TRUE(Replayer(*recording, data, tracer()).run({}).refusal);
  EXPECT_EQ(run.text(), "");
}

}  // namespace
}  // namespace kiv::test
