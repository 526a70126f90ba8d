#include "diagnostics/messages.h"

#include <utility>

namespace kiv {
namespace {

void sendOne(log::Level level, const char* format, std::monostate) {
  log::log(level, format);
}

template <typename Number>
void sendOne(log::Level level, const char* format, Number number) {
  log::log(level, format, number);
}

void sendOne(log::Level level, const char* format, const std::string& text) {
  log::log(level, format, text.c_str());
}

}  // namespace

Status Messages::fail(const Failure& failure, Argument argument) {
  messages_.push_back(
      {log::Level::kError, failure.message, std::move(argument)});
  return failure.status;
}

void Messages::warn(const char* format, Argument argument) {
  messages_.push_back({log::Level::kWarning, format, std::move(argument)});
}

void Messages::send() noexcept {
  const std::vector<Message> messages = std::exchange(messages_, {});
  for (const Message& message : messages) {
    std::visit(
        [&](const auto& argument) {
          sendOne(message.level, message.format, argument);
        },
        message.argument);
  }
}

}  // namespace kiv
