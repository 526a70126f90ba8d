#include "kiv_recording/command.h"

#include <CLI/CLI.hpp>

#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

constexpr const char* kDescription =
    R"(Runs and examines recordings of calls of the Kiv inference API.

A recording is a directory with the two files that the Saver library writes in
place of a backend: the calls as a C program (saver_output.c) and their bulk
data (params.bin). No compiler is needed, and nothing that a recording holds
is run but calls of the interface. A recording is never changed.)";

constexpr const char* kFooter =
    R"(Each verb has its own help: kiv-recording replay --help

Exit status: 0 done or equal, 1 differs or failed, 2 the recording cannot be
read or the usage is wrong; replay ends as the recorded program would.

Example:
  kiv-recording info saver_output
  kiv-recording replay saver_output --backend ./libBackend.so)";

}  // namespace

int runCommand(const std::vector<std::string>& arguments) {
  CLI::App program(kDescription, "kiv-recording");
  program.set_version_flag("--version", "kiv-recording " KIV_TOOL_VERSION);
  program.footer(kFooter);
  program.require_subcommand(1);
  // Paths may begin with a slash on every system.
  program.allow_windows_style_options(false);
  const Verb verbs[] = {
      addReplay(program),  addInfo(program),    addCheck(program),
      addDump(program),    addDiff(program),    addComplete(program),
      addPrepare(program), addCompare(program), addExtract(program),
      addExport(program),  addRecord(program)};
  try {
    // CLI11 takes them from the back.
    program.parse(
        std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? kDone : kUnreadable;
  }
  for (const Verb& verb : verbs)
    if (verb.options->parsed()) return verb.run();
  return kUnreadable;
}

}  // namespace kiv::tool
