#include "output/identifiers.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "c_program.h"
#include "comma_locale.h"

namespace kiv::output::test {
namespace {

using kiv::test::outputOf;

TEST(SanitizeIdentifierTest, FollowsItsRules) {
  const std::pair<const char*, const char*> cases[] = {
      {"conv2d/weights:0", "conv2d_weights_0"},
      {"1x1 conv", "_1x1_conv"},
      {"a(b)", "ab"},
      {"", ""},
      {"(9)", "_9"},
      {"_9", "_9"},
      {"-9", "_9"},
      {"()%$", ""},
      {"gr\xC3\xB6\xC3\x9F"
       "er",
       "grer"}};
  for (const auto& [name, identifier] : cases)
    EXPECT_EQ(sanitizeIdentifier(name), identifier) << name;
}

TEST(SanitizeIdentifierTest, TreatsEveryByteAlikeInEveryLocale) {
  const kiv::test::CommaLocale locale;
  const std::string kept =
      "_0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const std::string replaced = " /|-:;.,+";
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    std::string expected = "x";
    if (kept.find(c) != std::string::npos) expected += c;
    if (replaced.find(c) != std::string::npos) expected += '_';
    EXPECT_EQ(sanitizeIdentifier(std::string("x") + c), expected) << byte;
  }
}

// A variable with the name of a macro is not what it seems, and may not
// compile.
TEST(ReservedIdentifierTest, CoversTheMacrosOfTheProgramsHeaders) {
  std::string program = "printf '";
  for (const char* header :
       {"stdio.h", "stdlib.h", "string.h", "KivInterface.h",
        "GPU/KivGpuBackend.h", "GPU/KivGpuGraph.h", "GPU/KivGpuContext.h"})
    program += "#include <" + std::string(header) + ">\\n";
  for (const std::string compiler : {"gcc", "clang"}) {
    bool succeeded = false;
    outputOf("command -v " + compiler, succeeded);
    if (!succeeded) continue;
    for (const char* options : {"", "-std=c99", "-std=c11 -O2 -D_GNU_SOURCE",
                                "-std=gnu2x -D_FORTIFY_SOURCE=2 -O2"}) {
      std::istringstream macros(
          outputOf(program + "' | " + compiler + " " + options +
                       " -dM -E -I" KIV_UNIT_TESTS "/../../include -x c -",
                   succeeded));
      ASSERT_TRUE(succeeded) << compiler << ' ' << options;
      for (std::string define, name, rest; macros >> define >> name;) {
        std::getline(macros, rest);
        if (name.find('(') != std::string::npos) continue;
        EXPECT_TRUE(isReservedIdentifier(name)) << name << ' ' << compiler;
      }
    }
  }
}

// The words of main in the program's frame, without texts, members and types
// of the API.
TEST(ReservedIdentifierTest, CoversTheFrameOfTheProgram) {
  std::string code =
      kiv::test::readFile(KIV_UNIT_TESTS "/output/program_frame.txt");
  code.erase(0, code.find("int main("));
  code = std::regex_replace(code, std::regex(R"("(\\.|[^"\\])*")"), " ");
  code = std::regex_replace(code, std::regex(R"((\.|->)\w+)"), " ");
  const std::regex word(R"([A-Za-z_]\w*)");
  std::set<std::string> words{"FILE",   "fread",  "fwrite", "malloc",
                              "free",   "static", "const",  "float",
                              "double", "void",   "int8_t", "uint64_t"};
  for (std::sregex_iterator i(code.begin(), code.end(), word), end; i != end;
       ++i)
    words.insert(i->str());
  ASSERT_TRUE(words.contains("loghandle") && words.contains("break"));
  for (const std::string& name : words)
    EXPECT_TRUE(isReservedIdentifier(name)) << name;
}

TEST(ReservedIdentifierTest, LeavesUsualNamesFree) {
  for (const char* name :
       {"conv_0", "x",      "weights",   "input",     "graph",        "model",
        "data",   "params", "res",       "context_0", "Add",          "INPUT",
        "kiv",    "Kiv",    "Reshape_5", "_1x1",      "_model_layer", "errors",
        "fp16",   "exp",    "max",       "index"})
    EXPECT_FALSE(isReservedIdentifier(name)) << name;
}

}  // namespace
}  // namespace kiv::output::test
