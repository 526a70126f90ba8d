#include "ort_functions.h"

namespace kiv::ort {
namespace {

class Table {
 public:
  explicit Table(const void* table)
      : slots_(static_cast<void* const*>(table)) {}

  template <typename Function>
  void read(Function*& function, std::size_t slot) const {
    function = reinterpret_cast<Function*>(slots_[slot]);
  }

 private:
  void* const* slots_;
};

}  // namespace

OrtFunctions readTable(const void* table) {
  const Table slots(table);
  OrtFunctions functions{};
  slots.read(functions.getErrorMessage, 2);
  slots.read(functions.createEnvWithLogger, 4);
  slots.read(functions.createSession, 7);
  slots.read(functions.createSessionFromArray, 8);
  slots.read(functions.run, 9);
  slots.read(functions.createSessionOptions, 10);
  slots.read(functions.enableProfiling, 14);
  slots.read(functions.createTensorWithData, 49);
  slots.read(functions.isTensor, 50);
  slots.read(functions.getTensorData, 51);
  slots.read(functions.getElementType, 60);
  slots.read(functions.getRank, 61);
  slots.read(functions.getDimensions, 62);
  slots.read(functions.getElementCount, 64);
  slots.read(functions.getTensorInfo, 65);
  slots.read(functions.createCpuMemoryInfo, 69);
  slots.read(functions.allocatorFree, 76);
  slots.read(functions.getDefaultAllocator, 78);
  slots.read(functions.releaseEnv, 92);
  slots.read(functions.releaseStatus, 93);
  slots.read(functions.releaseMemoryInfo, 94);
  slots.read(functions.releaseSession, 95);
  slots.read(functions.releaseValue, 96);
  slots.read(functions.releaseTensorInfo, 99);
  slots.read(functions.releaseSessionOptions, 100);
  slots.read(functions.endProfiling, 110);
  return functions;
}

}  // namespace kiv::ort
