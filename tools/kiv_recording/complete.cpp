#include <fmt/format.h>

#include <memory>
#include <system_error>

#include "kiv_recording/program_text.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::Recording;

constexpr const char* kCompleteDescription =
    "Give a recording that was cut off its end, in a copy";

constexpr const char* kCompleteDetails =
    R"(Makes a whole recording of one whose recorder was killed: a new directory with
the calls that are whole, the end of the program behind them, and the data
that these calls read.

Example:
  kiv-recording complete saver_output -o whole
  kiv-recording check whole)";

struct CompleteOptions {
  RecordingOptions recording;
  std::string output;
};

int fail(const fs::path& path, const std::error_code& error) {
  fmt::print(stderr, "{}: {}\n", textOf(path), error.message());
  return kDiffers;
}

// Bytes behind the last read are those of a call whose text was cut off.
int copyData(const Recording& recording, const fs::path& directory) {
  const auto from = recording.dataPath();
  if (!from) return kDone;
  const fs::path to = directory / from->filename();
  std::error_code error;
  fs::copy_file(*from, to, error);
  if (error) return fail(*from, error);
  const std::uintmax_t size = fs::file_size(to, error);
  if (!error && size > recording.dataSize())
    fs::resize_file(to, recording.dataSize(), error);
  if (error) return fail(to, error);
  if (size < recording.dataSize())
    fmt::print(stderr,
               "{}: has {} bytes, but the recording reads {}; the copy is as "
               "short\n",
               textOf(*from), size, recording.dataSize());
  return size < recording.dataSize() ? kDiffers : kDone;
}

int complete(const CompleteOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  if (!recording->header().isWhole) {
    fmt::print(stderr,
               "{}: holds no whole program header, nothing to complete\n",
               textOf(recording->modelPath()));
    return kUnreadable;
  }
  const fs::path directory = pathOf(options.output);
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) return fail(directory, error);
  const fs::path model = directory / recording->modelPath().filename();
  if (fs::exists(model)) {
    fmt::print(stderr, "{}: is there already; name another directory\n",
               textOf(model));
    return kDiffers;
  }
  std::vector<Change> changes;
  if (const auto end = missingEnd(*recording)) changes.push_back(*end);
  if (!writeProgram(*recording, changes, model)) return kDiffers;
  if (changes.empty())
    fmt::print("The recording is complete: {} calls.\n",
               recording->calls().size());
  else
    fmt::print("Gave {} whole calls an end; left out {} bytes.\n",
               recording->calls().size(), changes[0].span.size());
  return copyData(*recording, directory);
}

}  // namespace

Verb addComplete(CLI::App& program) {
  const auto options = std::make_shared<CompleteOptions>();
  CLI::App* verb = program.add_subcommand("complete", kCompleteDescription);
  verb->footer(kCompleteDetails);
  addRecording(*verb, options->recording);
  verb->add_option("-o,--output", options->output, "The new directory")
      ->required()
      ->type_name("OUT");
  return {verb, [options] { return complete(*options); }};
}

}  // namespace kiv::tool
