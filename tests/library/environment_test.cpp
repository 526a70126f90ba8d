#include "support/environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "support/dynamic_library.h"
#include "support/files.h"
#include "support/options.h"
#include "support/provider.h"
#include "support/records.h"

// Settings from the environment, for clients that cannot be changed.
namespace kiv::test {
namespace {

namespace fs = std::filesystem;

class Environment : public testing::Test {
 protected:
  ~Environment() override {
    for (const char* name :
         {"KIV_SAVER_OUTPUT_DIRECTORY", "KIV_SAVER_MODEL_FILE",
          "KIV_SAVER_DATA_FILE", "KIV_SAVER_BACKEND_ID",
          "KIV_SAVER_APPEND_TIMESTAMP"})
      setEnvironment(name, "");
  }

  std::string path(const char* name) const {
    return (directory_.path() / name).generic_string();
  }

  // A session of a library that is loaded for it, and what is then in the
  // directory, with blanks between.
  std::string record(const std::vector<Option>& options = {}) {
    DynamicLibrary library(KIV_SAVER_LIBRARY);
    EXPECT_EQ(setOptions(library, options), KIV_SUCCESS);
    (void)createObjects(providerOf(library).KIV_INTERFACE_VER_NAME);
    library.unload();
    std::set<std::string> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(directory_.path()))
      if (entry.is_regular_file())
        files.insert(entry.path()
                         .lexically_relative(directory_.path())
                         .generic_string());
    std::string text;
    for (const std::string& file : files) text += file + " ";
    return text;
  }

 private:
  TempDirectory directory_;
};

TEST_F(Environment, EachSessionHasAPlaceOfItsOwn) {
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", path("%n%%n"));
  EXPECT_EQ(record(), "0%n/params.bin 0%n/saver_output.c ");
  fs::create_directory(path("1%n"));
  EXPECT_EQ(record(),
            "0%n/params.bin 0%n/saver_output.c "
            "2%n/params.bin 2%n/saver_output.c ");
}

TEST_F(Environment, FilesAreNumberedTogether) {
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", path("r"));
  setEnvironment("KIV_SAVER_MODEL_FILE", "m%n.c");
  setEnvironment("KIV_SAVER_DATA_FILE", "d%n.bin");
  fs::create_directory(path("r"));
  writeFile(path("r/d1.bin"), "kept");
  EXPECT_EQ(record(), "r/d0.bin r/d1.bin r/m0.c ");
  EXPECT_EQ(record(), "r/d0.bin r/d1.bin r/d2.bin r/m0.c r/m2.c ");
  EXPECT_NE(readFile(path("r/m2.c")).find("\"d2.bin\""), std::string::npos);
  // Only one of the two has a number.
  setEnvironment("KIV_SAVER_MODEL_FILE", "m0.c");
  EXPECT_EQ(record(), "r/d0.bin r/d1.bin r/d2.bin r/d3.bin r/m0.c r/m2.c ");
  EXPECT_EQ(readFile(path("r/d1.bin")), "kept");
}

TEST_F(Environment, NamesHoldProcessAndTime) {
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", path("p%p"));
  setEnvironment("KIV_SAVER_MODEL_FILE", "%t%x.c");
  setEnvironment("KIV_SAVER_BACKEND_ID", "4");
  const std::string files = record();
  const std::regex expected(
      R"(p\d+/(\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d\.\d{3}%x\.c) p\d+/params.bin )");
  EXPECT_TRUE(std::regex_match(files, expected)) << files;
}

TEST_F(Environment, TheClientsOptionsWin) {
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", path("outside"));
  setEnvironment("KIV_SAVER_APPEND_TIMESTAMP", "1");
  const std::string own = path("own");
  EXPECT_EQ(record({directoryOption(own.c_str()), timeStampOption(false)}),
            "own/params.bin own/saver_output.c ");
  setEnvironment("KIV_SAVER_APPEND_TIMESTAMP", "");
  setEnvironment("KIV_SAVER_MODEL_FILE", "outside.c");
  setEnvironment("KIV_SAVER_BACKEND_ID", "4");
  EXPECT_EQ(record({filesOption("own.c", "own.bin"),
                    backendOption(KIV_BACKEND_ID_UNSET)}),
            "outside/own.bin outside/own.c own/params.bin own/saver_output.c ");
  EXPECT_EQ(readFile(path("outside/own.c")).find("GPU/"), std::string::npos);
}

// The other settings hold all the same.
TEST_F(Environment, WhatWillNotDoIsPassedOver) {
  setEnvironment("KIV_SAVER_OUTPUT_DIRECTORY", path("r"));
  setEnvironment("KIV_SAVER_BACKEND_ID", "GPU");
  for (const char* name : {"../a.c", "params.bin"}) {
    setEnvironment("KIV_SAVER_MODEL_FILE", name);
    EXPECT_EQ(record(), "r/params.bin r/saver_output.c ");
    fs::remove_all(path("r"));
  }
}

}  // namespace
}  // namespace kiv::test
