#pragma once

// The backend as a client has it, with a network of one node on it: z = x + w,
// where w is static and counts up from 1.
//
//   OnnxRuntimeTest::SetUp: a log and a backend for operator set 13
//   SmallNetwork network(api(), context, "add", 4);
//   network.finalize();
//   EXPECT_EQ(network.execute(x, z), KIV_SUCCESS);

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "support/dynamic_library.h"
#include "support/log_capture.h"

namespace kiv::test {

using Api = KivInterface_Implementation_t;
using Floats = std::vector<float>;

// A record of one dimension with the client's data, if there is any.
Kiv_Tensor_t vectorTensor(const char* name, Kiv_TensorType_t type,
                          std::uint32_t& size, Floats* data = nullptr);

class SmallNetwork {
 public:
  // Creates the graph, its tensors and its node; `type` is the node's operator.
  SmallNetwork(const Api& api, Kiv_ContextHandle_t context, const char* name,
               std::uint32_t size, const char* type = "Add");

  Kiv_ErrorHandle_t finalize(Kiv_ProfileHandle_t profile = nullptr) const {
    return api_.graphFinalize(graph_, profile, nullptr);
  }
  Kiv_ErrorHandle_t execute(Floats& x, Floats& z,
                            Kiv_ProfileHandle_t profile = nullptr) const {
    return execute(graph_, x, z, profile);
  }
  // The same with another graph of the same tensors.
  Kiv_ErrorHandle_t execute(Kiv_GraphHandle_t graph, Floats& x, Floats& z,
                            Kiv_ProfileHandle_t profile = nullptr) const;

  Kiv_GraphHandle_t graph() const { return graph_; }
  // Records of x and z with the sizes and data of the arguments.
  Kiv_Tensor_t input(std::uint32_t& size, Floats& x) const;
  Kiv_Tensor_t output(std::uint32_t& size, Floats& z) const;
  // What the network computes.
  static Floats sum(const Floats& x);

 private:
  const Api& api_;
  Kiv_GraphHandle_t graph_ = nullptr;
  std::uint32_t x_ = 0;
  std::uint32_t z_ = 0;
};

// Skips its tests where there is no ONNX Runtime.
class OnnxRuntimeTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  const Api& api() const { return *api_; }
  Kiv_BackendHandle_t backend() const { return backend_; }
  // Freed after the test unless the test does so.
  Kiv_ContextHandle_t createContext();
  // The messages since the last call, each on a line.
  std::string messages();

 private:
  std::unique_ptr<DynamicLibrary> library_;
  const Api* api_ = nullptr;
  std::unique_ptr<LogCapture> log_;
  Kiv_BackendHandle_t backend_ = nullptr;
  std::vector<Kiv_ContextHandle_t> contexts_;
};

}  // namespace kiv::test
