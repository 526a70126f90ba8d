#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "format/calls.h"
#include "recording/platform/mapped_file.h"
#include "recording/problem.h"

// A recording as text: its calls, and of each call the statements. No byte of
// the data file is read.
//
//   OpenResult result = Recording::open("saver_output");
//   if (!result.recording) return toString(result.problem);
//   for (const Call& call : result.recording->calls())
//     std::cout << call.line << ": " << call.function->name << "\n";
//
// A recording is immutable: any thread may read it.
namespace kiv::recording {

// A range of the text, in bytes from its start.
struct Span {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  std::uint64_t size() const { return end - begin; }
};

enum class StatementKind : std::uint8_t {
  kComment,      // "// text" or "/* text */"
  kDeclaration,  // type name;
  kRecord,       // type name = {...};
  kConfig,       // type name = {CONSTANT, .member=...};
  kArray,        // type name[] = {...};
  kNullArray,    // type* name = NULL;
  kStaticArray,  // static type name[count];
  kRead,         // fread(name, elementSize, count, fp);
  kMalloc,       // type* name = (type*)malloc(count);
  kOpen,         // FILE* name = fopen("path", "wb"); if (!name) {...}
  kWrite,        // fwrite(name, elementSize, sizeVariable, file);
  kClose,        // fclose(name);
  kRelease,      // free(name);
  kCall,         // VALIDATE(error, interface.function(...));
  // A line that is none of them.
  kUnknown
};

std::string_view nameOf(StatementKind kind);

// One statement. Views lie in the recording's text.
struct Statement {
  StatementKind kind = StatementKind::kUnknown;
  // From the first character to behind the last one, blanks around left out.
  Span span;
  // Of the first character.
  std::uint64_t line = 0;
  // The variable that it declares, or the one that kRead, kWrite, kClose and
  // kRelease name; empty for others.
  std::string_view name;
  // Of the variable, as "Kiv_Tensor_t", "const KivGraph_Config_t*" or
  // "uint8_t"; empty where none is declared.
  std::string_view type;
  // Of kStaticArray, kRead, kMalloc and kArray.
  std::uint64_t count = 0;
  // bytes, of kRead
  std::uint64_t elementSize = 0;
};

// Bytes that a call reads from the data file.
struct DataRun {
  // The array that receives them.
  std::string_view variable;
  // bytes from the file's start: the sum of all reads before
  std::uint64_t offset = 0;
  std::uint64_t elementSize = 0;
  std::uint64_t count = 0;

  std::uint64_t bytes() const { return elementSize * count; }
};

// One recorded call: a row of the table of calls, the same size whatever the
// call holds.
struct Call {
  const format::Function* function = nullptr;
  // From its first statement or comment to behind its last one.
  Span span;
  // Of the VALIDATE statement: what __LINE__ is there.
  std::uint32_t line = 0;
  // Of the first statement.
  std::uint32_t firstLine = 0;
  // Where the call's runs begin in the data file, and their bytes.
  std::uint64_t dataOffset = 0;
  std::uint64_t dataSize = 0;
  std::uint32_t statements = 0;
  // Of them, how many are kUnknown.
  std::uint32_t unknownStatements = 0;
};

// A call's parts, read again from its text.
struct CallDetails {
  std::vector<Statement> statements;
  std::vector<DataRun> runs;
  // Variables of earlier calls that it uses, each once, in the order of use:
  // handles, and tensors whose ids it takes.
  std::vector<std::string_view> uses;
  // The client's texts in the order of the text, without their quotes.
  std::vector<std::string_view> texts;
};

// What the program's text before the first call says.
struct Header {
  bool isThere = false;
  // Up to the end of the logger's block.
  bool isWhole = false;
  Span span;
  // Of the statements in main, for messages; 0 where the header lacks them.
  std::uint32_t getProvidersLine = 0;
  std::uint32_t logCreateLine = 0;
  // What stands between the quotes of #include "...".
  std::vector<std::string_view> includes;
  // As fopen() has it.
  std::string_view dataFile;
  // "1.1.0"; empty where no notice says so.
  std::string_view recorderVersion;
  // When the recording was made, as the notice says it; empty without.
  std::string_view timeStamp;
};

// The program's text behind the last call.
struct Footer {
  bool isThere = false;
  // Up to the brace that ends main.
  bool isWhole = false;
  Span span;
  std::uint32_t logFreeLine = 0;
};

// The most that is read; beyond that a recording is refused.
struct Limits {
  std::uint64_t calls = 1'000'000'000;
  // Of one call.
  std::uint64_t statements = 100'000'000;
  // bytes of one text of the client
  std::uint64_t text = std::uint64_t{1} << 24;
  // Most problems that are kept; behind them one says that there are more.
  std::size_t problems = 1000;
};

class Recording;

// A recording that could be read at all has its problems with it.
struct OpenResult {
  std::shared_ptr<const Recording> recording;
  // Set where there is no recording.
  Problem problem;
};

class Recording {
 public:
  // `path` is a model file, or a directory with saver_output.c or with a single
  // *.c file. Nothing but the model file is opened.
  static OpenResult open(const std::filesystem::path& path,
                         const Limits& limits = {});
  // A text in memory, for tests; `fileName` stands in problems.
  static std::shared_ptr<const Recording> parse(
      std::string text, std::string fileName = "model.c",
      const Limits& limits = {});

  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;
  ~Recording();

