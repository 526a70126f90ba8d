#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <string>
#include <system_error>

#include "kiv_recording/program_text.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::Call;
using recording::Recording;

constexpr const char* kPrepareDescription = "Make the program for a C compiler";

constexpr const char* kPrepareDetails =
    R"(Makes the program for a C compiler of a recording: with an end if it was cut
off, with the client's texts escaped, with arrays and numbers in forms that
every compiler takes. Everything else stays as it is, line numbers included,
and what was changed is listed. The project replay/ compiles and links it.

Example: read, change and compile a session by hand
  kiv-recording prepare saver_output -o program.c
  cc -O0 -Iinclude program.c /path/libBackend.so -o program
  cd saver_output && ../program)";

struct PrepareOptions {
  RecordingOptions recording;
  std::string output;
  std::string facts;
};

// The data file's size is known where every statement is.
bool hasUnknownStatements(const Recording& recording) {
  return std::ranges::any_of(recording.calls(), [](const Call& call) {
    return call.unknownStatements != 0;
  });
}

// A recorder that is killed may leave bytes of a call whose text is missing.
std::string mostData(const Recording& recording) {
  return missingEnd(recording) ? "INT64_MAX"
                               : std::to_string(recording.dataSize());
}

// What the launcher of the replay project checks before the first call.
std::string factsOf(const Recording& recording) {
  std::set<std::string_view> functions;
  for (const Call& call : recording.calls())
    functions.insert(call.function->name);
  std::string facts = fmt::format(
      "#define RECORDED_PROGRAM_SIZE {}u\n"
      "#define RECORDED_FUNCTIONS(FUNCTION)",
      recording.text().size());
  for (const std::string_view function : functions)
    facts += fmt::format(" \\\n  FUNCTION({})", function);
  facts += '\n';
  if (!recording.header().dataFile.empty() && !hasUnknownStatements(recording))
    facts += fmt::format(
        "#define RECORDED_DATA_FILE \"{}\"\n"
        "#define RECORDED_DATA_LEAST {}\n"
        "#define RECORDED_DATA_MOST {}\n",
        recording.header().dataFile, recording.dataSize(), mostData(recording));
  return facts;
}

void showChange(const Recording& recording, const Change& change) {
  constexpr std::array<std::string_view, 3> kWords = {
      "escaped a text", "gave an array an element",
      "wrote a number in another form"};
  if (change.kind == ChangeKind::kEnd) {
    fmt::print("  gave {} whole calls an end; left out {} bytes\n",
               recording.calls().size(), change.span.size());
    return;
  }
  fmt::print("  line {}: {}\n", recording.placeOf(change.span.begin).line,
             kWords[static_cast<std::size_t>(change.kind)]);
}

void showChanges(const Recording& recording,
                 const std::vector<Change>& changes) {
  constexpr std::size_t kMostShown = 20;
  fmt::print("{} calls, {}\n", recording.calls().size(),
             changes.empty() ? std::string("nothing changed")
                             : fmt::format("{} changes:", changes.size()));
  for (std::size_t i = 0; i < std::min(changes.size(), kMostShown); ++i)
    showChange(recording, changes[i]);
  if (changes.size() <= kMostShown) return;
  fmt::print("  and {} more\n", changes.size() - kMostShown);
  if (changes.back().kind == ChangeKind::kEnd)
    showChange(recording, changes.back());
}

int prepare(const PrepareOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  if (!recording->header().isWhole && missingEnd(*recording)) {
    fmt::print(stderr,
               "{}: holds no whole program header, nothing to prepare\n",
               textOf(recording->modelPath()));
    return kUnreadable;
  }
  const fs::path program = pathOf(options.output);
  std::error_code ignored;
  if (fs::equivalent(program, recording->modelPath(), ignored)) {
    fmt::print(stderr, "{}: is the recording itself; name another file\n",
               options.output);
    return kUnreadable;
  }
  const std::vector<Change> changes = changesForCompilers(*recording);
  if (!options.facts.empty() &&
      !writeFile(pathOf(options.facts), factsOf(*recording)))
    return kDiffers;
  if (!writeProgram(*recording, changes, program)) return kDiffers;
  showChanges(*recording, changes);
  return kDone;
}

}  // namespace

Verb addPrepare(CLI::App& program) {
  const auto options = std::make_shared<PrepareOptions>();
  CLI::App* verb = program.add_subcommand("prepare", kPrepareDescription);
  verb->footer(kPrepareDetails);
  addRecording(*verb, options->recording);
  verb->add_option("-o,--output", options->output, "The program")
      ->required()
      ->type_name("FILE.c");
  verb->add_option("--facts", options->facts,
                   "A header of what the program needs, for a launcher")
      ->type_name("FILE.h");
  return {verb, [options] { return prepare(*options); }};
}

}  // namespace kiv::tool
