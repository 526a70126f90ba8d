#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "logged_messages.h"
#include "writers/write_scope.h"

namespace kiv::writers::test {

using kiv::test::Lines;

// What a writer works with, and what it left behind.
class WriterTest : public testing::Test {
 protected:
  WriteScope scope(std::uint32_t backendId = 0) {
    return {code_, names_, messages_, backendId, 0};
  }

  // The statements since the last call, in lines without indentation, behind a
  // line end.
  std::string statements() { return '\n' + code_.takeText(false); }

  // The messages since the last call, with their level in front.
  Lines messages() {
    messages_.send();
    return log_.take();
  }

  kiv::test::LoggedMessages log_;
  output::CodeStream code_{0};
  session::Names names_;
  Messages messages_;
};

// An enum as a client may fill it, with any number.
template <typename Enum>
void setNumber(Enum& target, std::uint32_t number) {
  static_assert(sizeof(Enum) == sizeof(number));
  std::memcpy(&target, &number, sizeof(number));
}

}  // namespace kiv::writers::test
