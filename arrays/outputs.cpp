#include "arrays/outputs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "arrays/npy.h"
#include "arrays/system_message.h"

namespace kiv::arrays {
namespace {

namespace fs = std::filesystem;

constexpr const char* kList = "outputs.txt";
constexpr const char* kStatic = "static";
constexpr std::size_t kLongest = 180;
constexpr char kHexDigits[] = "0123456789ABCDEF";

bool isPlain(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '-';
}

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

// With or without something behind a dot, these are no files on Windows.
bool isReserved(std::string_view name) {
  const std::string stem = lowered(name.substr(0, name.find('.')));
  if (stem == "con" || stem == "prn" || stem == "aux" || stem == "nul")
    return true;
  return stem.size() == 4 &&
         (stem.starts_with("com") || stem.starts_with("lpt")) &&
         stem[3] >= '0' && stem[3] <= '9';
}

void appendByte(std::string& text, unsigned char byte) {
  text += '%';
  text += kHexDigits[byte >> 4];
  text += kHexDigits[byte & 15];
}

// FNV-1a, 64 bits.
std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  return hash;
}

std::string shortened(std::string encoded, std::string_view name) {
  std::size_t end = kLongest - 17;
  // A byte's code is not cut.
  const std::size_t percent = encoded.rfind('%', end - 1);
  if (percent != std::string::npos && percent + 3 > end) end = percent;
  encoded.resize(end);
  encoded += '~';
  const std::uint64_t hash = hashOf(name);
  for (int shift = 60; shift >= 0; shift -= 4)
    encoded += kHexDigits[hash >> shift & 15];
  return encoded;
}

std::string pathOf(const OutputName& name) {
  return fileNameOf(name.graph) + "/" +
         (name.execution ? std::to_string(*name.execution) : kStatic) + "/" +
         fileNameOf(name.tensor);
}

// The path with ".npy", other than all before.
std::string uniquePath(const OutputName& name, std::set<std::string>& paths) {
  const std::string path = pathOf(name);
  std::string unique = path;
  for (int i = 2; !paths.insert(lowered(unique)).second; ++i)
    unique = path + "~" + std::to_string(i);
  return unique + ".npy";
}

std::string textOf(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

// A path of a list must not lead out of its directory.
bool isInside(const std::string& path) {
  if (!path.ends_with(".npy") || std::ranges::count(path, '/') != 2)
    return false;
  return std::ranges::all_of(path,
                             [](char c) {
                               return isPlain(static_cast<unsigned char>(c)) ||
                                      c == '%' || c == '~' || c == '/';
                             }) &&
         path.find("..") == std::string::npos && path.front() != '/';
}

}  // namespace

std::string fileNameOf(std::string_view name) {
  if (name.empty()) return "~";
  std::string encoded;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    const bool isDot =
        byte == '.' && (i + 1 == name.size() || name[i + 1] == '.');
    const bool isPart =
        isPlain(byte) && !isDot && !(i == 0 && isReserved(name));
    if (isPart)
      encoded += static_cast<char>(byte);
    else
      appendByte(encoded, byte);
  }
  return encoded.size() <= kLongest ? encoded : shortened(encoded, name);
}

std::string nameOfFile(std::string_view fileName) {
  if (fileName == "~") return "";
  std::string name;
  for (std::size_t i = 0; i < fileName.size(); ++i) {
    unsigned char byte = 0;
    if (fileName[i] == '%' && i + 2 < fileName.size() &&
        std::from_chars(&fileName[i + 1], &fileName[i + 1] + 2, byte, 16).ptr ==
            &fileName[i + 1] + 2) {
      name += static_cast<char>(byte);
      i += 2;
    } else {
      name += fileName[i];
    }
  }
  return name;
}

// ---- writing ----

bool OutputWriter::open(const fs::path& directory, std::string& why) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) {
    why = textOf(directory) + ": " + error.message();
    return false;
  }
  directory_ = directory;
  errno = 0;
  list_.open(directory / kList, std::ios::binary);
  if (!list_) why = textOf(directory / kList) + ": " + systemMessage();
  return static_cast<bool>(list_);
}

bool OutputWriter::save(const OutputName& name, const ArrayView& array,
                        std::string& why) {
  const std::string path = uniquePath(name, paths_);
  const fs::path file = directory_ / path;
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  if (error) {
    why = textOf(file.parent_path()) + ": " + error.message();
    return false;
  }
  if (!writeNpy(file, array, why)) {
    why = textOf(file) + ": " + why;
    return false;
  }
  errno = 0;
  list_ << path << '\n' << std::flush;
  if (!list_) why = textOf(directory_ / kList) + ": " + systemMessage();
  return static_cast<bool>(list_);
}

// ---- reading and comparing ----

std::optional<std::vector<std::string>> readOutputList(
    const fs::path& directory, std::string& why) {
  errno = 0;
  std::ifstream file(directory / kList, std::ios::binary);
  if (!file) {
    why = textOf(directory) + ": there is no " + kList +
          ", so that no outputs were saved there";
    return std::nullopt;
  }
  std::vector<std::string> paths;
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) continue;
    if (!isInside(line)) {
      why = textOf(directory / kList) + ": line " +
            std::to_string(paths.size() + 1) +
            " is no path such as graph/0/tensor.npy";
      return std::nullopt;
    }
    paths.push_back(std::move(line));
  }
  return paths;
}

std::string titleOf(std::string_view path) {
  const std::size_t first = path.find('/');
  const std::size_t second = path.find('/', first + 1);
  if (second == std::string_view::npos) return std::string(path);
  std::string_view tensor = path.substr(second + 1);
  if (tensor.ends_with(".npy")) tensor.remove_suffix(4);
  const std::string graph = nameOfFile(path.substr(0, first));
  const std::string_view part = path.substr(first + 1, second - first - 1);
  return nameOfFile(tensor) + (graph.empty() ? "" : " of " + graph) +
         (part == kStatic ? "" : ", execution " + std::string(part));
}

std::string toString(const Difference& difference) {
  return titleOf(difference.path) + ": " +
         (difference.problem.empty() ? toString(difference.figures)
                                     : difference.problem);
}

bool OutputComparison::open(const fs::path& directory, std::string& why) {
  auto list = readOutputList(directory, why);
  if (!list) return false;
  list_ = *std::move(list);
  directory_ = directory;
  return true;
}

Difference OutputComparison::compare(const OutputName& name,
                                     const ArrayView& actual) {
  return compareWith(uniquePath(name, paths_), actual);
}

Difference OutputComparison::compare(const std::string& path,
                                     const fs::path& directory) {
  std::string why;
  const auto array = readNpy(directory / path, why);
  if (array) return compareWith(path, array->view());
  compared_.insert(path);
  return {path, textOf(directory / path) + ": " + why, {}};
}

Difference OutputComparison::compareWith(const std::string& path,
                                         const ArrayView& actual) {
  compared_.insert(path);
  if (std::ranges::find(list_, path) == list_.end())
    return {path, "there is none in " + textOf(directory_), {}, true};
  std::string why;
  const auto expected = readNpy(directory_ / path, why);
  if (!expected) return {path, textOf(directory_ / path) + ": " + why, {}};
  return {path, "", arrays::compare(actual, expected->view(), tolerance_)};
}

std::vector<Difference> OutputComparison::missing() const {
  std::vector<Difference> result;
  for (const std::string& path : list_)
    if (!compared_.contains(path))
      result.push_back({path, "only in " + textOf(directory_), {}});
  return result;
}

}  // namespace kiv::arrays
