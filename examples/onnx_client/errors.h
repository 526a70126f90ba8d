#pragma once

// Errors that end the program with one line and status 1.

#include <stdexcept>
#include <string>

namespace onnx_client {

// The text says what failed and names the file, if there is one.
class ClientError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A sound network that the Kiv API cannot express.
class NotAccepted : public ClientError {
 public:
  explicit NotAccepted(const std::string& why)
      : ClientError("not accepted: " + why) {}
};

}  // namespace onnx_client
