#include <cstdio>
#include <exception>

#include "kiv_recording/command.h"
#include "kiv_recording/system.h"

int main(int argc, char** argv) {
  try {
    kiv::tool::useBinaryOutput();
    return kiv::tool::runCommand(kiv::tool::utf8Arguments(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kiv-recording: %s\n", error.what());
    return kiv::tool::kDiffers;
  }
}
