// Prints the calls of a recording, and with a backend makes them, too.
#include <recording/backend.h>
#include <recording/recording.h>
#include <recording/replayer.h>

#include <iostream>

namespace reader = kiv::recording;

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  const reader::OpenResult opened = reader::Recording::open(argv[1]);
  if (!opened.recording) return 2;
  const reader::Recording& recording = *opened.recording;
  for (std::size_t i = 0; i < recording.calls().size(); ++i)
    std::cout << recording.functionName(i) << std::endl;

  std::string why;
  const auto backend = reader::Backend::load(argv[2], why);
  if (!backend) return 3;
  return reader::Replayer(recording, {}, *backend).run({}).exitStatus();
}
