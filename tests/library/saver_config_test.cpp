#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <optional>
#include <regex>

#include "library/started_session.h"

// The library's own options.
namespace kiv::test {
namespace {

namespace fs = std::filesystem;

const Option kDirectory = directoryOption("unused");
const Option kFiles = filesOption("b.c", "b.bin");

// What a session records that makes one call.
void record(const SaverLibrary& saver, uint32_t key) {
  EXPECT_EQ(saver.api().propertyHasCapability(key), 0U);
}

std::string recordText(uint32_t key) {
  return recorded({validate("propertyHasCapability((KivProperty_Key_t)" +
                            std::to_string(key) + ")")});
}

const char* const kFooter =
    "   if (logging) {\n"
    "     VALIDATE(error, interface.logFree(loghandle));\n"
    "   }\n"
    "\n"
    "   if (fclose(fp)) error = -1;\n"
    "   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : "
    "error;\n"
    "}\n";

// What a call comes to; a message of null stands for none.
struct Told {
  Code code;
  const char* message;
};

constexpr Told kFine = {0, nullptr};
constexpr Told kLateStamp = {
    4951,
    "KIV_SAVER_CONFIG_OPTION_APPEND_TIMESTAMP must be provided before any "
    "other KIV APIs are called"};
constexpr Told kLateBackend = {
    4951,
    "KIV_SAVER_CONFIG_OPTION_BACKEND_ID must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG if provided after any other KIV APIs "
    "have been called"};
constexpr Told kLateDirectory = {
    4951,
    "KIV_SAVER_CONFIG_OPTION_OUTPUT_DIRECTORY must be provided concurrently "
    "with KIV_SAVER_CONFIG_OPTION_FILE_CONFIG if provided after any other KIV "
    "APIs have been called"};
constexpr Told kHeaderAlone = {
    4951,
    "KIV_SAVER_CONFIG_WRITE_OUTPUT_HEADER must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG"};
constexpr Told kFooterAlone = {
    4951,
    "KIV_SAVER_CONFIG_WRITE_OUTPUT_FOOTER must be provided concurrently with "
    "KIV_SAVER_CONFIG_OPTION_FILE_CONFIG"};
constexpr Told kNullName = {1004, "Model filename or data filename are NULL"};
constexpr Told kSlash = {1004,
                         "Model filename or data filename contain slashes"};
constexpr Told kUnknown6 = {1004, "Unknown Saver config option provided: 6"};
constexpr Told kUnknownMost = {
    1004, "Unknown Saver config option provided: 2147483647"};

struct TimingRow {
  std::vector<Option> options;
  Told before;
  Told after;
};

TEST(SaverConfig, WhatIsAllowedBeforeAndAfterTheStart) {
  const TimingRow rows[] = {
      {{}, kFine, kFine},
      {{kDirectory}, kFine, kLateDirectory},
      {{timeStampOption(false)}, kFine, kLateStamp},
      {{timeStampOption(true), kFiles}, kFine, kLateStamp},
      {{backendOption(0)}, kFine, kLateBackend},
      {{kDirectory, backendOption(4)}, kFine, kLateBackend},
      {{headerOption(false)}, kHeaderAlone, kHeaderAlone},
      {{footerOption(true), headerOption(true)}, kHeaderAlone, kHeaderAlone},
      {{footerOption(false)}, kFooterAlone, kFooterAlone},
      {{headerOption(false), kDirectory}, kHeaderAlone, kLateDirectory},
      {{numberOption(6, 0)}, kUnknown6, kUnknown6},
      {{headerOption(false), numberOption(0x7FFFFFFF, 0)},
       kUnknownMost,
       kUnknownMost},
      {{filesOption(nullptr, "a/b")}, kNullName, kNullName},
      {{filesOption("a/b", nullptr)}, kNullName, kNullName},
      {{filesOption("out/model.c", "b")}, kSlash, kSlash},
      {{filesOption("a", "b\\")}, kSlash, kSlash},
  };
  const auto expectTold = [](const SaverLibrary& saver,
                             const std::vector<Option>& options,
                             const Told& told) {
    LogCapture log(saver.api());
    EXPECT_EQ(saver.initialize(options), told.code);
    std::vector<std::string> messages;
    if (told.message != nullptr)
      messages.push_back("1: " + std::string(told.message));
    EXPECT_EQ(log.take(), messages);
  };
  for (const TimingRow& row : rows) {
    SCOPED_TRACE("row " + std::to_string(&row - rows));
    {
      const SaverLibrary saver;
      expectTold(saver, row.options, row.before);
      EXPECT_FALSE(fs::exists(saver.directory()));
    }
    const SaverLibrary saver;
    record(saver, 0);
    expectTold(saver, row.options, row.after);
    record(saver, 1);
    EXPECT_EQ(saver.calls(), recordText(0) + recordText(1));
  }
}

TEST(SaverConfig, RefusedCallsChangeNothing) {
  const SaverLibrary saver;
  const std::string other = saver.directory().string() + "_other";
  const Option elsewhere = directoryOption(other.c_str());
  EXPECT_EQ(saver.initialize({elsewhere, backendOption(4), numberOption(9, 0)}),
            1004U);
  EXPECT_EQ(
      saver.initialize({elsewhere, backendOption(4), headerOption(false)}),
      4951U);
  EXPECT_EQ(saver.initialize({kFiles, filesOption("a/b", "c")}), 1004U);
  record(saver, 0);
  EXPECT_EQ(saver.calls(), recordText(0));
  EXPECT_EQ(saver.modelText().find("GPU"), std::string::npos);
  EXPECT_FALSE(fs::exists(other));
}

TEST(SaverConfig, MissingDirectoryTextsMeanTheDefault) {
  const TempDirectory temp;
  const fs::path before = fs::current_path();
  fs::current_path(temp.path());
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    SaverLibrary saver;
    {
      LogCapture log(saver.api());
      EXPECT_EQ(saver.initialize({directoryOption(path)}), 0U);
      EXPECT_EQ(log.take(),
                (std::vector<std::string>{
                    "2: " + std::string(path == nullptr ? "NULL" : "Empty") +
                    " output path provided, defaulting to ./saver_output/"}));
    }
    record(saver, 0);
    EXPECT_TRUE(saver.unload());
    EXPECT_TRUE(fs::exists("saver_output/saver_output.c"));
    EXPECT_TRUE(fs::exists("saver_output/params.bin"));
    fs::remove_all("saver_output");
  }
  fs::current_path(before);
}

// The text in the header, and the parts of both names.
TEST(SaverConfig, TimeStampWinsOverNames) {
  const SaverLibrary saver;
  const std::time_t before = std::time(nullptr);
  ASSERT_EQ(saver.initialize({timeStampOption(true), kFiles}), 0U);
  const std::time_t after = std::time(nullptr);
  record(saver, 0);
  std::string model;
  std::string data;
  for (const auto& file : fs::directory_iterator(saver.directory())) {
    const std::string name = file.path().filename().string();
    (name.ends_with(".c") ? model : data) = name;
  }
  const std::string stamp = R"((\d\d)-(\d\d)-(\d{4})_(\d\d)_(\d\d)_(\d\d))";
  std::smatch match;
  ASSERT_TRUE(std::regex_match(model, match,
                               std::regex("saver_output_" + stamp + "\\.c")));
  std::tm time{};
  int* const fields[] = {&time.tm_mon,  &time.tm_mday, &time.tm_year,
                         &time.tm_hour, &time.tm_min,  &time.tm_sec};
  for (std::size_t i = 0; i < 6; ++i) *fields[i] = std::stoi(match[i + 1]);
  time.tm_mon -= 1;
  time.tm_year -= 1900;
  time.tm_isdst = -1;
  const std::time_t shown = std::mktime(&time);
  EXPECT_TRUE(before <= shown && shown <= after) << model;
  const std::string text = readFile(saver.directory() / model);
  EXPECT_NE(text.find(match.format("$1-$2-$3_$4:$5:$6")), std::string::npos);
  EXPECT_EQ(data, match.format("params_$1-$2-$3_$4_$5_$6.bin"));
  EXPECT_NE(text.find("fopen(\"" + data + "\", \"rb\")"), std::string::npos);
}

TEST(SaverConfig, TheLastOptionOfAKindWins) {
  const SaverLibrary saver;
  const std::string path = saver.directory().string();
  ASSERT_EQ(saver.initialize({directoryOption("unused"), backendOption(4),
                              timeStampOption(true), timeStampOption(false),
                              filesOption("a.c", "a.bin"), headerOption(false),
                              footerOption(false), backendOption(0), kFiles,
                              directoryOption(path.c_str()), headerOption(true),
                              footerOption(true)}),
            0U);
  record(saver, 0);
  const std::string text = readFile(saver.directory() / "b.c");
  EXPECT_NE(text.find("int main"), std::string::npos);
  EXPECT_EQ(text.find("GPU"), std::string::npos);
  EXPECT_FALSE(fs::exists("unused"));
  ASSERT_EQ(saver.initialize({filesOption("c.c", "c.bin")}), 0U);
  EXPECT_TRUE(readFile(saver.directory() / "b.c").ends_with(kFooter));
}

TEST(SaverConfig, SwitchEndsOneProgramAndBeginsAnother) {
  StartedSession c;
  std::optional<LogCapture> log(c.api);
  const std::string directory = c.saver.directory().string() + "_other";
  ASSERT_EQ(c.api.graphFinalize(c.graph, nullptr, nullptr), 0U);
  const std::string first = c.saver.modelText();
  ASSERT_EQ(c.saver.initialize({kFiles, directoryOption(directory.c_str()),
                                backendOption(4), footerOption(false)}),
            0U);
  EXPECT_EQ(c.saver.modelText(), first + kFooter);
  const fs::path model = fs::path(directory) / "b.c";
  const std::string header = readFile(model);
  EXPECT_TRUE(header.ends_with("&loghandle));\n   }\n"));
  EXPECT_NE(header.find("fopen(\"b.bin\", \"rb\")"), std::string::npos);
  EXPECT_NE(header.find("GPU/KivGpuGraph.h"), std::string::npos);

  // Objects from before stay usable; each is told of once.
  EXPECT_EQ(log->take(), std::vector<std::string>{});
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(c.api.graphFinalize(c.graph, c.profile, nullptr), 0U);
  constexpr const char* kForeign =
      " was created before the output files were switched, the new model file "
      "does not declare it";
  const std::string warnings[] = {std::string("2: g") + kForeign,
                                  std::string("2: profile_0") + kForeign};
  const auto told = log->take();
  EXPECT_TRUE(
      std::is_permutation(told.begin(), told.end(), warnings, warnings + 2));
  const std::string call =
      recorded({validate("graphFinalize(g, profile_0, NULL)")});
  EXPECT_EQ(readFile(model), header + call + call);
  EXPECT_EQ(c.api.contextValidateBinary(nullptr, nullptr, nullptr, "data", 4),
            0U);
  EXPECT_EQ(readFile(fs::path(directory) / "b.bin"), "data");
  const std::string last = readFile(model);
  log.reset();
  EXPECT_TRUE(c.saver.unload());
  EXPECT_EQ(readFile(model), last);
}

TEST(SaverConfig, OptionsOfASwitchStayUntilTheyAreGivenAgain) {
  SaverLibrary saver;
  record(saver, 0);
  const std::string other = saver.directory().string() + "_other";
  const auto read = [&](const char* name) {
    return readFile(fs::path(other) / name);
  };
  ASSERT_EQ(saver.initialize({kFiles, directoryOption(other.c_str()),
                              backendOption(4), headerOption(false),
                              footerOption(false)}),
            0U);
  record(saver, 1);
  ASSERT_EQ(saver.initialize({filesOption("c.c", "c.bin")}), 0U);
  record(saver, 2);
  EXPECT_EQ(read("b.c"), recordText(1));
  ASSERT_EQ(saver.initialize({filesOption("d.c", "d.bin"), headerOption(true)}),
            0U);
  record(saver, 3);
  EXPECT_EQ(read("c.c"), recordText(2));
  ASSERT_EQ(saver.initialize({filesOption("e.c", "e.bin"), footerOption(true)}),
            0U);
  EXPECT_NE(read("d.c").find("GPU/KivGpuGraph.h"), std::string::npos);
  EXPECT_TRUE(read("d.c").ends_with("&loghandle));\n   }\n" + recordText(3)));
  saver.unload();
  EXPECT_NE(read("e.c").find("int main"), std::string::npos);
  EXPECT_TRUE(read("e.c").ends_with(kFooter));
}

TEST(SaverConfig, SwitchOntoTheSameFiles) {
  const SaverLibrary saver;
  LogCapture log(saver.api());
  record(saver, 0);
  const Option same = filesOption("saver_output.c", "params.bin");
  EXPECT_EQ(saver.initialize({same}), 0U);
  EXPECT_EQ(log.take().size(), 1U);
  record(saver, 1);
  EXPECT_EQ(saver.calls(), recordText(1));
  // Continued without a header nothing is lost.
  EXPECT_EQ(saver.initialize({same, headerOption(false)}), 0U);
  EXPECT_EQ(log.take().size(), 0U);
  record(saver, 2);
  EXPECT_TRUE(
      saver.modelText().ends_with(recordText(1) + kFooter + recordText(2)));
}

TEST(SaverConfig, FailedSwitchCanBeFollowedByOneThatSucceeds) {
  const SaverLibrary saver;
  LogCapture log(saver.api());
  record(saver, 0);
  fs::create_directory(saver.directory() / "taken");
  const Option takenModel = filesOption("taken", "b.bin");
  const Option takenData = filesOption("b.c", "taken");
  constexpr const char* kCannotOpen = "1: Could not open file: taken";
  EXPECT_EQ(saver.initialize({takenModel}), 4999U);
  EXPECT_EQ(log.take(),
            (std::vector<std::string>{kCannotOpen,
                                      "1: Failure when opening model file"}));
  EXPECT_TRUE(saver.modelText().ends_with(recordText(0) + kFooter));
  EXPECT_EQ(saver.api().propertyHasCapability(1), 1999U);
  EXPECT_EQ(
      log.take(),
      (std::vector<std::string>{"1: Could not write data, FILE* is NULL"}));
  EXPECT_EQ(saver.initialize({takenData}), 4999U);
  EXPECT_EQ(log.take(), (std::vector<std::string>{
                            kCannotOpen, "1: Failure when opening data file"}));
  // Back to the first files, the failures between do not hide what is lost.
  EXPECT_EQ(saver.initialize({filesOption("saver_output.c", "c.bin")}), 0U);
  EXPECT_EQ(log.take().size(), 1U);
  EXPECT_EQ(saver.initialize({filesOption("c.c", "d.bin")}), 0U);
  record(saver, 2);
  EXPECT_TRUE(readFile(saver.directory() / "c.c").ends_with(recordText(2)));
}

// A program that begins now would read the bytes of another one.
TEST(SaverConfig, NoHeaderBesideOldDataIsWarnedOf) {
  const struct {
    const char* model;
    const char* data;
    std::size_t warnings;
  } rows[] = {{"", "old", 1},
              {nullptr, "old", 1},
              {"", "", 0},
              {nullptr, nullptr, 0},
              {"int main() {\n", "old", 0}};
  for (const bool isSwitch : {false, true}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(std::to_string(&row - rows) + (isSwitch ? " switch" : ""));
      const SaverLibrary saver;
      LogCapture log(saver.api());
      if (isSwitch) record(saver, 0);
      fs::create_directory(saver.directory());
      if (row.model != nullptr) writeFile(saver.directory() / "b.c", row.model);
      if (row.data != nullptr) writeFile(saver.directory() / "b.bin", row.data);
      EXPECT_EQ(saver.initialize({kFiles, headerOption(false)}), 0U);
      record(saver, 1);
      record(saver, 2);
      const std::vector<std::string> messages = log.take();
      ASSERT_EQ(messages.size(), row.warnings);
      EXPECT_TRUE(messages.empty() || messages[0].starts_with("2: "));
    }
  }
}

