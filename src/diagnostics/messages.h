#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "diagnostics/failure.h"

namespace kiv {

// What a message's format takes: nothing, "%d", "%ld", two "%ld" or "%s".
class MessageArgument {
 public:
  MessageArgument() = default;
  MessageArgument(int number) : kind_(Kind::kInt), number_(number) {}
  MessageArgument(long number) : kind_(Kind::kLong), number_(number) {}
  MessageArgument(long first, long second)
      : kind_(Kind::kTwoLongs), number_(first), second_(second) {}
  MessageArgument(std::string text)
      : kind_(Kind::kText), text_(std::move(text)) {}

  void log(log::Level level, const char* format) const;

 private:
  enum class Kind : std::uint8_t { kNone, kInt, kLong, kTwoLongs, kText };

  Kind kind_ = Kind::kNone;
  long number_ = 0;
  long second_ = 0;
  std::string text_;
};

// Messages kept back until no lock is held, so that the client's callback may
// call the library. They are sent in their order, at the latest at the end.
class Messages {
 public:
  Messages() = default;
  ~Messages() { send(); }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  Status fail(const Failure& failure, MessageArgument argument = {});
  void error(const char* format, MessageArgument argument = {});
  void warn(const char* format, MessageArgument argument = {});
  void send() noexcept;

 private:
  struct Message {
    log::Level level;
    const char* format;
    MessageArgument argument;
  };

  std::vector<Message> messages_;
};

}  // namespace kiv
