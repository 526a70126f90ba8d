#pragma once

#include <string>
#include <vector>

#include "library_loader.h"
#include "options.h"

namespace onnx_client {

// Hands the options, if there are any, to KivSaver_initialize. A library
// without that function gets none, and a note says so.
void applyRecordingOptions(const Library& library,
                           const RecordingOptions& options,
                           std::vector<std::string>& notes);

}  // namespace onnx_client
