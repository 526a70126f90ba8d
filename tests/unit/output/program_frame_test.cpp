#include "output/program_frame.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "support/files.h"

namespace kiv::output::test {
namespace {

constexpr std::string_view kFooterStart =
    "   if (logging) {\n     VALIDATE(error, interface.logFree(loghandle));\n";

// The frame below the notice, for the data file "params.bin" and no backend.
std::string expectedFrame() {
  return kiv::test::readFile(KIV_UNIT_TESTS "/output/program_frame.txt");
}

std::string expectedHeader() {
  const std::string frame = expectedFrame();
  return frame.substr(0, frame.find(kFooterStart));
}

// The text behind the notice, whose shape is checked.
std::string withoutNotice(const std::string& header) {
  std::istringstream text(header);
  std::vector<std::string> lines(8);
  for (std::string& line : lines) std::getline(text, line);
  const std::string rule = "//" + std::string(78, '=');
  EXPECT_EQ(lines[0], rule);
  EXPECT_EQ(lines[1], "//");
  for (int i = 2; i < 5; ++i) {
    EXPECT_EQ(lines[static_cast<size_t>(i)].substr(0, 3), "// ");
    EXPECT_GT(lines[static_cast<size_t>(i)].size(), 3u);
  }
  EXPECT_EQ(lines[5], "//");
  EXPECT_EQ(lines[6], rule);
  EXPECT_EQ(lines[7], "");
  return header.substr(static_cast<size_t>(text.tellg()));
}

std::string replaceAll(std::string text, const std::string& from,
                       const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos;
       at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

TEST(ProgramFrameTest, HasTheTextLineByLine) {
  const std::string header = programHeader({}, "params.bin", "");
  EXPECT_EQ(withoutNotice(header) + std::string(programFooter()),
            expectedFrame());
  EXPECT_EQ(std::count(header.begin(), header.end(), '\n'), 81);
}

TEST(ProgramFrameTest, IncludesTheHeadersOfTheGpuAlone) {
  EXPECT_EQ(withoutNotice(programHeader(headersOfBackend(4), "params.bin", "")),
            replaceAll(expectedHeader(), "#include \"KivInterface.h\"\n",
                       "#include \"KivInterface.h\"\n"
                       "#include \"GPU/KivGpuBackend.h\"\n"
                       "#include \"GPU/KivGpuGraph.h\"\n"
                       "#include \"GPU/KivGpuContext.h\"\n"));
  for (const std::uint32_t id : {0u, 1u, 2u, 3u, 5u, 0x7FFFFFFFu})
    EXPECT_TRUE(headersOfBackend(id).empty()) << id;
}

TEST(ProgramFrameTest, NamesTheDataFileTwiceAsItIs) {
  EXPECT_EQ(withoutNotice(programHeader({}, "out/my data.bin", "")),
            replaceAll(expectedHeader(), "params.bin", "out/my data.bin"));
}

TEST(ProgramFrameTest, ShowsATimeStampInTheNoticeOnly) {
  const std::string header = programHeader({}, "params.bin", "1999-12-31");
  EXPECT_NE(header.find("1999-12-31"), std::string::npos);
  EXPECT_EQ(withoutNotice(header), expectedHeader());
}

}  // namespace
}  // namespace kiv::output::test
