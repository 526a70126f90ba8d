// Cuts a recording at every byte, as the death of its client or a full disk
// may, and compares what is made of it with what was whole before the cut.

#include <gtest/gtest.h>

#include <vector>

#include "support/files.h"

extern "C" int completeRecording(int argc, char** argv);

namespace kiv::test {
namespace {

// Calls with what the sample's calls do not have: lines behind the one that
// makes the call, an empty one before it, and a name that looks like a call.
constexpr const char* kOtherCalls =
    R"(   Kiv_ContextBinarySize_t size;
   VALIDATE(error, interface.contextGetBinary(context_0, NULL, 0, &size));
   if (size != 0) {
      return -1;
   }

   KivGraph_Config_t config = {};

   VALIDATE(error, interface.graphCreate(context_0, "));   VALIDATE(error, interface.backendFree(", NULL, NULL));

)";

class CompleteRecording : public testing::Test {
 protected:
  CompleteRecording() {
    const std::string next = "   VALIDATE(error, interface.contextFree(";
    sample_.insert(sample_.find(next), kOtherCalls);
    ends_.push_back(behind("&loghandle));\n   }\n", 0));
    while (sample_.find("));\n\n", ends_.back()) != std::string::npos) {
      ends_.push_back(behind("));\n\n", ends_.back()));
    }
    // Of the call with lines behind it.
    ends_.insert(ends_.begin() + 10, behind("return -1;\n   }\n\n", ends_[9]));
    footer_ = sample_.substr(ends_.back());
  }

  // Runs the completer on a model file with this text.
  int run(const std::string& text) {
    std::filesystem::remove(program_);
    writeFile(model_, text);
    std::vector<std::string> arguments = {"complete_recording", model_,
                                          program_, size_};
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    return completeRecording(static_cast<int>(argv.size()), argv.data());
  }

  // The same, keeping what it prints.
  int complete(const std::string& text) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = run(text);
    output_ = testing::internal::GetCapturedStdout();
    error_ = testing::internal::GetCapturedStderr();
    EXPECT_EQ(readFile(model_), text) << "the recording was changed";
    return status;
  }

  std::string program() const { return readFile(program_); }

  std::size_t behind(const std::string& text, std::size_t from) const {
    return sample_.find(text, from) + text.size();
  }

  const TempDirectory directory_;
  const std::string model_ = (directory_.path() / "saver_output.c").string();
  const std::string program_ = (directory_.path() / "program.c").string();
  const std::string size_ = (directory_.path() / "program_size.h").string();
  std::string sample_ = readFile(KIV_SAMPLE_RECORDING);
  // Where the sample's header and each of its calls end.
  std::vector<std::size_t> ends_;
  std::string footer_;
  std::string output_;
  std::string error_;
};

TEST_F(CompleteRecording, CopiesACompleteOneAsItIs) {
  ASSERT_EQ(complete(sample_), 0);
  EXPECT_EQ(program(), sample_);
  EXPECT_EQ(output_, "The recording is complete: 13 calls.\n");
  EXPECT_TRUE(readFile(size_).starts_with(
      "#define PROGRAM_SIZE " + std::to_string(sample_.size()) + "u"));
}

TEST_F(CompleteRecording, KeepsWhatIsWholeAtEveryCut) {
  ASSERT_EQ(ends_.size(), 14u);
  std::size_t pieces = 0;
  std::size_t cut = 0;
  std::string output;
  testing::internal::CaptureStdout();
  while (cut < sample_.size()) {
    while (pieces < ends_.size() && ends_[pieces] <= cut) ++pieces;
    const std::size_t end = pieces == 0 ? 0 : ends_[pieces - 1];
    const int status = run(sample_.substr(0, cut));
    if (status != (pieces == 0 ? 1 : 0)) break;
    if (program() != (pieces == 0 ? "" : sample_.substr(0, end) + footer_))
      break;
    if (pieces != 0)
      output += "The recording has no end. Completed a copy behind its " +
                std::to_string(pieces - 1) + " whole calls; left out " +
                std::to_string(cut - end) + " bytes.\n";
    // Cuts far inside the header are all alike, a few will do.
    cut += cut + 150 < ends_[0] ? 50 : 1;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), output);
  EXPECT_EQ(cut, sample_.size()) << "wrong program for a cut there";
}

TEST_F(CompleteRecording, TakesLinesAndFilesOfAnyLength) {
  const std::string calls = sample_.substr(0, ends_.back()) +
                            "   uint32_t dims[] = {" +
                            std::string(200'000, '1') + "};\n" + kOtherCalls;
  ASSERT_EQ(complete(calls + "   uint32_t more[] = {1, "), 0);
  EXPECT_EQ(program(), calls + footer_);
}

TEST_F(CompleteRecording, TakesALineOfTheFooterForNoFooter) {
  // A second session went on behind the first one's footer, then died.
  for (const char* rest : {"   Kiv_BackendHandle_t", "   Kiv_Back\n"}) {
    ASSERT_EQ(complete(sample_ + rest), 0);
    EXPECT_NE(output_.find("has no end"), std::string::npos);
    EXPECT_EQ(program(), sample_);
  }
  std::string calls = sample_.substr(0, ends_.back()) + "   if (logging) {\n";
  ASSERT_EQ(complete(calls + footer_), 0);
  EXPECT_EQ(output_, "The recording is complete: 13 calls.\n");
  calls += std::string("\n") + kOtherCalls;
  ASSERT_EQ(complete(calls), 0);
  EXPECT_EQ(program(), calls + footer_);
}

TEST_F(CompleteRecording, TellsWhyThereIsNoProgram) {
  EXPECT_EQ(complete(kOtherCalls), 1);
  EXPECT_EQ(error_,
            model_ + ": holds no whole program header, nothing to replay\n");
  std::filesystem::create_directories(size_);
  EXPECT_EQ(complete(sample_), 1);
  EXPECT_EQ(error_, program_ + ": cannot be written\n");
  EXPECT_FALSE(std::filesystem::exists(program_));
}

}  // namespace
}  // namespace kiv::test
