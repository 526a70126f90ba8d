#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace kiv::session {

// A variable of the generated program that later calls refer to. When the
// output files were switched since, the program being written does not declare
// it.
class Variable {
 public:
  // `program` tells which of the programs written declares it.
  Variable(std::string name, std::uint32_t program)
      : name_(std::move(name)), program_(program), lastUsedIn_(program) {}

  const std::string& name() const { return name_; }

  // Whether this is its first use in a program that does not declare it.
  bool isFirstForeignUse(std::uint32_t program) const {
    return lastUsedIn_.exchange(program) != program && program != program_;
  }

 private:
  const std::string name_;
  const std::uint32_t program_;
  mutable std::atomic<std::uint32_t> lastUsedIn_;
};

}  // namespace kiv::session
