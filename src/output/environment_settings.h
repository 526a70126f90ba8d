#pragma once

#include "diagnostics/messages.h"
#include "output/output_settings.h"

// Settings from outside, for a client that cannot be changed:
//
//   KIV_SAVER_OUTPUT_DIRECTORY=/tmp/recordings/%p-%n   the directory
//   KIV_SAVER_MODEL_FILE, KIV_SAVER_DATA_FILE          the files' names in it
//   KIV_SAVER_BACKEND_ID=4                             whose headers are taken
//   KIV_SAVER_APPEND_TIMESTAMP=1                       names with the time
//
// In the first three, %p is the process's id, %t the time to milliseconds, %n
// the least number for which nothing exists yet, %% a percent sign.
namespace kiv::output {

// The settings that a recording starts with: `settings`, with the environment's
// in place of those that the client has not given. Takes the place of what %n
// names, so that no other process gets the same. A value that will not do gets
// a message and is passed over. One thread at a time.
OutputSettings withEnvironment(OutputSettings settings,
                               const OutputChanges& given, Messages& messages);

}  // namespace kiv::output
