#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>

// The verbs of the command, one file each. A function adds its verb to the
// program; `run` does it with the options that were parsed and returns the exit
// status. From the main thread.
namespace kiv::tool {

// What the command's exit status says.
enum ExitStatus {
  kDone = 0,        // done, or equal
  kDiffers = 1,     // differs, or failed
  kUnreadable = 2,  // the recording cannot be read, or wrong usage
};

struct Verb {
  const CLI::App* options;
  std::function<int()> run;
};

Verb addReplay(CLI::App& program);
Verb addInfo(CLI::App& program);
Verb addCheck(CLI::App& program);
Verb addDump(CLI::App& program);
Verb addDiff(CLI::App& program);
Verb addComplete(CLI::App& program);
Verb addPrepare(CLI::App& program);
Verb addCompare(CLI::App& program);
Verb addExtract(CLI::App& program);
Verb addExport(CLI::App& program);
Verb addRecord(CLI::App& program);

}  // namespace kiv::tool
