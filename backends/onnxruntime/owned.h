#pragma once

// An object of ONNX Runtime, released with this:
//
//   Owned<OrtTensorInfo> info(functions.releaseTensorInfo);
//   functions.getTensorInfo(value, info.receive());

namespace kiv::ort {

template <typename Object>
class Owned {
 public:
  explicit Owned(void (*release)(Object*)) : release_(release) {}
  ~Owned() {
    if (object_ != nullptr) release_(object_);
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  Object* get() const { return object_; }
  Object** receive() { return &object_; }

 private:
  Object* object_ = nullptr;
  void (*release_)(Object*);
};

}  // namespace kiv::ort
