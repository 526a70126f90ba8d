#include "output/code_stream.h"

#include <gtest/gtest.h>

#include <limits>

#include "comma_locale.h"

namespace kiv::output::test {
namespace {

TEST(CodeStreamTest, WritesEachStatementAsItsLines) {
  const std::uint32_t counts[] = {0, 7, 4294967295u};
  const std::int32_t offsets[] = {-128, std::numeric_limits<int>::min()};
  const std::uint8_t flags[] = {0, 255};
  const float scales[] = {0.1F, 1.0F, 1e-10F, -2.5F};
  CodeStream code;
  code.emitCall("VALIDATE", "error", "interface", "f", {"g", "NULL", "&x"});
  code.emitCall("M", "e", "o", "f", {});
  code.emitDeclaration("Kiv_BackendHandle_t", "backend_0");
  code.emitNullDeclaration("Kiv_Param_t*", "params");
  code.emitArray("T", "a", {"x", "{1, 2}", "y"});
  code.emitArray("T", "a", {"", "x", ""});
  code.emitArray("T", "a", {});
  code.emitNumberArray("uint32_t", "n", counts, 3);
  code.emitNumberArray("int32_t", "n", offsets, 2);
  code.emitNumberArray("uint8_t", "n", flags, 2);
  code.emitNumberArray("float", "n", scales, 4);
  code.emitNumberArray("float", "n", scales, 0);
  code.emitStruct("S", "s", {"1", ".perfHint = HIGH"});
  code.emitStaticRead("float", "d", {flags, 4, 20}, "fp");
  code.emitBlankLine();
  code.emitMalloc("uint8_t*", "buffer", "4096");
  code.emitFree("buffer");
  code.emitFopen("f", "out/params.bin", "wb");
  code.emitFwrite("buffer", 1, "written", "f");
  code.emitFclose("f");
  code.emitLine("// a comment");
  EXPECT_EQ(code.takeText(false),
            R"(   VALIDATE(error, interface.f(g, NULL, &x));
   M(e, o.f());
   Kiv_BackendHandle_t backend_0;
   Kiv_Param_t* params = NULL;
   T a[] = {x, {1, 2}, y};
   T a[] = {, x, };
   T a[] = {};
   uint32_t n[] = {0, 7, 4294967295};
   int32_t n[] = {-128, -2147483648};
   uint8_t n[] = {0, 255};
   float n[] = {0.100000001, 1, 1.00000001e-10, -2.5};
   float n[] = {};
   S s = {1, .perfHint = HIGH};
   static float d[20];
   fread(d, 4, 20, fp);

   uint8_t* buffer = (uint8_t*)malloc(4096);
   free(buffer);
   FILE* f = fopen("out/params.bin", "wb");
   if (!f) {
      printf("ERROR: File open of out/params.bin failed on line: %d\n", __LINE__);
      return -1;
   }
   fwrite(buffer, 1, written, f);
   fclose(f);
   // a comment
)");
}

TEST(CodeStreamTest, HandsOutItsTextOnceAndItsRunsInOrder) {
  CodeStream code(0);
  code.emitStaticRead("uint16_t", "a", {"abcd", 2, 2}, "fp");
  code.emitStaticRead("uint8_t", "b", {"ef", 1, 2}, "fp");
  EXPECT_EQ(code.takeText(true),
            "static uint16_t a[2];\nfread(a, 2, 2, fp);\n"
            "static uint8_t b[2];\nfread(b, 1, 2, fp);\n\n");
  EXPECT_EQ(code.takeText(false), "");
  ASSERT_EQ(code.runs().size(), 2u);
  EXPECT_STREQ(static_cast<const char*>(code.runs()[0].bytes), "abcd");
  EXPECT_EQ(code.runs()[0].elementSize, 2u);
  EXPECT_STREQ(static_cast<const char*>(code.runs()[1].bytes), "ef");
  EXPECT_EQ(code.runs()[1].count, 2u);
}

TEST(CodeStreamTest, WritesNumbersAlikeInEveryLocale) {
  const kiv::test::CommaLocale locale;
  const float floats[] = {1234.5F, 0.1F};
  CodeStream code(0);
  code.emitNumberArray("float", "f", floats, 2);
  code.emitStaticRead("T", "d", {nullptr, 1000, 1000000}, "fp");
  EXPECT_EQ(code.takeText(false),
            "float f[] = {1234.5, 0.100000001};\nstatic T d[1000000];\n"
            "fread(d, 1000, 1000000, fp);\n");
}

}  // namespace
}  // namespace kiv::output::test
