#include "arrays/outputs.h"

#include <gtest/gtest.h>

#include "arrays/arrays.h"
#include "support/files.h"

namespace kiv::test {
namespace {

using namespace arrays;
namespace fs = std::filesystem;

TEST(Outputs, NamesAreFilesOnEverySystem) {
  EXPECT_EQ(fileNameOf("conv_1.Out-put"), "conv_1.Out-put");
  EXPECT_EQ(fileNameOf("a/b\\c:d \xc3\xa4%"), "a%2Fb%5Cc%3Ad%20%C3%A4%25");
  EXPECT_EQ(fileNameOf("."), "%2E");
  EXPECT_EQ(fileNameOf(".."), "%2E%2E");
  EXPECT_EQ(fileNameOf("a."), "a%2E");
  EXPECT_EQ(fileNameOf(""), "~");
  EXPECT_EQ(fileNameOf("Con"), "%43on");
  EXPECT_EQ(fileNameOf("com1.x"), "%63om1.x");
  EXPECT_EQ(fileNameOf("const"), "const");
  EXPECT_EQ(nameOfFile(fileNameOf("a/\xc3\xa4%. .")), "a/\xc3\xa4%. .");
  const std::string a(400, '/');
  EXPECT_LE(fileNameOf(a).size(), 180U);
  EXPECT_NE(fileNameOf(a), fileNameOf(a + "/"));
  EXPECT_EQ(fileNameOf(a).find('~'), 162U);
}

class SavedOutputs : public testing::Test {
 protected:
  void SetUp() override {
    OutputWriter writer;
    ASSERT_TRUE(writer.open(before(), why_)) << why_;
    for (const OutputName& name :
         {OutputName{"main", 0, "y"}, OutputName{"main", 0, "Y"},
          OutputName{"m/n", 1, "../x"}})
      ASSERT_TRUE(writer.save(name, floats({1, 2}).view(), why_)) << why_;
  }

  fs::path before() const { return directory_.path() / "before"; }
  std::string list() const { return readFile(before() / "outputs.txt"); }

  TempDirectory directory_;
  std::string why_;
};

TEST_F(SavedOutputs, AreListedInTheirOrder) {
  EXPECT_EQ(list(), "main/0/y.npy\nmain/0/Y~2.npy\nm%2Fn/1/%2E.%2Fx.npy\n");
  const auto paths = readOutputList(before(), why_);
  ASSERT_TRUE(paths) << why_;
  for (const std::string& path : *paths)
    EXPECT_TRUE(fs::exists(before() / path)) << path;
  EXPECT_EQ(titleOf(paths->back()), "../x of m/n, execution 1");
}

TEST_F(SavedOutputs, AreWhatOthersAreComparedWith) {
  OutputComparison comparison({0, 0});
  ASSERT_TRUE(comparison.open(before(), why_)) << why_;
  EXPECT_FALSE(
      comparison.compare({"main", 0, "y"}, floats({1, 2}).view()).isOver());
  const Difference second =
      comparison.compare({"main", 0, "Y"}, floats({1, 3}).view());
  EXPECT_TRUE(second.isOver());
  EXPECT_EQ(second.figures.firstOver->expected, "2");
  EXPECT_TRUE(
      comparison.compare({"main", 1, "y"}, floats({1, 2}).view()).isOver());
  ASSERT_EQ(comparison.missing().size(), 1U);
  EXPECT_EQ(comparison.missing()[0].path, "m%2Fn/1/%2E.%2Fx.npy");
}

// The list may come from a stranger.
TEST_F(SavedOutputs, LieInTheirDirectory) {
  for (const char* path : {"../0/x.npy", "/0/x.npy", "a/0/x", "x.npy",
                           "a/../x.npy", "C:/0/x.npy", "a\\b/0/x.npy"}) {
    writeFile(before() / "outputs.txt", path);
    EXPECT_FALSE(readOutputList(before(), why_)) << path;
  }
  EXPECT_FALSE(readOutputList(directory_.path(), why_));
}

}  // namespace
}  // namespace kiv::test
