#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRecordDescription =
    "Run an application and record what it asks of its backend";

constexpr const char* kRecordDetails =
    R"(The application is not changed. Where it opens a backend by dlopen, or is linked
with one, it gets the recorder, which executes nothing. Each process and each
session has a directory of its own beneath that of -o. Output and exit status
are the application's; what was recorded is said on standard error at the end.

With --beside the calls go on to the real backend, whose answers and outputs the
application gets: for one that looks at results. Each recording then has a list
of what the backend refused, and with KIV_RELAY_KEEP_OUTPUTS=1 its outputs.

Example:
  kiv-recording record -o recordings -- ./application --model net.bin
  kiv-recording info recordings/4711-0

Example: an application that looks at results
  KIV_RELAY_KEEP_OUTPUTS=1 kiv-recording record --beside ./libBackend.so -- ./app
  kiv-recording replay kiv_recordings/4711-0 -b ./libBackend.so --compare)";

struct RecordOptions {
  std::string output = "kiv_recordings";
  std::string backendId;
  std::string replace;
  std::string saver;
  // The real backend, whose answers the application gets.
  std::string beside;
  std::vector<std::string> command;
};

// A library that is installed with this program, wherever their prefix is now,
// or that was built with it.
fs::path find(const char* name) {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  for (const char* folder : {KIV_LIBRARY_FOLDER, "../lib", "../src"}) {
    fs::path path = (program.parent_path() / folder / name).lexically_normal();
    if (fs::exists(path, error)) return path;
  }
  return {};
}

std::set<std::string> namesIn(const fs::path& directory) {
  std::set<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error))
    names.insert(entry.path().filename().string());
  return names;
}

// Percent signs of the path are none of the pattern's.
std::string patternBeneath(const fs::path& directory) {
  std::string pattern;
  for (const char c : directory.string())
    pattern += c == '%' ? std::string("%%") : std::string(1, c);
  return pattern + "/%p-%n";
}

// The path of the real backend in a form that no application uses: the loader
// knows the recorder by the name that the application gave, and would take that
// name for the recorder again.
std::string unusualPathOf(const std::string& library) {
  const fs::path path = fs::absolute(library);
  return (path.parent_path() / "." / path.filename()).string();
}

void setEnvironment(const RecordOptions& options, const fs::path& directory,
                    const fs::path& saver, const fs::path& audit) {
  const auto set = [](const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
  };
  const char* others = std::getenv("LD_AUDIT");
  set("LD_AUDIT", audit.string() + (others != nullptr && *others != '\0'
                                        ? std::string(":") + others
                                        : std::string()));
  set("KIV_RECORD_LIBRARY", saver.string());
  set("KIV_SAVER_OUTPUT_DIRECTORY", patternBeneath(directory));
  if (!options.backendId.empty())
    set("KIV_SAVER_BACKEND_ID", options.backendId);
  if (!options.replace.empty()) set("KIV_RECORD_REPLACE", options.replace);
  if (!options.beside.empty())
    set("KIV_RELAY_BACKEND", unusualPathOf(options.beside));
}

// The application's exit status, or 128 and its signal, as a shell has it. A
// signal of the terminal is for the application, which may go on.
int statusOf(pid_t application) {
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGQUIT, SIG_IGN);
  int status = 0;
  while (::waitpid(application, &status, 0) < 0 && errno == EINTR) {
  }
  constexpr int kSignalled = 128;
  return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status)
                             : WEXITSTATUS(status);
}

// 127 if it cannot be started, as a shell has it.
int runApplication(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command)
    arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const pid_t application = ::fork();
  if (application == 0) {
    ::execvp(arguments[0], arguments.data());
    fmt::print(stderr, "kiv-recording: {}: {}\n", command[0],
               std::strerror(errno));
    std::_Exit(127);
  }
  if (application > 0) return statusOf(application);
  fmt::print(stderr, "kiv-recording: {}\n", std::strerror(errno));
  return kDiffers;
}

void describe(const fs::path& directory) {
  const auto result = recording::Recording::open(directory);
  if (result.recording == nullptr) {
    fmt::print(stderr, "{}: {}\n", textOf(directory), toString(result.problem));
    return;
  }
  const std::size_t calls = result.recording->calls().size();
  fmt::print(stderr, "{}: {} call{}, {} bytes of data{}\n", textOf(directory),
             calls, calls == 1 ? "" : "s", result.recording->dataSize(),
             result.recording->isComplete() ? "" : ", cut off");
}

int record(const RecordOptions& options) {
  const char* const library =
      options.beside.empty() ? "libKivSaver.so" : "libKivRelay.so";
  const fs::path saver =
      options.saver.empty() ? find(library) : fs::absolute(options.saver);
  const fs::path audit = find("libKivRecorderAudit.so");
  std::error_code error;
  if (!fs::exists(saver, error) || audit.empty()) {
    fmt::print(stderr, "{} is not there; name the recorder with --saver LIB\n",
               audit.empty() ? "libKivRecorderAudit.so" : library);
    return kUnreadable;
  }
  if (!options.beside.empty() && !fs::exists(options.beside, error)) {
    fmt::print(stderr, "--beside: {}: there is no such file\n", options.beside);
    return kUnreadable;
  }
  const fs::path directory = fs::absolute(options.output);
  fs::create_directories(directory, error);
  if (error) {
    fmt::print(stderr, "{}: {}\n", textOf(directory), error.message());
    return kUnreadable;
  }
  const std::set<std::string> before = namesIn(directory);
  setEnvironment(options, directory, saver, audit);
  const int status = runApplication(options.command);
  const std::set<std::string> after = namesIn(directory);
  std::vector<std::string> made;
  std::ranges::set_difference(after, before, std::back_inserter(made));
  for (const std::string& name : made) describe(directory / name);
  if (made.empty()) {
    fmt::print(stderr,
               "Nothing was recorded: the application opened no library {}.\n"
               "KIV_SAVER_LOG=warn in the environment says more.\n",
               options.replace.empty()
                   ? "that exports KivInterface_getProviders"
                   : "named " + options.replace);
  }
  return status;
}

}  // namespace

Verb addRecord(CLI::App& program) {
  const auto options = std::make_shared<RecordOptions>();
  CLI::App* verb = program.add_subcommand("record", kRecordDescription);
  verb->footer(kRecordDetails);
  verb->add_option("-o,--output", options->output,
                   "Where the recordings' directories go")
      ->capture_default_str()
      ->type_name("DIR");
  verb->add_option("--backend-id", options->backendId,
                   "The backend's id, whose headers the recording includes")
      ->check(CLI::NonNegativeNumber)
      ->type_name("N");
  verb->add_option("--replace", options->replace,
                   "The backend's file name, or a pattern as libVendor*.so; "
                   "else any library that exports KivInterface_getProviders")
      ->type_name("NAME");
  verb->add_option("--beside", options->beside,
                   "The real backend, which gets the calls, too, and gives the "
                   "application its answers")
      ->type_name("LIB");
  verb->add_option("--saver", options->saver,
                   "The recorder; else the one that was installed with this "
                   "program")
      ->type_name("LIB");
  verb->add_option("command", options->command,
                   "The application and its arguments, behind --")
      ->required()
      ->type_name("APPLICATION ARGUMENTS");
  return {verb, [options] { return record(*options); }};
}

}  // namespace kiv::tool
