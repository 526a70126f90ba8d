#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "diagnostics/failure.h"

namespace kiv {

// The arguments of a message's format: none, "%d", "%ld", two "%ld" or "%s".
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

// One message as a value, to be logged once no lock is held. Functions that can
// only fail return one, or nothing.
struct Message {
  const char* format;
  MessageArgument argument = {};
  log::Level level = log::Level::kError;
};
using Failed = std::optional<Message>;

// Messages kept back until no lock is held, so that the client's callback may
// call the library:
//
//   Messages messages;                    // sent at its end, behind the lock's
//   const std::lock_guard lock(mutex_);
//   messages.add(file_.close());
//
// They are sent in their order, at the latest at the end. One thread at a time.
class Messages {
 public:
  Messages() = default;
  ~Messages() { send(); }
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  Status fail(const Failure& failure, MessageArgument argument = {}) noexcept;
  void warn(const char* format, MessageArgument argument = {}) noexcept;
  // Returns whether there was something to add.
  bool add(Failed failed) noexcept;
  void send() noexcept {
    if (!messages_.empty() || lost_ != 0) sendAll();
  }

 private:
  void sendAll() noexcept;
  void push(Message message) noexcept;

  std::vector<Message> messages_;
  // How many messages there was no memory for.
  long lost_ = 0;
};

}  // namespace kiv
