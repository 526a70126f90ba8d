#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "output/numbers.h"

namespace kiv::output {

using Texts = std::vector<std::string>;

// Bytes that a read statement of the generated program reads back: memory of
// the client, valid until its call returns.
struct DataRun {
  const void* bytes;
  std::size_t elementSize;
  std::size_t count;
};

// The statements of one recorded call, and the runs of bytes that they read.
//
//   CodeStream code;
//   code.emitDeclaration("Kiv_BackendHandle_t", "backend_0");
//   code.emitCall("VALIDATE", "error", "interface", "backendCreate", {...});
//
// Each function writes whole lines of the form told beside it, indented by
// the stream's indent ("I"). Texts are inserted as they are. One thread at a
// time.
class CodeStream {
 public:
  static constexpr int kIndentStep = 3;

  explicit CodeStream(int indentStep = kIndentStep)
      : indent_(static_cast<std::size_t>(indentStep), ' ') {}

  // I macro(errorVar, object.function(arguments));
  void emitCall(std::string_view macro, std::string_view errorVar,
                std::string_view object, std::string_view function,
                const Texts& arguments);

  // I type name;
  void emitDeclaration(std::string_view type, std::string_view name);

  // I type name = NULL;
  void emitNullDeclaration(std::string_view type, std::string_view name);

  // I type name[] = {elements};
  void emitArray(std::string_view type, std::string_view name,
                 const Texts& elements);

  // The same with each of `count` numbers written in decimal.
  template <typename Number>
  void emitNumberArray(std::string_view type, std::string_view name,
                       const Number* numbers, std::size_t count);

  // I type name = {members};
  void emitStruct(std::string_view type, std::string_view name,
                  const Texts& members);

  // I static type name[count];
  // I fread(name, elementSize, count, fileVar);
  // The run that the statement reads goes to the data file with this call's
  // text: neither can be written without the other.
  void emitStaticRead(std::string_view type, std::string_view name,
                      const DataRun& run, std::string_view fileVar);

  // I type name = (type)malloc(size);
  void emitMalloc(std::string_view type, std::string_view name,
                  std::string_view size);

  // I free(name);
  void emitFree(std::string_view name);

  // Opens a file and leaves main with a message if that fails; five lines.
  void emitFopen(std::string_view fileVar, std::string_view path,
                 std::string_view mode);

  // I fwrite(buffer, elementSize, count, fileVar);
  void emitFwrite(std::string_view buffer, std::size_t elementSize,
                  std::string_view count, std::string_view fileVar);

  // I fclose(fileVar);
  void emitFclose(std::string_view fileVar);

  void emitBlankLine() { text_ += '\n'; }

  // I text
  void emitLine(std::string_view text);

  // All statements so far; with `endLine` the current line is ended first,
  // which after a whole statement leaves a blank line.
  std::string takeText(bool endLine);

  // The runs in the order of their read statements.
  const std::vector<DataRun>& runs() const { return runs_; }

 private:
  template <typename... Pieces>
  void line(const Pieces&... pieces) {
    text_ += indent_;
    ((text_ += pieces), ...);
    text_ += '\n';
  }

  std::string indent_;
  std::string text_;
  std::vector<DataRun> runs_;
};

// The texts with ", " between them.
std::string joined(const Texts& texts);

inline std::string numberText(float number) { return floatText(number); }

template <std::integral Number>
std::string numberText(Number number) {
  return decimal(number);
}

template <typename Number>
void CodeStream::emitNumberArray(std::string_view type, std::string_view name,
                                 const Number* numbers, std::size_t count) {
  Texts elements;
  elements.reserve(count);
  for (std::size_t i = 0; i < count; ++i)
    elements.push_back(numberText(numbers[i]));
  emitArray(type, name, elements);
}

}  // namespace kiv::output
