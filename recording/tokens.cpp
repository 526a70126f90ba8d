#include "recording/tokens.h"

#include "format/literals.h"
#include "format/numbers.h"

namespace kiv::recording {

bool Tokens::fail(std::string_view expected) {
  if (failedAt_ == nullptr || at_ > failedAt_) {
    failedAt_ = at_;
    expected_ = expected;
  }
  return false;
}

void Tokens::skip() {
  for (;;) {
    while (at_ != end_ && isBlank(*at_)) ++at_;
    const std::string_view rest = between(at_, end_);
    const bool isLine = rest.starts_with("//");
    if (!isLine && !rest.starts_with("/*")) return;
    const std::size_t end = isLine ? rest.find('\n') : rest.find("*/", 2);
    const std::string_view comment = rest.substr(0, end);
    if (end == std::string_view::npos ||
        comment.find('"') != std::string_view::npos)
      return;
    at_ += end + (isLine ? 0 : 2);
  }
}

bool Tokens::takeBehindBlanks(char c) {
  skip();
  if (at_ == end_ || *at_ != c) {
    switch (c) {
      case ',':
        return fail("','");
      case ';':
        return fail("';'");
      case '{':
        return fail("'{'");
      case '}':
        return fail("'}'");
      case '(':
        return fail("'('");
      case ')':
        return fail("')'");
      default:
        return fail(kStatement);
    }
  }
  ++at_;
  return true;
}

bool Tokens::takeWord(std::string_view word) {
  skip();
  const std::string_view rest = between(at_, end_);
  if (!rest.starts_with(word) ||
      (isIdentifier(word.back()) && rest.size() > word.size() &&
       isIdentifier(rest[word.size()])))
    return fail(word);
  at_ += word.size();
  return true;
}

bool Tokens::takeLead(std::string_view lead) {
  skip();
  if (between(at_, end_).starts_with(lead)) {
    at_ += lead.size();
    return true;
  }
  const char* const start = at_;
  for (const char c : lead) {
    if (isBlank(c)) continue;
    if (at_ != end_ && *at_ != c) skip();
    if (at_ == end_ || *at_ != c) {
      at_ = start;
      return fail(lead);
    }
    ++at_;
  }
  return true;
}

bool Tokens::takeNull() {
  const std::string_view rest = between(at_, end_);
  if (!rest.starts_with(format::kNullText) ||
      (rest.size() > format::kNullText.size() &&
       isIdentifier(rest[format::kNullText.size()])))
    return false;
  at_ += format::kNullText.size();
  return true;
}

bool Tokens::identifier(std::string_view& name) {
  if (at_ == end_ || !isIdentifier(*at_)) skip();
  const char* const start = at_;
  while (at_ != end_ && isIdentifier(*at_)) ++at_;
  name = between(start, at_);
  if (name.empty() || format::isDigit(name.front())) {
    at_ = start;
    return fail("a name");
  }
  return true;
}

bool Tokens::unsignedNumber(std::uint64_t& number) {
  skip();
  const char* const start = at_;
  while (at_ != end_ && format::isDigit(*at_)) ++at_;
  const auto parsed = format::parseNumber<std::uint64_t>(between(start, at_));
  if (!parsed) {
    at_ = start;
    return fail("a number");
  }
  number = *parsed;
  return true;
}

}  // namespace kiv::recording
