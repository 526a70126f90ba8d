#pragma once

#include <gtest/gtest.h>

#include "logged_messages.h"
#include "output/output_files.h"
#include "support/files.h"

namespace kiv::output::test {

inline constexpr WriteFailures kFailures = {Status::kBackendError,
                                            Status::kContextBinary};

// Files that are to be opened in a directory that is not there yet.
class OutputFilesTest : public testing::Test {
 protected:
  OutputFilesTest() {
    OutputChanges changes;
    changes.directory = out_.string();
    EXPECT_EQ(files_.configure(changes, false), Status::kOk);
  }

  kiv::test::TempDirectory temp_;
  const std::filesystem::path out_ = temp_.path() / "out";
  kiv::test::LoggedMessages log_;
  OutputFiles files_{[](std::string_view) {}};
};

}  // namespace kiv::output::test
