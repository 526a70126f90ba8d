// Drives a Kiv library with an ONNX network:
//
//   onnx_client network.onnx --backend libKivSaver.so --executions 3
//
// Prints one line about what it did and one for each output of the last
// execution, or one about why it could not.

#include <algorithm>
#include <cctype>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "execution.h"
#include "library_loader.h"
#include "network_reader.h"
#include "options.h"
#include "recording_options.h"
#include "session.h"

namespace onnx_client {
namespace {

// The line's fields are parted by blanks, so names have none.
std::string withoutBlanks(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](unsigned char c) { return std::isspace(c) || std::iscntrl(c); }, '_');
  return name;
}

void printSummary(const Network& network, const Totals& totals,
                  std::uint32_t executions) {
  std::cout << "network=" << withoutBlanks(network.graph.name)
            << " nodes=" << totals.nodes << " tensors=" << totals.tensors
            << " bytes=" << totals.bytes << " executions=" << executions
            << '\n';
}

// Notes are printed at once: a library may not survive sizes that nobody gave.
void printNotes(std::vector<std::string>& notes) {
  for (const std::string& note : notes)
    std::cerr << "onnx_client: " << note << '\n';
  notes.clear();
}

// The library is unloaded last, which ends what it records. False where outputs
// are not as expected.
bool run(const Options& options) {
  Network network = readNetwork(options.network, options.shapes);
  Execution execution(network, options.inputs, options.seed);
  const Library library(options.backend);
  applyRecordingOptions(library, options.recording, network.notes);
  printNotes(network.notes);
  Session session(library.api(), options);
  session.open(network);
  printNotes(network.notes);
  Results results(options.results, network.graph.name);
  session.execute(execution, results);
  session.close();
  printSummary(network, session.totals(), options.executions);
  const bool isRecorder = library.saverInitialize() != nullptr;
  if (!isRecorder && options.executions > 0) Results::show(execution.outputs());
  return results.areWithin();
}

// Names from a damaged file must not spoil the line.
int fail(std::string why) {
  std::replace_if(
      why.begin(), why.end(), [](unsigned char c) { return std::iscntrl(c); },
      '?');
  std::cerr << "onnx_client: " << why << '\n';
  return 1;
}

}  // namespace

}  // namespace onnx_client

int main(int argc, char** argv) {
  try {
    const auto options = onnx_client::parseOptions(argc, argv);
    if (options && !onnx_client::run(*options)) return 1;
  } catch (const std::bad_alloc&) {
    return onnx_client::fail("out of memory");
  } catch (const std::exception& error) {
    return onnx_client::fail(error.what());
  }
  return 0;
}
