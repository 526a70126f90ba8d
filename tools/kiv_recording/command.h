#pragma once

#include <string>
#include <vector>

namespace kiv::tool {

// The command's exit status.
enum ExitStatus {
  kDone = 0,        // done, or equal
  kDiffers = 1,     // differs, or failed
  kUnreadable = 2,  // the recording cannot be read, or wrong usage
};

// The command kiv-recording, apart from its program so that this is compiled
// without the libraries that the verbs use. `arguments` are in UTF-8, without
// the program's name. Returns the exit status. Throws a std::exception for a
// failure that no verb handles. From the main thread.
int runCommand(const std::vector<std::string>& arguments);

}  // namespace kiv::tool