TEST(SaverConfig, SeveralSessionsWriteOneProgram) {
  const TempDirectory temp;
  const std::string path = temp.path().string();
  const auto session = [&](uint32_t key, const char* data, bool header,
                           bool footer) {
    const SaverLibrary saver;
    // The last one comes from files of its own.
    if (footer) record(saver, 0);
    ASSERT_EQ(saver.initialize({directoryOption(path.c_str()), kFiles,
                                headerOption(header), footerOption(footer)}),
              0U);
    record(saver, key);
    EXPECT_EQ(
        saver.api().contextValidateBinary(nullptr, nullptr, nullptr, data, 2),
        0U);
  };
  session(0, "ab", true, false);
  session(1, "cd", false, false);
  session(2, "ef", false, true);
  const std::string text = readFile(temp.path() / "b.c");
  // Each session's names begin behind those that the program has.
  std::string calls;
  for (const int key : {0, 1, 2}) {
    const std::string name = "binaryBuffer_" + std::to_string(key);
    calls += recordText(static_cast<uint32_t>(key));
    calls += recorded(
        {"static uint8_t " + name + "[2];", "fread(" + name + ", 1, 2, fp);",
         validate("contextValidateBinary(NULL, NULL, NULL, " + name + ", 2)")});
  }
  calls += kFooter;
  ASSERT_TRUE(text.ends_with(calls)) << text;
  EXPECT_TRUE(text.substr(0, text.size() - calls.size())
                  .ends_with("&loghandle));\n   }\n"));
  EXPECT_EQ(readFile(temp.path() / "b.bin"), "abcdef");
}

}  // namespace
}  // namespace kiv::test
