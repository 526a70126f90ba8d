#include "format/identifiers.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "format/frame.h"
#include "support/comma_locale.h"

namespace kiv::format::test {
namespace {

TEST(SanitizeIdentifierTest, FollowsItsRules) {
  const std::pair<const char*, const char*> cases[] = {
      {"conv2d/weights:0", "conv2d_weights_0"},
      {"1x1 conv", "_1x1_conv"},
      {"a(b)", "ab"},
      {"", ""},
      {"(9)", "_9"},
      {"-9", "_9"},
      {"()%$", ""}};
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

// The words of main in the program's frame, without texts and members, and
// what recorded statements use.
TEST(ReservedIdentifierTest, CoversTheFrameOfTheProgram) {
  std::string code = programHeader({}, "params.bin", "");
  code.erase(0, code.find("int main("));
  code += programFooter();
  code = std::regex_replace(code, std::regex(R"("(\\.|[^"\\])*")"), " ");
  code = std::regex_replace(code, std::regex(R"((\.|->)\w+)"), " ");
  const std::regex word(R"([A-Za-z_]\w*)");
  std::set<std::string> words{"fread",   "fwrite",  "malloc",   "free",
                              "static",  "const",   "float",    "double",
                              "void",    "int8_t",  "int16_t",  "int32_t",
                              "int64_t", "uint8_t", "uint16_t", "uint64_t"};
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
}  // namespace kiv::format::test
