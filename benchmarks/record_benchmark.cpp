// Pairs of benchmarks: calls that are recorded, and their floor, a program that
// does nothing but write the same bytes to two files. Both begin with new files
// for each run and make the same number of writes in each iteration.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <string>

#include "support/records.h"
#include "support/saver_library.h"

namespace {

using Api = KivInterface_Implementation_t;
using kiv::test::SaverLibrary;

// Everything that calls need, made before the time is taken.
class Calls {
 public:
  Calls(const Api& api, std::size_t dataSize)
      : api_(api),
        data_(dataSize, 'd'),
        objects_(kiv::test::createObjects(api)) {
    input_.v1.name = "input";
    input_.v1.clientBuf = {data_.data(), static_cast<uint32_t>(data_.size())};
    for (Kiv_Tensor_t& tensor : tensors_) {
      tensor = kiv::test::emptyTensor();
      tensor.v1.name = "activation";
      tensor.v1.rank = static_cast<uint32_t>(dimensions_.size());
      tensor.v1.dimensions = dimensions_.data();
      api.tensorCreateGraphTensor(objects_.graph, &tensor);
    }
    node_.v1.numInputs = 2;
    node_.v1.inputTensors = tensors_.data();
    node_.v1.numOutputs = 1;
    node_.v1.outputTensors = &tensors_[2];
  }

  Kiv_ErrorHandle_t execute() {
    return api_.graphExecute(objects_.graph, &input_, 1, nullptr, 0, nullptr,
                             nullptr);
  }
  Kiv_ErrorHandle_t addNode() {
    return api_.graphAddNode(objects_.graph, node_);
  }

 private:
  const Api& api_;
  std::string data_;
  kiv::test::Objects objects_;
  std::array<uint32_t, 4> dimensions_ = {1, 224, 224, 3};
  std::array<Kiv_Tensor_t, 3> tensors_{};
  Kiv_Tensor_t input_ = kiv::test::emptyTensor();
  Kiv_OpConfig_t node_ = kiv::test::emptyOpConfig("Conv2d");
};

using Call = Kiv_ErrorHandle_t (Calls::*)();

// The bytes of one call in each file.
struct Sizes {
  std::size_t text;
  std::size_t data;
};

Sizes sizesOf(Call call, std::size_t dataSize) {
  const SaverLibrary saver;
  Calls calls(saver.api(), dataSize);
  const Sizes before = {saver.modelText().size(), saver.data().size()};
  (calls.*call)();
  return {saver.modelText().size() - before.text,
          saver.data().size() - before.data};
}

void record(benchmark::State& state, Call call) {
  const SaverLibrary saver;
  Calls calls(saver.api(), static_cast<std::size_t>(state.range(0)));
  for ([[maybe_unused]] auto _ : state)
    if ((calls.*call)() != KIV_SUCCESS) state.SkipWithError("not recorded");
}

void writeOnly(benchmark::State& state, Call call) {
  const Sizes sizes = sizesOf(call, static_cast<std::size_t>(state.range(0)));
  const std::string text(sizes.text, 't');
  const std::string data(sizes.data, 'd');
  const kiv::test::TempDirectory directory;
  std::array<std::FILE*, 2> files = {
      std::fopen((directory.path() / "data").string().c_str(), "wb"),
      std::fopen((directory.path() / "text").string().c_str(), "wb")};
  for (std::FILE* file : files) std::setvbuf(file, nullptr, _IONBF, 0);
  for ([[maybe_unused]] auto _ : state) {
    if (!data.empty()) std::fwrite(data.data(), 1, data.size(), files[0]);
    std::fwrite(text.data(), 1, text.size(), files[1]);
  }
  for (std::FILE* file : files) std::fclose(file);
  state.counters["text"] = static_cast<double>(sizes.text);
  state.counters["data"] = static_cast<double>(sizes.data);
}

// The same number for both, so that the files are of the same length.
void addPair(const std::string& name, Call call, std::int64_t dataSize,
             std::int64_t iterations) {
  for (const auto& [suffix, body] :
       {std::pair("/recorded", &record), std::pair("/floor", &writeOnly)}) {
    benchmark::RegisterBenchmark((name + suffix).c_str(), body, call)
        ->Arg(dataSize)
        ->Iterations(iterations)
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  addPair("node", &Calls::addNode, 0, 20'000);
  addPair("execution", &Calls::execute, 0, 50'000);
  addPair("execution", &Calls::execute, 4 << 10, 50'000);
  addPair("execution", &Calls::execute, 64 << 10, 5'000);
  addPair("execution", &Calls::execute, 1 << 20, 400);
  addPair("execution", &Calls::execute, 16 << 20, 25);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
