#include "recording/frame_reader.h"

#include <algorithm>

#include "format/identifiers.h"
#include "recording/blanks.h"

namespace kiv::recording {
namespace {

constexpr auto kNone = std::string_view::npos;

std::uint32_t countLines(std::string_view text) {
  return static_cast<std::uint32_t>(std::ranges::count(text, '\n'));
}

std::size_t skipBlanks(std::string_view text, std::size_t at) {
  while (at < text.size() && isBlank(text[at])) ++at;
  return at;
}

// Behind a comment that begins there; the same place when none does, and the
// text's end when it does not end.
std::size_t skipComment(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  if (rest.starts_with("//")) return std::min(text.find('\n', at), text.size());
  if (!rest.starts_with("/*")) return at;
  const std::size_t end = text.find("*/", at + 2);
  return end == kNone ? text.size() : end + 2;
}

// Behind the quote that ends a literal with escapes.
std::size_t skipLiteral(std::string_view text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '"' && text[at] != '\n'; ++at)
    if (text[at] == '\\') ++at;
  return std::min(at + 1, text.size());
}

// The offset behind the brace that ends the block which `depth` braces have
// opened before `at`; nothing when the text ends before.
std::size_t endOfBlock(std::string_view text, std::size_t at, int depth) {
  while (at < text.size()) {
    if (text[at] == '"') {
      at = skipLiteral(text, at);
      continue;
    }
    const std::size_t behind = skipComment(text, at);
    if (behind != at) {
      at = behind;
      continue;
    }
    if (text[at] == '{') ++depth;
    if (text[at] == '}' && --depth == 0) return at + 1;
    ++at;
  }
  return kNone;
}

// What stands between `lead` and `tail` on one line of the text.
std::string_view between(std::string_view text, std::string_view lead,
                         std::string_view tail) {
  const std::size_t start = text.find(lead);
  if (start == kNone) return {};
  const std::size_t from = start + lead.size();
  const std::size_t lineEnd = std::min(text.find('\n', from), text.size());
  const std::string_view line = text.substr(from, lineEnd - from);
  const std::size_t end = line.find(tail);
  return end == kNone ? std::string_view{} : line.substr(0, end);
}

// "written by the Saver 1.1.0 on 2026-01-01."
void readNotice(std::string_view comments, Header& header) {
  constexpr std::string_view kLead = "written by the Saver ";
  const std::size_t start = comments.find(kLead);
  if (start == kNone) return;
  std::string_view notice = comments.substr(start + kLead.size());
  notice = notice.substr(0, std::min(notice.find('\n'), notice.size()));
  while (!notice.empty() && (isBlank(notice.back()) || notice.back() == '.'))
    notice.remove_suffix(1);
  constexpr std::string_view kOn = " on ";
  const std::size_t on = notice.find(kOn);
  header.recorderVersion = notice.substr(0, on);
  if (on != kNone) header.timeStamp = notice.substr(on + kOn.size());
}

void readIncludes(std::string_view text, Header& header) {
  constexpr std::string_view kLead = "#include \"";
  for (std::size_t at = text.find(kLead); at != kNone;
       at = text.find(kLead, at)) {
    const std::string_view name = between(text.substr(at), kLead, "\"");
    at += kLead.size();
    if (!name.empty()) header.includes.push_back(name);
  }
}

bool startsWithWord(std::string_view text, std::string_view word) {
  return text.starts_with(word) &&
         (text.size() == word.size() ||
          !format::isIdentifierCharacter(text[word.size()]));
}

}  // namespace

bool beginsHeader(std::string_view text, std::uint64_t begin) {
  auto at = static_cast<std::size_t>(begin);
  for (;;) {
    at = skipBlanks(text, at);
    const std::size_t behind = skipComment(text, at);
    if (behind == at) break;
    at = behind;
  }
  return at < text.size() && text[at] == '#';
}

bool beginsFooter(std::string_view statement) {
  if (statement.starts_with('}') || startsWithWord(statement, "return"))
    return true;
  if (!startsWithWord(statement, "if")) return false;
  std::size_t at = skipBlanks(statement, 2);
  if (at >= statement.size() || statement[at] != '(') return false;
  at = skipBlanks(statement, at + 1);
  return startsWithWord(statement.substr(at), "logging") ||
         startsWithWord(statement.substr(at), "fclose");
}

// The calls begin behind the logger's block, or where someone has taken it out
// behind the statement that gets the interface.
Header readHeader(std::string_view text, std::uint64_t begin,
                  std::uint32_t line) {
  Header header;
  header.isThere = true;
  header.span = {begin, text.size()};
  const std::string_view rest = text.substr(static_cast<std::size_t>(begin));
  const auto lineAt = [&](std::size_t at) {
    return line + countLines(rest.substr(0, at));
  };
  const std::size_t main = rest.find("int main(");
  const std::string_view before = rest.substr(0, main);
  readNotice(before, header);
  readIncludes(before, header);
  if (main == kNone) return header;

  // What a header holds stands within its first bytes, whatever texts follow.
  constexpr std::size_t kMostHeader = std::size_t{1} << 16;
  const std::string_view head = rest.substr(0, main + kMostHeader);
  header.dataFile = between(head.substr(main), "fp = fopen(\"", "\", \"rb\")");
  constexpr std::string_view kProviders = "KivInterface_getProviders(";
  const std::size_t providers = head.find(kProviders, main);
  if (providers != kNone) header.getProvidersLine = lineAt(providers);
  constexpr std::string_view kTable = "->KIV_INTERFACE_VER_NAME;";
  const std::size_t table = head.find(kTable, main);
  if (table == kNone) return header;
  std::size_t end = table + kTable.size();
  constexpr std::string_view kLogger = "interface.logCreate(";
  std::size_t logger = head.find(kLogger, end);
  // The first call is no part of the header.
  const std::size_t firstCall = head.find("interface.", end);
  if (logger != firstCall) logger = kNone;
  if (logger != kNone) {
    header.logCreateLine = lineAt(logger);
    end = endOfBlock(head, logger, 1);
    if (end == kNone) return header;
  } else if (firstCall == kNone && head.find("if (logging)", end) != kNone &&
             head.find("if (logging)", end) < end + 128) {
    // Cut off within the logger's block, which only looks like the footer's.
    return header;
  }
  // The block's end is not known to be whole without the line's end.
  if (end == rest.size()) return header;
  header.span.end = begin + end;
  header.isWhole = true;
  return header;
}

Footer readFooter(std::string_view text, std::uint64_t begin,
                  std::uint32_t line) {
  Footer footer;
  footer.isThere = true;
  footer.span = {begin, text.size()};
  const auto from = static_cast<std::size_t>(begin);
  const std::size_t end = endOfBlock(text, from, 1);
  const std::string_view body = text.substr(from, end - from);
  const std::size_t logger = body.find("logFree(");
  if (logger != kNone)
    footer.logFreeLine = line + countLines(body.substr(0, logger));
  if (end == kNone) return footer;
  footer.isWhole = true;
  footer.span.end = end;
  return footer;
}

}  // namespace kiv::recording