  std::string_view text() const { return text_; }
  std::string_view text(Span span) const {
    return text_.substr(span.begin, span.size());
  }
  const std::filesystem::path& modelPath() const { return modelPath_; }
  // Beside the model file; nothing where the header names none, or one that is
  // no plain file name.
  std::optional<std::filesystem::path> dataPath() const;

  const Header& header() const { return header_; }
  const Footer& footer() const { return footer_; }
  std::span<const Call> calls() const { return calls_; }
  // Text behind the last whole call that is neither call nor footer: what a
  // dying recorder left. Empty when there is none.
  Span remainder() const { return remainder_; }
  // Whether header and footer are there and nothing is cut off.
  bool isComplete() const {
    return header_.isWhole && footer_.isWhole && remainder_.size() == 0;
  }
  // The sum of all reads of whole calls: the size that the data file has.
  std::uint64_t dataSize() const { return dataSize_; }
  std::span<const Problem> problems() const { return problems_; }
  // The function's name of the call, for messages; never null.
  std::string_view functionName(std::size_t call) const {
    return calls_[call].function->name;
  }

  CallDetails details(std::size_t call) const;
  // The same into an object whose memory is used again.
  void details(std::size_t call, CallDetails& result) const;

  // Where a byte of the text stands; slow, for messages.
  struct Place {
    std::uint64_t line;
    std::uint64_t column;
  };
  Place placeOf(std::uint64_t offset) const;
  Problem problemAt(std::uint64_t offset, std::string message,
                    Severity severity = Severity::kError) const;

  // Lets the system have the text's memory back up to there, when a pass over
  // it is done with it.
  void release(std::uint64_t begin, std::uint64_t end) const;

  // ---- for the library's own passes ----

  // How a statement with texts is read where that is not the shortest way: by
  // the offset of its first character.
  struct Reading {
    // The statement ends behind this offset.
    std::uint64_t leastEnd = 0;
    // The texts, where several splits fit one end; empty otherwise.
    std::vector<Span> texts;
  };
  using Readings = std::map<std::uint64_t, Reading>;
  const Readings& readings() const { return readings_; }
  const Limits& limits() const { return limits_; }

 private:
  friend class Scanner;
  Recording() = default;

  std::filesystem::path modelPath_;
  MappedFile file_;
  std::string ownText_;
  std::string_view text_;
  Limits limits_;
  Header header_;
  Footer footer_;
  std::vector<Call> calls_;
  Span remainder_;
  std::uint64_t dataSize_ = 0;
  std::vector<Problem> problems_;
  Readings readings_;
};

}  // namespace kiv::recording
