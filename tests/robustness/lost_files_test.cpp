#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "robustness/in_child.h"
#include "robustness/replayed_calls.h"

// Directories and files that are not there, not for us, or taken away.
namespace kiv::test {
namespace {

namespace fs = std::filesystem;

// Root may write everywhere; a child of root can become somebody who may not.
void dropPrivileges() {
  constexpr uid_t kNobody = 65534;
  if (geteuid() == 0 && (setegid(kNobody) != 0 || seteuid(kNobody) != 0))
    std::exit(99);
}

// Something in the way of the recording. `directory` is where it goes.
struct Obstacle {
  const char* what;
  std::function<void(const fs::path& directory)> place;
  std::function<void(const fs::path& directory)> remove;
  std::string message;
};

const Obstacle kObstacles[] = {
    {"no directory for the directory",
     [](const fs::path& path) { fs::remove(path.parent_path()); },
     [](const fs::path& path) { fs::create_directory(path.parent_path()); },
     "Could not create directory, pal::Directory::create failed"},
    {"a file in the directory's place",
     [](const fs::path& path) { writeFile(path, "file"); },
     [](const fs::path& path) { fs::remove(path); },
     "/recording already exists"},
    {"a directory that may not be written",
     [](const fs::path& path) {
       fs::create_directory(path);
       fs::permissions(path, fs::perms(0555));
     },
     [](const fs::path& path) { fs::permissions(path, fs::perms(0777)); },
     "Could not open file: saver_output.c"},
    {"a directory in the model file's place",
     [](const fs::path& path) {
       fs::create_directories(path / "saver_output.c");
     },
     [](const fs::path& path) { fs::remove(path / "saver_output.c"); },
     "Could not open file: saver_output.c"},
    {"a directory in the data file's place",
     [](const fs::path& path) { fs::create_directories(path / "params.bin"); },
     [](const fs::path& path) { fs::remove(path / "params.bin"); },
     "Could not open file: params.bin"},
    {"a pipe that nobody reads in the data file's place",
     [](const fs::path& path) {
       fs::create_directory(path);
       EXPECT_EQ(mkfifo((path / "params.bin").c_str(), 0600), 0);
     },
     [](const fs::path& path) { fs::remove(path / "params.bin"); },
     "Could not open file: params.bin"},
    {"a link from the model file to a full device",
     [](const fs::path& path) {
       fs::create_directory(path);
       fs::create_symlink("/dev/full", path / "saver_output.c");
     },
     [](const fs::path& path) { fs::remove(path / "saver_output.c"); },
     "Size of string written("},
};

// A start that fails is tried again by each call, and nothing is lost by it.
TEST(LostFiles, ObstaclesAreReportedAndTheNextCallTriesAgain) {
  for (const Obstacle& obstacle : kObstacles) {
    SCOPED_TRACE(obstacle.what);
    expectInChild([&] {
      dropPrivileges();
      SaverLibrary saver;
      obstacle.place(saver.directory());
      for (int i = 0; i < 2; ++i) {
        LogCapture log(saver.api());
        EXPECT_EQ(saver.api().propertyHasCapability(1), 4000U);
        const Lines messages = log.take();
        EXPECT_EQ(messages.size(), 1U);
        EXPECT_NE(messages.at(0).find(obstacle.message), std::string::npos)
            << messages[0];
      }
      obstacle.remove(saver.directory());
      EXPECT_EQ(saver.api().propertyHasCapability(2), 0U);
      saver.unload();
      EXPECT_EQ(replayedCalls(saver.directory()),
                Lines({"propertyHasCapability(2)"}));
    });
  }
}

// Nobody looks whether open files still have names: the calls go on, and a
// switch to other files makes the directory again.
TEST(LostFiles, DirectoryIsRemovedWhileRecording) {
  StartedSession c;
  fs::remove_all(c.saver.directory());
  char data[] = "abc";
  EXPECT_EQ(c.execute(c.graph, {tensorWithData(data, 3)}), 0U);
  EXPECT_EQ(c.saver.initialize({filesOption("saver_output.c", "params.bin")}),
            0U);
  EXPECT_EQ(c.api.propertyHasCapability(1), 0U);
  c.saver.unload();
  EXPECT_EQ(replayedCalls(c.saver.directory()),
            Lines({"propertyHasCapability(1)"}));
}

// The same for a model file with something else in its place, which a switch
// cannot have.
TEST(LostFiles, ModelFileIsReplacedWhileRecording) {
  StartedSession c;
  const fs::path model = c.saver.modelPath();
  const auto switchFiles = [&](bool header) {
    return c.saver.initialize(
        {filesOption("saver_output.c", "params.bin"), headerOption(header)});
  };
  for (const bool isPipe : {false, true}) {
    SCOPED_TRACE(isPipe);
    fs::remove(model);
    if (isPipe) {
      EXPECT_EQ(mkfifo(model.c_str(), 0600), 0);
    } else {
      fs::create_directory(model);
    }
    EXPECT_EQ(c.api.propertyHasCapability(1), 0U);
    LogCapture log(c.api);
    // It is read, to be continued.
    EXPECT_EQ(switchFiles(false), 4999U);
    EXPECT_EQ(log.take(), Lines({"1: Could not open file: saver_output.c",
                                 "1: Failure when opening model file"}));
    EXPECT_EQ(c.api.propertyHasCapability(1), 1999U);
    // What somebody reads is taken, but has no program to be continued.
    const int reader = isPipe ? open(model.c_str(), O_RDONLY | O_NONBLOCK) : -1;
    EXPECT_EQ(switchFiles(false), isPipe ? 0U : 4999U);
    fs::remove(model);
    EXPECT_EQ(switchFiles(true), 0U);
    close(reader);
  }
  EXPECT_EQ(c.api.propertyHasCapability(2), 0U);
  c.saver.unload();
  EXPECT_EQ(replayedCalls(c.saver.directory()),
            Lines({"propertyHasCapability(2)"}));
}

// Files that another process records into are not thrown away.
TEST(LostFiles, SecondProcessIsKeptFromTheFilesOfTheFirst) {
  SaverLibrary saver;
  int go[2];
  int done[2];
  ASSERT_EQ(pipe(go) + pipe(done), 0);
  const pid_t first = fork();
  if (first == 0) {
    char signal = 0;
    const Code code = saver.api().propertyHasCapability(1);
    // Looking at one's own recording does not give it away.
    saver.modelText();
    if (write(done[1], "r", 1) != 1 || read(go[0], &signal, 1) != 1) _exit(9);
    std::exit(static_cast<int>(code + saver.api().propertyHasCapability(2)));
  }
  char signal = 0;
  ASSERT_EQ(read(done[0], &signal, 1), 1);
  {
    LogCapture log(saver.api());
    EXPECT_EQ(saver.api().propertyHasCapability(3), 4000U);
    EXPECT_EQ(log.take(), Lines({"1: Could not open file: saver_output.c"}));
  }
  ASSERT_EQ(write(go[1], "g", 1), 1);
  int status = 0;
  ASSERT_EQ(waitpid(first, &status, 0), first);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)", "propertyHasCapability(2)"}));
  // A finished recording is not thrown away by a session that came too early.
  EXPECT_EQ(saver.api().propertyHasCapability(4), 4000U);
  EXPECT_EQ(saver.initialize({filesOption("other.c", "other.bin")}), 0U);
  EXPECT_EQ(saver.api().propertyHasCapability(5), 0U);
  saver.unload();
  EXPECT_EQ(countOf(readFile(saver.directory() / "other.c"), "Capability("),
            1U);
  EXPECT_EQ(replayedCalls(saver.directory()),
            Lines({"propertyHasCapability(1)", "propertyHasCapability(2)"}));
}

}  // namespace
}  // namespace kiv::test
