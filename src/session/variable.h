#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace kiv::session {

// A variable of the generated program that later calls refer to. When the
// output files were switched since, the program that is being written does not
// declare it. From any thread.
class Variable {
 public:
  // `programNumber` is that of the program that declares it.
  Variable(std::string name, std::uint32_t programNumber)
      : name_(std::move(name)),
        declaredIn_(programNumber),
        lastUsedIn_(programNumber) {}

  const std::string& name() const { return name_; }

  // Notes a use; returns whether it is the first one in a program that does not
  // declare the variable.
  bool isNewlyUndeclaredIn(std::uint32_t programNumber) const {
    return lastUsedIn_.exchange(programNumber) != programNumber &&
           programNumber != declaredIn_;
  }

 private:
  const std::string name_;
  const std::uint32_t declaredIn_;
  mutable std::atomic<std::uint32_t> lastUsedIn_;
};

}  // namespace kiv::session
