#pragma once

// The inputs and outputs of a network's executions:
//
//   Execution execution(network, {{"x=line.png"}, {}}, seed);
//   execution.prepare();
//   api.graphExecute(graph, execution.inputs().data(), ...);

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "input_files.h"
#include "network.h"

namespace onnx_client {

// FILE or NAME=FILE, and how pictures among them become numbers.
struct InputOptions {
  std::vector<std::string> files;
  ImageOptions images;
};

class Execution {
 public:
  // Reads the files; inputs without one get random values, new ones for each
  // execution. A ClientError for a file that does not fit its input,
  // NotAccepted for a network that needs more than 2 GiB.
  Execution(Network& network, const InputOptions& options, std::uint64_t seed);

  // Random values for the inputs that have them, zeroes for the outputs.
  void prepare();

  // Records with data, valid until the execution ends.
  std::vector<Kiv_Tensor_t> inputs() { return records(inputs_); }
  std::vector<Kiv_Tensor_t> outputs() { return records(outputs_); }

  // Bytes of all inputs and outputs.
  std::uint64_t bytes() const;

 private:
  struct Buffer {
    Tensor* tensor;
    bool random;
    std::vector<std::uint8_t> data;
  };

  void checkSize(const Network& network) const;
  static void readInput(const std::string& path, const ImageOptions& options,
                        Buffer& buffer);
  static std::vector<Kiv_Tensor_t> records(std::vector<Buffer>& buffers);

  std::mt19937_64 generator_;
  std::vector<Buffer> inputs_;
  std::vector<Buffer> outputs_;
};

}  // namespace onnx_client
