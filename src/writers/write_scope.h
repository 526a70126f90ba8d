#pragma once

#include <cstdint>
#include <string>

#include "diagnostics/messages.h"
#include "output/code_stream.h"
#include "output/literals.h"
#include "session/names.h"
#include "session/variable.h"
#include "writers/enum_value.h"

namespace kiv::writers {

// What a value writer works with: where its statements go, the names it may
// make, where its messages wait until no lock is held.
struct WriteScope {
  output::CodeStream& code;
  session::Names& names;
  Messages& messages;
  // The backend that the recording is meant for; 0 when unknown.
  std::uint32_t backendId;
  // Which of the programs written this call goes to.
  std::uint32_t program;

  Status fail(const Failure& failure, MessageArgument argument = {}) {
    return messages.fail(failure, std::move(argument));
  }

  // A client's text as a C literal, byte for byte, or "NULL". One that will
  // not read back as it was given is written all the same, with a warning.
  std::string literal(const char* text) {
    if (text != nullptr && output::isUnsafeInLiteral(text)) {
      messages.warn(
          "A text holds a quote, a backslash or a line end and will not read "
          "back from the recording as it was given: %s",
          std::string(text));
    }
    return output::quotedOrNull(text);
  }

  // The name of a variable that an earlier call declared.
  const std::string& use(const session::Variable& variable) {
    if (variable.isFirstForeignUse(program)) {
      messages.warn(
          "%s was created before the output files were switched, the new "
          "model file does not declare it",
          variable.name());
    }
    return variable.name();
  }
};

// "(type)number", the form in which enumeration values are written.
template <typename Enum>
std::string cast(const char* type, const Enum& value) {
  return '(' + std::string(type) + ')' + output::decimal(enumValue(value));
}

}  // namespace kiv::writers
