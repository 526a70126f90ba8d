#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recording/name_table.h"
#include "recording/recording.h"
#include "recording/statement_parser.h"

// One call of the recorded program with the statements that belong to it, and
// the signs that some text was not read as it was written. One thread, one
// recording.
namespace kiv::recording {

// A call that is being read, from its first statement on.
struct CallScan {
  // A place where the statements are not what a recorder writes.
  enum class Sign : std::uint8_t {
    kUnknownStatement,
    // A comment with a quote in it; the recorder writes none.
    kQuoteInComment,
    // Two variables of one name.
    kDeclaredTwice,
    // A variable that a recorder would have declared in this call, or a handle
    // or tensor of no earlier one.
    kUndeclared,
    // A record that the call does not use.
    kUnused,
    // A graph's or an operation's variable that has not come of its name.
    kOtherName,
    // A header or footer in the midst of the program.
    kFrame
  };
  struct SignAt {
    Sign sign;
    std::uint64_t offset;
    // The handle or tensor, of kUndeclared.
    std::string_view name;
  };
  // Why the scan stopped.
  enum class End : std::uint8_t { kCall, kFooter, kHeader, kText };
  struct TextStatement {
    std::uint64_t offset;
    std::uint64_t end;
    // Whether a text of it holds a quote.
    bool hasQuote;
  };

  End end = End::kText;
  Call call;
  // Behind the last statement, with the number of its line.
  std::uint64_t next = 0;
  std::uint32_t nextLine = 0;
  std::vector<SignAt> signs;
  std::vector<TextStatement> texts;
  // The variables that later calls may use.
  std::vector<std::string_view> globals;
  // The place where the first unknown statement fails, and what is missing.
  std::uint64_t failedAt = 0;
  std::string_view expected;

  void clear();
  // Notes the sign, if there are not too many of them.
  void add(Sign sign, std::uint64_t offset, std::string_view name = {});
};

// Where a call's first statement may stand.
struct CallStart {
  std::uint64_t offset;
  std::uint32_t line;
  std::uint64_t dataOffset;
};

// The largest number stands for sums beyond it, which no file has.
std::uint64_t sumOfSizes(std::uint64_t a, std::uint64_t b);

class CallScanner {
 public:
  // `readings` say how statements with texts are read, by their offsets; they
  // may change between two scans.
  CallScanner(std::string_view text, const Limits& limits,
              const Recording::Readings& readings);

  // A call is whole when a blank line or anything else stands behind it. The
  // statements behind a contextGetBinary belong to it, up to the blank line.
  void scan(const CallStart& start, CallScan& scan);
  // Behind the statement as that reading has it, if it is whole so.
  std::optional<std::uint64_t> endOf(std::uint64_t statement,
                                     const Recording::Reading& reading);

  // Later calls may use the call's variables, or no longer.
  void learn(const CallScan& scan);
  void forget(const CallScan& scan);

 private:
  struct Local {
    std::uint64_t offset;
    bool isUsed;
  };

  bool scanStatement(CallScan& scan, std::uint64_t at, std::uint32_t line);
  void noteStatement(CallScan& scan, std::uint64_t offset);
  void noteCall(CallScan& scan, std::uint64_t offset);
  void noteTexts(CallScan& scan, std::uint64_t offset);
  void declare(CallScan& scan, std::uint64_t offset);
  void use(CallScan& scan, const Item& item, std::uint64_t offset);
  void useEarlier(CallScan& scan, std::string_view name, std::uint64_t offset);
  void checkName(CallScan& scan, std::string_view variable, const Item& text,
                 std::string_view ifEmpty, std::uint64_t offset);
  bool comesOf(std::string_view variable, std::string_view text,
               std::string_view ifEmpty);
  void noteUnused(CallScan& scan);
  bool isGlobal(std::string_view name) const;
  std::string_view textOf(Span span) const {
    return text_.substr(span.begin, span.size());
  }
  const char* pointer(std::uint64_t offset) const {
    return text_.data() + offset;
  }

  const std::string_view text_;
  const Limits& limits_;
  const Recording::Readings& statementReadings_;
  TextBudget budget_;
  StatementParser parser_;
  // For other readings of the statement that parser_ holds.
  StatementParser otherReadings_;
  NameTable<Local> locals_;
  // False for names of calls that were forgotten again.
  NameTable<bool> globals_;
  std::string identifier_;
};

}  // namespace kiv::recording
