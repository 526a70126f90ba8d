#include "output/code_stream.h"

#include <utility>

namespace kiv::output {

std::string joined(const Texts& texts) {
  std::string result;
  const char* separator = "";
  for (const std::string& text : texts) {
    result += separator;
    result += text;
    separator = ", ";
  }
  return result;
}

void CodeStream::emitCall(std::string_view macro, std::string_view errorVar,
                          std::string_view object, std::string_view function,
                          const Texts& arguments) {
  line(macro, "(", errorVar, ", ", object, ".", function, "(",
       joined(arguments), "));");
}

void CodeStream::emitDeclaration(std::string_view type, std::string_view name) {
  line(type, " ", name, ";");
}

void CodeStream::emitNullDeclaration(std::string_view type,
                                     std::string_view name) {
  line(type, " ", name, " = NULL;");
}

void CodeStream::emitArray(std::string_view type, std::string_view name,
                           const Texts& elements) {
  line(type, " ", name, "[] = {", joined(elements), "};");
}

void CodeStream::emitStruct(std::string_view type, std::string_view name,
                            const Texts& members) {
  line(type, " ", name, " = {", joined(members), "};");
}

void CodeStream::emitStaticRead(std::string_view type, std::string_view name,
                                const DataRun& run, std::string_view fileVar) {
  const std::string count = decimal(run.count);
  line("static ", type, " ", name, "[", count, "];");
  line("fread(", name, ", ", decimal(run.elementSize), ", ", count, ", ",
       fileVar, ");");
  runs_.push_back(run);
}

void CodeStream::emitMalloc(std::string_view type, std::string_view name,
                            std::string_view size) {
  line(type, " ", name, " = (", type, ")malloc(", size, ");");
}

void CodeStream::emitFree(std::string_view name) { line("free(", name, ");"); }

void CodeStream::emitFopen(std::string_view fileVar, std::string_view path,
                           std::string_view mode) {
  line("FILE* ", fileVar, " = fopen(\"", path, "\", \"", mode, "\");");
  line("if (!", fileVar, ") {");
  line(indent_, "printf(\"ERROR: File open of ", path,
       R"( failed on line: %d\n", __LINE__);)");
  line(indent_, "return -1;");
  line("}");
}

void CodeStream::emitFwrite(std::string_view buffer, std::size_t elementSize,
                            std::string_view count, std::string_view fileVar) {
  line("fwrite(", buffer, ", ", decimal(elementSize), ", ", count, ", ",
       fileVar, ");");
}

void CodeStream::emitFclose(std::string_view fileVar) {
  line("fclose(", fileVar, ");");
}

void CodeStream::emitLine(std::string_view text) { line(text); }

std::string CodeStream::takeText(bool endLine) {
  if (endLine) text_ += '\n';
  return std::exchange(text_, {});
}

}  // namespace kiv::output
