#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "recording/name_table.h"
#include "recording/recording.h"
#include "recording/statement_parser.h"

// The first pass: where calls begin and end, and how their texts are read.
//
// Texts of clients stand in the text without escapes and may hold anything,
// whole statements included. So each statement is first read the shortest way
// that is whole, which is right for all texts without quotes. A recorder's
// calls follow rules that a text's pieces break when they are taken for
// statements: see Sign. Where a rule is broken, the reader goes back to the
// texts before that place and looks for one that covers it, so that the rules
// hold.
//
// One thread, one recording.
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
  // What the first unknown statement lacks.
  std::uint64_t failedAt = 0;
  std::string_view expected;

  void clear();
};

class Scanner {
 public:
  explicit Scanner(Recording& recording);

  // Fills the recording.
  void run();

 private:
  struct Start {
    std::uint64_t offset;
    std::uint32_t line;
    std::uint64_t dataOffset;
  };
  // A statement with texts that may have to be read another way.
  struct Candidate {
    std::uint64_t statement;
    // Its end must lie behind this.
    std::uint64_t beyond;
    Start call;
    std::size_t callIndex;
  };
  struct Local {
    std::uint64_t offset;
    bool isUsed;
  };

  void scan(const Start& start, CallScan& scan);
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
  static void addSign(CallScan& scan, CallScan::Sign sign, std::uint64_t offset,
                      std::string_view name = {});

  // Looks for another reading of a text that covers the first sign; true when
  // the pass goes on at `start`.
  bool resolve(const CallScan& scan, Start& start);
  bool tryOther(const Candidate& candidate, int depth);
  // The sign to be covered first.
  static CallScan::SignAt firstSign(const CallScan& scan);
  // Adds the texts behind `after` that may cover the sign, the last one first.
  static void addCandidates(const CallScan& scan, const Start& call,
                            std::size_t callIndex, std::uint64_t after,
                            std::vector<Candidate>& candidates);
  void goBackTo(const Candidate& candidate);

  void commit(const CallScan& scan, const Start& start);
  void readFooterAt(const CallScan& scan, Start& start);
  void readHeaderAt(std::uint64_t offset, Start& start);
  void reportUnknown(const CallScan& scan);
  void reportRemainder(const CallScan& scan);
  void report(Problem problem);
  bool isGlobal(std::string_view name) const;
  const char* pointer(std::uint64_t offset) const {
    return text_.data() + offset;
  }

  Recording& recording_;
  const std::string_view text_;
  TextBudget budget_;
  StatementParser parser_;
  // For other readings of the statement that parser_ holds.
  StatementParser readings_;
  NameTable<Local> locals_;
  // False for names of calls that were forgotten again.
  NameTable<bool> globals_;
  std::deque<Candidate> candidates_;
  // Statements with quotes in their texts, for the choice between readings.
  std::vector<std::uint64_t> quoted_;
  std::string identifier_;
  std::uint64_t released_ = 0;
  // Of looks for another reading.
  std::uint64_t failures_ = 0;
  std::uint64_t trials_ = 0;
};

}  // namespace kiv::recording
