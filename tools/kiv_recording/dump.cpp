#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <memory>

#include "kiv_recording/call_text.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"
#include "recording/program.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Program;
using recording::Value;

constexpr const char* kDumpDescription = "Print the calls, one a line";

constexpr const char* kDumpDetails =
    R"(Prints the calls of a recording, one a line: the text that the backend Tracer
prints when the recording is replayed on it (with KIV_TRACER_CUSTOM=gpu), so
that a recording can be compared with a trace by diff. Data shows by its size
and a hash.

Example: what is called between the 10th and the 20th call?
  kiv-recording dump saver_output --calls 10-20

Example: does the recording hold what the client did?
  kiv-recording dump saver_output | diff - trace.txt)";

struct DumpOptions {
  RecordingOptions recording;
  std::string calls;
  std::string graph;
};

// Calls from the first to the last, counted from 1.
struct Range {
  std::uint64_t first = 1;
  std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
};

// "7", "7-9", "7-" or "-9".
bool parseRange(const std::string& text, Range& range) {
  const auto parse = [](std::string_view digits, std::uint64_t& number) {
    if (digits.empty()) return true;
    const auto end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number);
    return result.ec == std::errc{} && result.ptr == end;
  };
  const std::size_t dash = text.find('-');
  const std::string_view view = text;
  if (text.empty() || !parse(view.substr(0, dash), range.first)) return false;
  if (dash == std::string::npos)
    range.last = range.first;
  else if (!parse(view.substr(dash + 1), range.last))
    return false;
  return range.first >= 1 && range.first <= range.last;
}

// Whether the call creates the client's graph of that name or is made on it.
bool isOfGraph(const Program& program, const Arguments& arguments,
               const std::string& name) {
  if (const Value* own = arguments.find("name");
      own != nullptr && own->pointer<const char>() != nullptr &&
      own->pointer<const char>() == name)
    return true;
  const Value* graph = arguments.find("graph");
  return graph != nullptr && program.graphName(graph->variable) == name;
}

int dump(const DumpOptions& options) {
  Range range;
  if (!options.calls.empty() && !parseRange(options.calls, range)) {
    fmt::print(stderr, "--calls: {} is no range such as 10-20\n",
               options.calls);
    return kUnreadable;
  }
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const auto data = DataFile::open(*recording);
  if (!data) return kUnreadable;
  Program program(*recording, data->bytes());
  Arguments arguments;
  CallText text;
  const std::size_t end = static_cast<std::size_t>(
      std::min<std::uint64_t>(recording->calls().size(), range.last));
  for (std::size_t call = 0; call < end; ++call) {
    if (const auto problem = program.begin(call, arguments)) {
      std::fflush(stdout);
      fmt::print(stderr, "{}\n", toString(*problem));
      return kUnreadable;
    }
    const std::string_view line = text.describe(arguments);
    program.end(call);
    if (call + 1 < range.first) continue;
    if (!options.graph.empty() && !isOfGraph(program, arguments, options.graph))
      continue;
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
  }
  return std::fflush(stdout) == 0 ? kDone : kDiffers;
}

}  // namespace

Verb addDump(CLI::App& program) {
  const auto options = std::make_shared<DumpOptions>();
  CLI::App* verb = program.add_subcommand("dump", kDumpDescription);
  verb->footer(kDumpDetails);
  addRecording(*verb, options->recording);
  verb->add_option("--calls", options->calls,
                   "Only the calls A to B, counted from 1")
      ->type_name("A-B");
  verb->add_option("--graph", options->graph,
                   "Only the calls on the graph of that name")
      ->type_name("NAME");
  return {verb, [options] { return dump(*options); }};
}

}  // namespace kiv::tool
