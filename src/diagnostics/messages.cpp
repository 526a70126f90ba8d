#include "diagnostics/messages.h"

namespace kiv {

void MessageArgument::log(log::Level level, const char* format) const {
  switch (kind_) {
    case Kind::kNone:
      return log::log(level, format);
    case Kind::kInt:
      return log::log(level, format, static_cast<int>(number_));
    case Kind::kLong:
      return log::log(level, format, number_);
    case Kind::kTwoLongs:
      return log::log(level, format, number_, second_);
    case Kind::kText:
      return log::log(level, format, text_.c_str());
  }
}

void Messages::push(Message message) noexcept {
  try {
    messages_.push_back(std::move(message));
  } catch (...) {
    ++lost_;
  }
}

Status Messages::fail(const Failure& failure,
                      MessageArgument argument) noexcept {
  push({failure.message, std::move(argument)});
  return failure.status;
}

void Messages::warn(const char* format, MessageArgument argument) noexcept {
  push({format, std::move(argument), log::Level::kWarning});
}

bool Messages::add(Failed failed) noexcept {
  if (!failed) return false;
  push(*std::move(failed));
  return true;
}

void Messages::sendAll() noexcept {
  const std::vector<Message> messages = std::exchange(messages_, {});
  for (const Message& message : messages)
    message.argument.log(message.level, message.format);
  if (const long lost = std::exchange(lost_, 0); lost != 0)
    log::log(log::Level::kError, "There was no memory for %ld messages", lost);
}

}  // namespace kiv
