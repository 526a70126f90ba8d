#include "answers.h"

#include <utility>

#include "diagnostics/standard_error.h"
#include "platform/files.h"

namespace kiv::relay {
namespace {

constexpr const char* kFileName = "answers.json";
constexpr std::string_view kHexDigits = "0123456789abcdef";

// How many bytes of well-formed UTF-8 begin the text; 0 if none do.
std::size_t characterLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xc2 ? 0
                             : first < 0xe0 ? 2
                             : first < 0xf0 ? 3
                             : first < 0xf5 ? 4
                                            : 0;
  if (length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) return 0;
  if (length < 3) return length;
  // Neither longer than need be, nor half a pair, nor beyond the last
  // character.
  const auto second = static_cast<unsigned char>(text[1]);
  const bool isOdd =
      (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
      (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f);
  return isOdd ? 0 : length;
}

// Bytes that are no UTF-8, which a path may have, become characters below 256.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text[0]);
    const std::size_t length = characterLength(text);
    if (length == 0 || byte < 0x20) {
      result += "\\u00";
      result += kHexDigits[byte >> 4];
      result += kHexDigits[byte & 15];
    } else {
      if (byte == '"' || byte == '\\') result += '\\';
      result += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result + '"';
}

std::string textOf(const Kiv_Version_t& version) {
  return quoted(std::to_string(version.majorVersion) + "." +
                std::to_string(version.minorVersion) + "." +
                std::to_string(version.patchVersion));
}

}  // namespace

Answers::Answers(std::string library, const KivInterface_t& provider,
                 bool keepsOutputs)
    : library_(std::move(library)),
      provider_(provider),
      keepsOutputs_(keepsOutputs) {}

Answers::~Answers() { close(); }

void Answers::close() {
  if (file_ != nullptr) platform::closeFile(std::exchange(file_, nullptr));
}

bool Answers::reach(session::Session& session, const Place& place) {
  if (place.call != 0) lastCall_ = place.call;
  if (isOpenFor(place)) return false;
  const std::lock_guard lock(mutex_);
  const auto [settings, program] = session.program();
  if (program == program_) return false;
  open(settings);
  program_ = program;
  return true;
}

// A program that continues another one, or has its directory, adds to its
// answers.
void Answers::open(const output::OutputSettings& settings) {
  const bool continues =
      !settings.writeHeader || settings.directory == directory_;
  close();
  directory_ = settings.directory;
  const std::string path = output::pathOf(directory_, kFileName);
  file_ =
      platform::openForWriting(path, continues ? platform::OpenMode::kAppend
                                               : platform::OpenMode::kTruncate)
          .stream;
  if (file_ == nullptr)
    log::reportFailure(path.c_str(), platform::lastFailure().c_str());
  write(firstLine(settings));
}

// The stream has no buffer: a line is one write.
void Answers::write(const std::string& line) {
  if (file_ != nullptr) std::fwrite(line.data(), 1, line.size(), file_);
}

std::string Answers::firstLine(const output::OutputSettings& settings) const {
  const char* const name = provider_.providerName;
  const Kiv_ApiVersion_t& version = provider_.apiVersion;
  return "{\"backend\": {\"library\": " + quoted(library_) +
         ", \"provider\": " + quoted(name == nullptr ? "" : name) +
         ", \"id\": " + std::to_string(provider_.backendId) +
         ", \"api_version\": " + textOf(version.coreApiVersion) +
         ", \"backend_version\": " + textOf(version.backendApiVersion) +
         "}, \"recording\": " + quoted(settings.modelFileName) +
         ", \"keeps_outputs\": " + (keepsOutputs_ ? "true" : "false") + "}\n";
}

void Answers::refused(const Place& place, const char* function,
                      Kiv_ErrorHandle_t code) {
  const std::lock_guard lock(mutex_);
  if (!isOpenFor(place)) return;
  write("{\"call\": " + std::to_string(place.call) + ", \"function\": " +
        quoted(function) + ", \"code\": " + std::to_string(code) + "}\n");
}

void Answers::recordedAs(const Place& place, const char* function,
                         const char* as) {
  const std::lock_guard lock(mutex_);
  if (!isOpenFor(place)) return;
  write("{\"recorded_as\": {\"call\": " + std::to_string(place.call) +
        ", \"function\": " + quoted(function) + ", \"as\": " + quoted(as) +
        "}}\n");
}

void Answers::notRecorded(const char* function, Kiv_ErrorHandle_t code) {
  const std::lock_guard lock(mutex_);
  write("{\"not_recorded\": {\"after_call\": " + std::to_string(lastCall_) +
        ", \"function\": " + quoted(function) +
        ", \"code\": " + std::to_string(code) + "}}\n");
}

void Answers::outputsDropped(const Place& place, std::string_view reason) {
  const std::lock_guard lock(mutex_);
  if (!isOpenFor(place)) return;
  write("{\"outputs_dropped\": {\"call\": " + std::to_string(place.call) +
        ", \"reason\": " + quoted(reason) + "}}\n");
}

std::string Answers::directory() const {
  const std::lock_guard lock(mutex_);
  return directory_;
}

}  // namespace kiv::relay
