#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "support/configs.h"
#include "support/log_capture.h"
#include "support/records.h"
#include "support/saver_library.h"

namespace kiv::test {

using Api = KivInterface_Implementation_t;
using Code = Kiv_ErrorHandle_t;

// A handle that no object has.
inline void* const kUnknown = reinterpret_cast<void*>(0x1234);

// A session with one object of each kind: backend_0, device_0, profile_0,
// context_0, and a graph g in that.
class StartedSession {
 public:
  StartedSession();

  SaverLibrary saver;
  const Api& api = saver.api();
  Kiv_BackendHandle_t backend = nullptr;
  Kiv_DeviceHandle_t device = nullptr;
  Kiv_ProfileHandle_t profile = nullptr;
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;

  // What the recording has more since the last call of the function.
  std::string newText() { return grown(saver.modelText(), textSeen_); }
  std::string newData() { return grown(saver.data(), dataSeen_); }

  Code createGraph(const char* name, Kiv_GraphHandle_t* out) const {
    return api.graphCreate(context, name, nullptr, out);
  }
  Code execute(Kiv_GraphHandle_t executed, std::vector<Kiv_Tensor_t> inputs,
               Kiv_ProfileHandle_t profiled = nullptr) const;

 private:
  static std::string grown(const std::string& now, std::size_t& seen);

  std::size_t textSeen_ = 0;
  std::size_t dataSeen_ = 0;
};

// One call in a session of its own, and what it comes to.
struct Row {
  const char* what;
  std::function<Code(StartedSession&)> call;
  Code code;
  std::vector<std::string> messages;
  std::string text;
  std::string data;
};
void check(const std::vector<Row>& rows);

// A row that fails with one error message and writes nothing.
Row failing(const char* what, std::function<Code(StartedSession&)> call,
            Code code, const std::string& message);

// The text of a recorded call: its lines, indented, and a blank line.
std::string recorded(std::initializer_list<std::string> lines);
// "VALIDATE(error, interface.<call>);"
std::string validate(std::string_view call);

}  // namespace kiv::test
