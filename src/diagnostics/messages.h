#pragma once

#include <string>
#include <variant>
#include <vector>

#include "diagnostics/failure.h"

namespace kiv {

// Messages kept back until no lock is held, so that the client's callback may
// call the library. They are sent in their order, at the latest at the end.
class Messages {
 public:
  using Argument = std::variant<std::monostate, int, long, std::string>;

  Messages() = default;
  ~Messages() { send(); }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  Status fail(const Failure& failure, Argument argument = {});
  void warn(const char* format, Argument argument = {});
  void send() noexcept;

 private:
  struct Message {
    log::Level level;
    const char* format;
    Argument argument;
  };

  std::vector<Message> messages_;
};

}  // namespace kiv
