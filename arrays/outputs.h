#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "arrays/array.h"
#include "arrays/comparison.h"

// Outputs of executions in a directory: DIR/GRAPH/EXECUTION/TENSOR.npy, and
// DIR/outputs.txt with these paths in the order in which the outputs came. Data
// that belongs to no execution is in DIR/GRAPH/static.
//
//   OutputWriter writer;
//   if (!writer.open("before", why)) return why;
//   writer.save({"main", 0, "y"}, view, why);
//
//   OutputComparison comparison({.rtol = 1e-3});
//   if (!comparison.open("before", why)) return why;
//   Difference difference = comparison.compare({"main", 0, "y"}, view);
//
// One thread at a time.
namespace kiv::arrays {

struct OutputName {
  std::string graph;
  // The execution's number in its graph, from 0; nothing for data that exists
  // before any execution.
  std::optional<std::uint64_t> execution = 0;
  std::string tensor;
};

// A name as that of a file or a directory on every system: bytes outside
// A-Z a-z 0-9 _ . - are %XX, and so is a dot at the end and the first letter of
// a name that Windows reserves. Names of more than 180 bytes end with "~" and a
// hash of the whole instead; the empty name is "~".
std::string fileNameOf(std::string_view name);
// The name again, as far as the file's name holds it.
std::string nameOfFile(std::string_view fileName);

class OutputWriter {
 public:
  // Makes the directory and begins a new list there.
  bool open(const std::filesystem::path& directory, std::string& why);
  // A tensor with a name that the execution had already gets "~2" behind it.
  bool save(const OutputName& name, const ArrayView& array, std::string& why);
  std::uint64_t saved() const { return paths_.size(); }

 private:
  std::filesystem::path directory_;
  std::ofstream list_;
  // In lower case: some systems do not tell cases apart.
  std::set<std::string> paths_;
};

// The paths of a directory's list, or the reason why there is none.
std::optional<std::vector<std::string>> readOutputList(
    const std::filesystem::path& directory, std::string& why);

// "y of main, execution 2", as a person reads a path of the list.
std::string titleOf(std::string_view path);

struct Difference {
  std::string path;
  // Set where there is nothing to compare with, or it cannot be read.
  std::string problem;
  Figures figures;
  // There is no saved output of that path.
  bool isUnknown = false;

  bool isOver() const { return !problem.empty() || figures.isOver(); }
};

// One line with the output's title.
std::string toString(const Difference& difference);

// Compares with saved outputs, which are the expected ones.
class OutputComparison {
 public:
  explicit OutputComparison(const Tolerance& tolerance)
      : tolerance_(tolerance) {}

  bool open(const std::filesystem::path& directory, std::string& why);
  Difference compare(const OutputName& name, const ArrayView& actual);
  // An output of another directory by its path there.
  Difference compare(const std::string& path,
                     const std::filesystem::path& directory);
  // Outputs that were saved and that nothing was compared with.
  std::vector<Difference> missing() const;

 private:
  Difference compareWith(const std::string& path, const ArrayView& actual);

  Tolerance tolerance_;
  std::filesystem::path directory_;
  std::vector<std::string> list_;
  std::set<std::string> compared_;
  std::set<std::string> paths_;
};

}  // namespace kiv::arrays
