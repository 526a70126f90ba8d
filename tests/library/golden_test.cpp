#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "golden/golden_session.h"
#include "library/started_session.h"

namespace kiv::test {
namespace {

namespace fs = std::filesystem;

const fs::path kExpected = KIV_GOLDEN_DIR;

// The notice of the expected recording names the version that wrote it; the
// written one names this version.
std::string asThisVersionWrites(std::string recording) {
  const std::string lead = "written by the Saver ";
  const std::size_t at = recording.find(lead);
  if (at == std::string::npos) return recording;
  const std::size_t version = at + lead.size();
  const std::size_t end = recording.find('\n', version);
  return recording.replace(version, end - version, KIV_VERSION ".");
}

// With KIV_ACCEPT_GOLDEN=1 in the environment what was written becomes what is
// expected.
void compare(const fs::path& written, const fs::path& expected) {
  const char* accept = std::getenv("KIV_ACCEPT_GOLDEN");
  if (accept != nullptr && std::string(accept) == "1") {
    fs::copy_file(written, expected, fs::copy_options::overwrite_existing);
    return;
  }
  if (readFile(written) == asThisVersionWrites(readFile(expected))) return;
  ADD_FAILURE() << written.filename() << " is not as expected";
  const std::string command =
      "diff -au '" + expected.string() + "' '" + written.string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(Golden, SessionWithEveryCallAndOption) {
  SaverLibrary saver;
  ASSERT_EQ(saver.initialize({backendOption(KIV_BACKEND_ID_GPU)}), 0U);
  auto codes = runGoldenSession(saver.api());
  // Sizes and contents of binaries are not known.
  EXPECT_EQ(std::count(codes.begin(), codes.end(), 4950U), 3);
  std::erase(codes, 4950U);
  EXPECT_EQ(codes, std::vector<Code>(codes.size()));
  EXPECT_TRUE(saver.unload());
  compare(saver.modelPath(), kExpected / "saver_output.c");
  compare(saver.dataPath(), kExpected / "params.bin");
}

}  // namespace
}  // namespace kiv::test
