// Lets a fuzzer choose the calls of a hostile caller: each input is a session
// of its own, from the options to the end of the files.
//
// The library is part of the program, so that its coverage steers the fuzzer.

#include <array>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "Saver/KivSaver.h"
#include "hostile/random_caller.h"
#include "session/session.h"

namespace kiv::test {
namespace {

const KivInterface_Implementation_t& table() {
  const KivInterface_t** providers = nullptr;
  uint32_t count = 0;
  KivInterface_getProviders(&providers, &count);
  return providers[0]->KIV_INTERFACE_VER_NAME;
}

// A directory in memory where there is one.
class Directory {
 public:
  Directory() {
    const bool hasMemory = std::filesystem::is_directory("/dev/shm");
    std::string pattern = std::string(hasMemory ? "/dev/shm" : "/tmp");
    pattern += "/kiv_fuzz_XXXXXX";
    path_ = ::mkdtemp(pattern.data());
    std::fclose(std::fopen((path_ + "/file").c_str(), "w"));
  }
  ~Directory() { std::filesystem::remove_all(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Ends the session with its footer and makes a new one in its place.
void startAnew() {
  session::Session* session = session::SessionUse().get();
  session->~Session();
  new (session) session::Session;
}

// Formats the message, so that a wrong argument shows.
void readMessage(const char* format, KivLog_Level_t, uint64_t,
                 va_list arguments) {
  std::array<char, 256> text;
  std::vsnprintf(text.data(), text.size(), format, arguments);
}

class Session {
 public:
  explicit Session(std::span<const std::uint8_t> bytes)
      : source_(bytes),
        caller_(api_, source_, RandomCaller::Manner::kHostile) {}

  void run() {
    while (api_.logFree(nullptr) == KIV_SUCCESS) {
    }
    api_.logCreate(readMessage, KIV_LOG_LEVEL_DEBUG, nullptr);
    setDirectory();
    while (!source_.isEmpty()) {
      switch (source_.below(48)) {
        case 46:
          setOptions();
          break;
        case 47:
          callLogger();
          break;
        default:
          caller_.step();
      }
    }
  }

 private:
  static const std::string& directory() {
    static const Directory directory;
    return directory.path();
  }

  static void setDirectory() {
    KivSaver_Config_t option{};
    setNumber(option.option, KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY);
    option.outputDirectory = directory().c_str();
    std::array<const KivSaver_Config_t*, 2> list = {&option, nullptr};
    KivSaver_initialize(list.data());
  }

  // Names that lead out of the directory are not among these.
  const char* fileName() {
    static const std::string longName(1000, 'x');
    const std::array<const char*, 8> names = {
        "a.c", "b.bin", "", "sub/a", "a\\b", longName.c_str(), nullptr, ".."};
    return names[source_.below(names.size())];
  }

  const char* directoryName() {
    static const std::array<std::string, 7> names = {
        directory(),           directory() + "/new", directory() + "/new/",
        directory() + "/file", directory() + "//",   directory() + "/a/b",
        std::string(5000, 'x')};
    return names[source_.below(names.size())].c_str();
  }

  void setOptions() {
    std::array<KivSaver_Config_t, 3> options{};
    std::array<const KivSaver_Config_t*, 4> list{};
    const std::uint32_t count = source_.below(4);
    for (std::uint32_t i = 0; i < count; ++i) {
      KivSaver_Config_t& option = options[i];
      const std::uint32_t tag = source_.below(7);
      setNumber(option.option, tag == 6 ? 0xFFFFFFFF : tag);
      if (tag == KIV_SAVER_CONFIG_OPTION_FILE_CONFIG)
        option.fileConfig = {fileName(), fileName()};
      else if (tag == KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY)
        option.outputDirectory = directoryName();
      else
        option.backendId = source_.below(6);
      list[i] = &option;
    }
    KivSaver_initialize(source_.oneIn(16) ? nullptr : list.data());
  }

  void callLogger() {
    KivLog_Level_t level{};
    setNumber(level, source_.below(3));
    Kiv_LogHandle_t handle = nullptr;
    switch (source_.below(3)) {
      case 0:
        api_.logCreate(readMessage, level,
                       source_.oneIn(2) ? &handle : nullptr);
        break;
      case 1:
        api_.logSetLogLevel(nullptr, level);
        break;
      default:
        api_.logFree(handle);
    }
  }

  const KivInterface_Implementation_t& api_ = table();
  Source source_;
  RandomCaller caller_;
};

}  // namespace
}  // namespace kiv::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes,
                                      std::size_t size) {
  kiv::test::Session({bytes, size}).run();
  kiv::test::startAnew();
  return 0;
}
