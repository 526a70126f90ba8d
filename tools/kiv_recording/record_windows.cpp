#include <fmt/format.h>

#include "kiv_recording/verbs.h"

namespace kiv::tool {

// The system has no loader that gives one library in the place of another.
Verb addRecord(CLI::App& program) {
  CLI::App* verb = program.add_subcommand(
      "record", "Run an application and record what it asks (Linux only)");
  verb->allow_extras();
  verb->footer(
      "On Windows put KivSaver.dll in the place of the backend's DLL, and set "
      "KIV_SAVER_OUTPUT_DIRECTORY.\n\nExample:\n"
      "  set KIV_SAVER_OUTPUT_DIRECTORY=C:\\recordings\\%p-%n");
  return {verb, [] {
            fmt::print(stderr,
                       "record works on Linux only; see record --help\n");
            return static_cast<int>(kUnreadable);
          }};
}

}  // namespace kiv::tool
