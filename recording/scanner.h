#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "recording/call_scanner.h"
#include "recording/recording.h"

// The first pass: where calls begin and end, and how their texts are read.
//
// Texts of clients stand in the text without escapes and may hold anything,
// whole statements included. So each statement is first read the shortest way
// that is whole, which is right for all texts without quotes. A recorder's
// calls follow rules that a text's pieces break when they are taken for
// statements: see CallScan::Sign. Where a rule is broken, the reader goes back
// to the texts before that place and looks for one that covers it, so that the
// rules hold.
//
// One thread, one recording.
namespace kiv::recording {

class Scanner {
 public:
  explicit Scanner(Recording& recording);

  // Fills the recording.
  void run();

 private:
  // A statement with texts that may have to be read another way.
  struct Candidate {
    std::uint64_t statement;
    // Its end must lie behind this.
    std::uint64_t beyond;
    CallStart call;
    std::size_t callIndex;
  };
  // Looks for another reading of a text that covers the first sign; true when
  // the pass goes on at `start`.
  bool resolve(const CallScan& scan, CallStart& start);
  bool tryOther(const Candidate& candidate, int depth);
  // The sign to be covered first.
  static CallScan::SignAt firstSign(const CallScan& scan);
  // Adds the texts behind `after` that may cover the sign, the last one first.
  static void addCandidates(const CallScan& scan, const CallStart& call,
                            std::size_t callIndex, std::uint64_t after,
                            std::vector<Candidate>& candidates);
  void goBackTo(const Candidate& candidate);

  void commit(const CallScan& scan, const CallStart& start);
  void readFooterAt(const CallScan& scan, CallStart& start);
  void readHeaderAt(std::uint64_t offset, CallStart& start);
  void reportUnknown(const CallScan& scan);
  void reportRemainder(const CallScan& scan);
  void report(Problem problem);

  Recording& recording_;
  const std::string_view text_;
  CallScanner calls_;
  std::deque<Candidate> candidates_;
  // Statements with quotes in their texts, for the choice between readings.
  std::vector<std::uint64_t> quoted_;
  std::uint64_t released_ = 0;
  // Of looks for another reading.
  std::uint64_t failures_ = 0;
  std::uint64_t trials_ = 0;
};

}  // namespace kiv::recording
