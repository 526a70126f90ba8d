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

Status Messages::fail(const Failure& failure, MessageArgument argument) {
  error(failure.message, std::move(argument));
  return failure.status;
}

void Messages::error(const char* format, MessageArgument argument) {
  messages_.push_back({log::Level::kError, format, std::move(argument)});
}

void Messages::warn(const char* format, MessageArgument argument) {
  messages_.push_back({log::Level::kWarning, format, std::move(argument)});
}

void Messages::send() noexcept {
  const std::vector<Message> messages = std::exchange(messages_, {});
  for (const Message& message : messages)
    message.argument.log(message.level, message.format);
}

}  // namespace kiv
