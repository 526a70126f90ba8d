#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>

#include "kiv_recording/command.h"

// The verbs of the command, one file each. A function adds its verb to the
// program; `run` does it with the options that were parsed and returns the exit
// status. From the main thread.
namespace kiv::tool {

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
