#pragma once

// A refused call, thrown below the entries and turned into the call's status
// and a message in the log by them:
//
//   throw Failure(KIV_GRAPH_ERROR_INVALID_TENSOR, "tensor x has no data");
//
// libonnx and protobuf throw as well, so each entry catches in any case.

#include <optional>
#include <stdexcept>
#include <string>

#include "KivCommon.h"
#include "onnx_model/tensors.h"

namespace kiv::ort {

class Failure : public std::runtime_error {
 public:
  Failure(Kiv_Status_t code, const std::string& text)
      : std::runtime_error(text), code_(code) {}

  Kiv_Status_t code() const { return code_; }

 private:
  Kiv_Status_t code_;
};

inline void throwIf(const std::optional<onnx_model::Fault>& fault) {
  if (fault) throw Failure(fault->status, fault->message);
}

}  // namespace kiv::ort
