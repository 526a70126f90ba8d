#include "output/code_stream.h"

#include <gtest/gtest.h>

namespace kiv::output::test {
namespace {

// Texts are looked through by eight bytes at a step.
TEST(CodeStreamTest, NotesEveryTextThatDoesNotReadBack) {
  CodeStream code;
  for (std::size_t size = 1; size < 20; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      for (const char unsafe : {'"', '\\', '\n', '\r'}) {
        std::string text(size, 'a');
        text[at] = unsafe;
        code.clear();
        code.appendLiteral(text.c_str());
        EXPECT_EQ(code.unsafeTexts().size(), 1U) << size << ' ' << at;
      }
      std::string text(size, 'a');
      for (const char safe : {' ', '!', '#', '\t', '\x7F', '\xDC', '\xA2'}) {
        text[at] = safe;
        code.clear();
        code.appendLiteral(text.c_str());
        EXPECT_TRUE(code.unsafeTexts().empty()) << text;
      }
    }
  }
}

// A call larger than what is kept, with names in more than one block.
TEST(CodeStreamTest, GrowsAndServesAgain) {
  CodeStream code;
  const std::string longName(5000, 'n');
  // A thousand lines "   Kiv_Tensor_t name_tensor_0;", and a blank one.
  constexpr std::size_t kSize = 1000 * (3 + 12 + 1 + 5000 + 8 + 2) + 2890 + 1;
  for (int round = 0; round < 2; ++round) {
    std::vector<NameOf<format::Family::kTensor>> names;
    for (std::uint64_t i = 0; i < 1000; ++i) {
      const NameOf<format::Family::kGraph> graph = {{longName}};
      names.push_back(code.name<format::Part::kGraphTensor>(graph, i));
      code.emitDeclaration("Kiv_Tensor_t", names.back());
    }
    for (std::uint64_t i = 0; i < names.size(); ++i)
      ASSERT_EQ(names[i].text, longName + "_tensor_" + std::to_string(i));
    EXPECT_EQ(code.takeText(true).size(), kSize);
    code.clear();
    EXPECT_EQ(code.takeText(false), "");
  }
}

}  // namespace
}  // namespace kiv::output::test
