#ifndef ONNX_CLIENT_ERRORS_H
#define ONNX_CLIENT_ERRORS_H

// What ends the program with one line and status 1.

#include <stdexcept>
#include <string>

namespace onnx_client {

// The text says what failed and, where there is one, the file's name.
class ClientError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A sound network that the Kiv API has no words for.
class NotAccepted : public ClientError {
 public:
  explicit NotAccepted(const std::string& why)
      : ClientError("not accepted: " + why) {}
};

}  // namespace onnx_client

#endif
