#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "KivInterface.h"
#include "support/dynamic_library.h"
#include "support/records.h"

namespace kiv::benchmarks {

// The library as a client has it, loaded from a path and recording into a new
// directory, with a backend, a context and a graph:
//
//   Recorder recorder("build/release/src/libKivSaver.so", "files/ours");
//   recorder.api().propertyHasCapability(1);
//
// Its end unloads the library and removes the directory. One at a time may use
// a library; a second one needs a copy of the library's file. One thread owns
// it; api() is for all.
class Recorder {
 public:
  Recorder(const std::string& library, std::filesystem::path directory);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  const KivInterface_Implementation_t& api() const;
  const test::Objects& objects() const { return objects_; }
  // A further graph of the same context.
  Kiv_GraphHandle_t newGraph(const char* name) const;

  std::filesystem::path modelPath() const;
  std::filesystem::path dataPath() const;

 private:
  std::filesystem::path directory_;
  test::DynamicLibrary library_;
  test::Objects objects_;
};

// One kind of call with everything that it needs. Two threads may make calls of
// two objects.
//
//   auto call = makeCall("node", recorder.api(), recorder.objects());
//   call->prepare(1000);
//   for (std::size_t i = 0; i < 1000; ++i) call->make(i);
class Call {
 public:
  virtual ~Call() = default;

  // Makes the arguments of the next calls.
  virtual void prepare(std::size_t count) = 0;
  // Makes a call; throws when the library refuses it.
  virtual void make(std::size_t index) = 0;
  // The bytes that each call puts into the data file.
  virtual std::string_view data() const { return {}; }
};

// The kinds, with names and shapes as a converter of networks gives them:
//
//   node        graphAddNode, 2 inputs, 1 output, 3 scalar parameters, rank 4
//   tensor      tensorCreateGraphTensor, rank 4, no data
//   operations  backendGetSupportedOperations
//   property    propertyHasCapability
//
// Throws for another name.
std::unique_ptr<Call> makeCall(std::string_view name,
                               const KivInterface_Implementation_t& api,
                               const test::Objects& objects);

// tensorCreateGraphTensor with that many bytes of data.
std::unique_ptr<Call> makeDataCall(std::size_t dataSize,
                                   const KivInterface_Implementation_t& api,
                                   const test::Objects& objects);

}  // namespace kiv::benchmarks
