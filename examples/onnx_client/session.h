#pragma once

// One session with a Kiv library, from backendCreate to backendFree.
//
//   Session session(library.api(), options);
//   session.open(network);      // build the graph, or load it from a binary
//   session.execute(execution, results);
//   session.close();
//
// A call that fails is a ClientError; what is open then is freed unchecked.

#include <string>
#include <vector>

#include "execution.h"
#include "graph_builder.h"
#include "library_loader.h"
#include "network.h"
#include "options.h"
#include "results.h"

namespace onnx_client {

class Session {
 public:
  Session(const Api& api, const Options& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void open(Network& network);
  // As often as the options say; lists the profile's events afterwards.
  void execute(Execution& execution, Results& results);
  void close();

  const Totals& totals() const { return totals_; }

 private:
  void openDevice();
  void buildGraph(Network& network);
  void loadGraph(const Network& network);
  void saveBinary(std::vector<std::string>& notes);
  // The size is 0 if the library has no binary to report.
  Kiv_ContextBinarySize_t binarySize();
  bool isOpen() const;

  const Api& api_;
  const Options& options_;
  Kiv_BackendHandle_t backend_ = nullptr;
  Kiv_DeviceHandle_t device_ = nullptr;
  Kiv_ProfileHandle_t profile_ = nullptr;
  Kiv_ContextHandle_t context_ = nullptr;
  Kiv_GraphHandle_t graph_ = nullptr;
  Totals totals_;
};

}  // namespace onnx_client
