#include "robustness/replayed_calls.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "support/provider.h"

namespace kiv::test {
namespace {

Lines linesOf(const std::filesystem::path& path) {
  Lines lines;
  std::istringstream text(readFile(path));
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

}  // namespace

Lines callsOf(const std::function<void(const Api&)>& session) {
  const TempDirectory temp;
  const auto trace = temp.path() / "trace";
  setenv("KIV_TRACER_OUTPUT", trace.c_str(), 1);
  {
    const DynamicLibrary library(KIV_TRACER_LIBRARY);
    session(interfaceOf(library));
  }
  return linesOf(trace);
}

Lines replayedCalls(const std::filesystem::path& recording) {
  const TempDirectory temp;
  const std::filesystem::path trace = temp.path() / "trace";
  const std::filesystem::path log = temp.path() / "log";
  const std::string command = KIV_REPLAY " '" +
                              (recording / "saver_output.c").string() + "' '" +
                              trace.string() + "' >'" + log.string() + "' 2>&1";
  if (std::system(command.c_str()) == 0) return linesOf(trace);
  ADD_FAILURE() << command << "\n" << readFile(log);
  return {};
}

std::string dataText(const std::string& bytes) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : bytes)
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%zu:%016llx", bytes.size(),
                static_cast<unsigned long long>(hash));
  return text.data();
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + part.size()))
    ++count;
  return count;
}

std::size_t bytesRead(const std::string& modelText) {
  std::size_t bytes = 0;
  for (std::size_t at = modelText.find("fread("); at != std::string::npos;
       at = modelText.find("fread(", at + 1)) {
    std::size_t size = 0;
    std::size_t count = 0;
    std::sscanf(&modelText[at], "fread(%*[^,], %zu, %zu", &size, &count);
    bytes += size * count;
  }
  return bytes;
}

}  // namespace kiv::test
