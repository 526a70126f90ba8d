#include "output/output_stream.h"

#include <gtest/gtest.h>

#include "logged_messages.h"
#include "output/data_file.h"
#include "output/model_file.h"
#include "support/files.h"

namespace kiv::output::test {
namespace {

namespace fs = std::filesystem;
using kiv::test::Lines;
using kiv::test::readFile;
using kiv::test::writeFile;

class OutputStreamTest : public testing::Test {
 protected:
  // With "/" between directories, on every system.
  std::string at(const std::string& name) const {
    return (temp_.path() / name).generic_string();
  }

  kiv::test::TempDirectory temp_;
  kiv::test::LoggedMessages log_;
};

TEST_F(OutputStreamTest, OpensOrTellsWhyNot) {
  writeFile(at("plain"), "kept");
  fs::create_directories(at("taken/file"));
  const std::string noDirectory =
      "1: Could not create directory, pal::Directory::create failed";
  const struct {
    std::string directory;
    std::string file;
    // Empty when it opens.
    std::string message;
  } cases[] = {
      {at("new"), "file", ""},
      {at("new"), "file", ""},
      {at("other/"), "file", ""},
      {"", at("by path"), ""},
      {at("missing/new"), "file", noDirectory},
      {at("plain"), "file", "1: " + at("plain") + " already exists"},
      {at("plain/"), "file", "1: " + at("plain/") + " already exists"},
      {at("taken"), "file", "1: Could not open file: file"},
      {at("taken/"), "no/file", "1: Could not open file: no/file"},
  };
  for (const auto& c : cases) {
    OutputStream stream;
    std::string directory = c.directory;
    const bool opened =
        stream.open(directory, c.file, platform::OpenMode::kTruncate);
    EXPECT_EQ(opened, c.message.empty()) << c.directory;
    EXPECT_EQ(stream.isOpen(), opened);
    EXPECT_EQ(log_.take(), c.message.empty() ? Lines{} : Lines{c.message});
    if (!opened) continue;
    EXPECT_TRUE(fs::exists(directory + c.file)) << c.directory;
    const bool slash = directory.empty() || directory.ends_with('/');
    EXPECT_TRUE(slash && !directory.ends_with("//")) << directory;
  }
  EXPECT_EQ(readFile(at("plain")), "kept");
  EXPECT_FALSE(fs::exists(at("missing")));
}

TEST_F(OutputStreamTest, TellsThatThereIsNoStream) {
  const Lines noWrite = {"1: Could not write data, FILE* is NULL"};
  {
    DataFile data(temp_.path().string(), "data");
    EXPECT_FALSE(data.write({"a", 1, 1}));
    EXPECT_EQ(log_.take(), noWrite);
    EXPECT_FALSE(data.close());
    EXPECT_EQ(log_.take(), Lines{"1: Could not close file, FILE* is NULL"});
    ModelFile model(temp_.path().string(), "model");
    EXPECT_FALSE(model.writeHeader({}, "data", ""));
    EXPECT_FALSE(model.writeFooter());
    EXPECT_EQ(log_.take(), (Lines{noWrite[0], noWrite[0]}));
  }
  EXPECT_EQ(log_.take(), Lines{}) << "nothing to be ended";
}

}  // namespace
}  // namespace kiv::output::test
