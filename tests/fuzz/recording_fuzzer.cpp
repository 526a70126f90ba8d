// Lets a fuzzer write a recording: its text, and behind it the data file, whose
// size the last byte says. Whatever it is, the reader reads it, builds the
// arguments of its calls up to the first fault, and touches no memory but its
// own.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "recording/program.h"
#include "recording/recording.h"

namespace {

using namespace kiv::recording;

void demand(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

std::uint64_t sumOf(const std::byte* bytes, std::uint64_t size) {
  std::uint64_t sum = 0;
  for (std::uint64_t i = 0; i < size; ++i)
    sum += static_cast<std::uint64_t>(bytes[i]);
  return sum;
}

std::uint64_t touch(const Kiv_Tensor_t& tensor) {
  const Kiv_TensorV1_t& v1 = tensor.v1;
  std::uint64_t sum = v1.name == nullptr ? 0 : std::string(v1.name).size();
  for (std::uint32_t i = 0; v1.dimensions != nullptr && i < v1.rank; ++i)
    sum += v1.dimensions[i];
  const auto* const data = static_cast<const std::byte*>(v1.clientBuf.data);
  if (data != nullptr) sum += sumOf(data, v1.clientBuf.dataSize);
  return sum;
}

std::uint64_t touch(const Kiv_OpConfigV1_t& op) {
  std::uint64_t sum = 0;
  for (std::uint32_t i = 0; op.params != nullptr && i < op.numParams; ++i)
    if (op.params[i].paramType == KIV_PARAM_TYPE_TENSOR)
      sum += touch(op.params[i].tensorParam);
  for (std::uint32_t i = 0; op.inputTensors != nullptr && i < op.numInputs; ++i)
    sum += touch(op.inputTensors[i]);
  return sum;
}

// As a backend would read them.
std::uint64_t touch(const Arguments& arguments) {
  using format = kiv::format::ArgumentKind;
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < arguments.values.size(); ++i) {
    const Value& value = arguments.values[i];
    if (value.bits == 0) continue;
    switch (value.argument->kind) {
      case format::kTensor:
        sum += touch(*value.pointer<Kiv_Tensor_t>());
        break;
      case format::kTensors:
        for (std::uint64_t k = 0; k < arguments.values[i + 1].bits; ++k)
          sum += touch(value.pointer<Kiv_Tensor_t>()[k]);
        break;
      case format::kOpConfig:
        sum += touch(value.pointer<Kiv_OpConfig_t>()->v1);
        break;
      case format::kBinary:
        sum += sumOf(value.pointer<std::byte>(), arguments.values[i + 1].bits);
        break;
      default:
        break;
    }
  }
  return sum;
}

void check(const Recording& recording) {
  std::uint64_t end = 0;
  std::uint64_t data = 0;
  for (std::size_t i = 0; i < recording.calls().size(); ++i) {
    const Call& call = recording.calls()[i];
    demand(call.span.begin >= end && call.span.end > call.span.begin,
           "calls follow each other");
    demand(call.dataOffset == data, "runs follow each other");
    end = call.span.end;
    data += call.dataSize;
    const CallDetails details = recording.details(i);
    demand(details.statements.size() == call.statements,
           "the second reading is that of the first pass");
  }
  for (const Problem& problem : recording.problems())
    demand(!toString(problem).empty(), "a problem has a text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes,
                                      std::size_t size) {
  const std::size_t dataSize =
      size == 0 ? 0 : std::min<std::size_t>(bytes[size - 1], size - 1);
  const std::size_t textSize = size == 0 ? 0 : size - 1 - dataSize;
  const auto recording = Recording::parse(
      std::string(reinterpret_cast<const char*>(bytes), textSize));
  check(*recording);
  std::vector<std::byte> data(dataSize);
  for (std::size_t i = 0; i < dataSize; ++i)
    data[i] = static_cast<std::byte>(bytes[textSize + i]);
  Program program(*recording, data);
  Arguments arguments;
  volatile std::uint64_t sum = 0;
  for (std::size_t i = 0; i < recording->calls().size(); ++i) {
    if (program.begin(i, arguments)) break;
    sum = sum + touch(arguments);
    program.end(i);
    (void)program.output();
  }
  return 0;
}
