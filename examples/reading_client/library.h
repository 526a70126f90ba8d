#pragma once

// A Kiv library, opened by its path, with a backend and a context of it:
//
//   const Library library("libBackend.so");
//   const Session session(library.api());
//   check("graphCreate", session.api().graphCreate(session.context(), ...));
//
// One thread at a time.

#include <stdexcept>
#include <string>

#include "KivInterface.h"

namespace reading_client {

using Api = KIV_INTERFACE_VER_TYPE;

// Ends the program with one line and status 1.
class Failure : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Failure unless the status is success.
void check(const char* call, Kiv_ErrorHandle_t status);

class Library {
 public:
  explicit Library(const std::string& path);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const Api& api() const { return *api_; }

 private:
  void* handle_;
  const Api* api_ = nullptr;
};

// Networks are of the operators of ONNX, version 13.
class Session {
 public:
  explicit Session(const Api& api);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Api& api() const { return api_; }
  Kiv_ContextHandle_t context() const { return context_; }

 private:
  const Api& api_;
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
};

}  // namespace reading_client
