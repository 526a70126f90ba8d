// Cuts a recording at every byte, as the death of its client or a full disk
// may, and compares what is made of it with what was whole before the cut.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int completeRecording(int argc, char** argv);

namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

class CompleteRecording : public testing::Test {
 protected:
  CompleteRecording() { fs::create_directories(directory_); }
  ~CompleteRecording() override { fs::remove_all(directory_); }

  // Runs the completer on a model file with this text.
  int complete(const std::string& text) {
    fs::remove(program_);
    writeFile(model_, text);
    std::vector<std::string> arguments = {"complete_recording", model_,
                                          program_, size_};
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status =
        completeRecording(static_cast<int>(argv.size()), argv.data());
    output_ = testing::internal::GetCapturedStdout();
    error_ = testing::internal::GetCapturedStderr();
    return status;
  }

  std::string program() const { return readFile(program_); }
  std::string programSize() const { return readFile(size_); }

  // Where the sample's header and each of its calls end, and its footer begins.
  std::vector<std::size_t> pieceEnds() const {
    std::vector<std::size_t> ends = {behind("&loghandle));\n   }\n")};
    for (const char* lastLine :
         {"interface.backendCreate(loghandle, backend_0_config_0, "
          "&backend_0));\n\n",
          "&context_0));\n\n", "&graph_interface_backendFree));\n\n",
          "&graph_interface_backendFree_tensor_0));\n\n", "NULL, NULL));\n\n",
          "free(context_0_buffer);\n\n", "contextFree(context_0, NULL));\n\n",
          "backendFree(backend_0));\n\n"})
      ends.push_back(behind(lastLine));
    return ends;
  }

  std::size_t behind(const std::string& text) const {
    const std::size_t begin = sample_.find(text);
    EXPECT_NE(begin, std::string::npos) << text;
    return begin + text.size();
  }

  const fs::path directory_ =
      fs::path(testing::TempDir()) /
      ("complete_recording." + std::to_string(getpid()));
  const std::string model_ = directory_ / "saver_output.c";
  const std::string program_ = directory_ / "program.c";
  const std::string size_ = directory_ / "program_size.h";
  const std::string sample_ = readFile(KIV_SAMPLE_RECORDING);
  std::string output_;
  std::string error_;
};

TEST_F(CompleteRecording, CopiesACompleteOneAsItIs) {
  ASSERT_EQ(complete(sample_), 0);
  EXPECT_EQ(program(), sample_);
  EXPECT_EQ(output_, "The recording is complete: 8 calls.\n");
  EXPECT_EQ(programSize(),
            "#define PROGRAM_SIZE " + std::to_string(sample_.size()) + "u\n");
}

TEST_F(CompleteRecording, KeepsWhatIsWholeAtEveryCut) {
  const std::vector<std::size_t> ends = pieceEnds();
  const std::string footer = sample_.substr(ends.back());
  std::size_t pieces = 0;
  // Cuts far inside the header are all alike, a few will do.
  const std::size_t headerEnd = ends.front();
  for (std::size_t cut = 0; cut < sample_.size();
       cut += cut + 150 < headerEnd ? 50 : 1) {
    while (pieces < ends.size() && ends[pieces] <= cut) ++pieces;
    const int status = complete(sample_.substr(0, cut));
    ASSERT_EQ(readFile(model_).size(), cut) << "the recording was changed";
    if (pieces == 0) {
      ASSERT_EQ(status, 1) << cut;
      ASSERT_FALSE(fs::exists(program_)) << cut;
      continue;
    }
    const std::size_t end = ends[pieces - 1];
    ASSERT_EQ(status, 0) << cut << ": " << error_;
    ASSERT_EQ(program(), sample_.substr(0, end) + footer) << cut;
    ASSERT_EQ(output_,
              "The recording has no end. Completed a copy behind its " +
                  std::to_string(pieces - 1) + " whole calls; left out " +
                  std::to_string(cut - end) + " bytes.\n");
  }
  EXPECT_EQ(pieces, ends.size());
}

TEST_F(CompleteRecording, TakesLinesAndFilesOfAnyLength) {
  const std::size_t end = pieceEnds().back();
  const std::string calls = sample_.substr(0, end);
  const std::string footer = sample_.substr(end);
  const std::string call = "   uint32_t dims[] = {" +
                           std::string(200'000, '1') +
                           "};\n   VALIDATE(error, interface.backendFree(0));"
                           "\n\n";
  ASSERT_EQ(complete(calls + call + "   uint32_t more[] = {1, "), 0);
  EXPECT_EQ(program(), calls + call + footer);
}

TEST_F(CompleteRecording, TakesALineOfTheFooterForNoFooter) {
  // A second session went on behind the first one's footer, then died.
  for (const char* rest : {"   Kiv_BackendHandle_t", "   Kiv_Back\n"}) {
    ASSERT_EQ(complete(sample_ + rest), 0);
    EXPECT_NE(output_.find("has no end"), std::string::npos);
    EXPECT_EQ(program(), sample_);
  }

  const std::string call =
      "   VALIDATE(error, interface.backendFree(backend_0));\n\n";
  const std::size_t end = pieceEnds().back();
  const std::string text =
      sample_.substr(0, end) + "   if (logging) {\n\n" + call;
  ASSERT_EQ(complete(text), 0);
  EXPECT_EQ(program(), text + sample_.substr(end));
}

TEST_F(CompleteRecording, TellsWhyThereIsNoProgram) {
  EXPECT_EQ(complete("   VALIDATE(error, interface.backendFree(NULL));\n\n"),
            1);
  EXPECT_EQ(error_,
            model_ + ": holds no whole program header, nothing to replay\n");
  fs::create_directories(size_);
  EXPECT_EQ(complete(sample_), 1);
  EXPECT_EQ(error_, program_ + ": cannot be written\n");
  EXPECT_FALSE(fs::exists(program_));
}

}  // namespace
