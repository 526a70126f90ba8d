#include "library/started_session.h"

#include <gtest/gtest.h>

#include <utility>

namespace kiv::test {

StartedSession::StartedSession() {
  api.backendCreate(nullptr, nullptr, &backend);
  api.deviceCreate(nullptr, nullptr, &device);
  api.profileCreate(backend, 1, &profile);
  api.contextCreate(backend, nullptr, nullptr, &context);
  createGraph("g", &graph);
  newText();
}

Code StartedSession::execute(Kiv_GraphHandle_t executed,
                             std::vector<Kiv_Tensor_t> inputs,
                             Kiv_ProfileHandle_t profiled) const {
  return api.graphExecute(executed, inputs.data(),
                          static_cast<uint32_t>(inputs.size()), nullptr, 0,
                          profiled, nullptr);
}

std::string StartedSession::grown(const std::string& now, std::size_t& seen) {
  const std::size_t before = std::exchange(seen, now.size());
  return now.size() < before ? "(the file has shrunk)" : now.substr(before);
}

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    StartedSession session;
    LogCapture log(session.api);
    EXPECT_EQ(row.call(session), row.code);
    EXPECT_EQ(log.take(), row.messages);
    EXPECT_EQ(session.newText(), row.text);
    EXPECT_EQ(session.newData(), row.data);
  }
}

Row failing(const char* what, std::function<Code(StartedSession&)> call,
            Code code, const std::string& message) {
  return {what, std::move(call), code, {"1: " + message}, "", ""};
}

std::string recorded(std::initializer_list<std::string> lines) {
  std::string text;
  for (const std::string& line : lines)
    text += line.empty() ? "\n" : "   " + line + "\n";
  return text + "\n";
}

std::string validate(std::string_view call) {
  return "VALIDATE(error, interface." + std::string(call) + ");";
}

}  // namespace kiv::test
