#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kiv::test {

// Another program, that runs beside the test until it is killed.
class ChildProcess {
 public:
  // The program's path and its arguments. Throws when it cannot be started.
  explicit ChildProcess(const std::vector<std::string>& command);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Waits for the next byte that it prints; false when there will be none.
  bool read(char& byte);

  // Ends it at once, whatever it is doing, and waits until it is gone.
  void kill();

 private:
  struct Process;
  std::unique_ptr<Process> process_;
};

}  // namespace kiv::test
