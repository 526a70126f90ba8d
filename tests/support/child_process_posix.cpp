#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "support/child_process.h"

namespace kiv::test {

struct ChildProcess::Process {
  pid_t id = -1;
  int output = -1;
};

ChildProcess::ChildProcess(const std::vector<std::string>& command)
    : process_(std::make_unique<Process>()) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("There is no pipe");
  std::vector<char*> arguments;
  for (const std::string& word : command)
    arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  process_->id = fork();
  if (process_->id == 0) {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  close(ends[1]);
  process_->output = ends[0];
  if (process_->id < 0) throw std::runtime_error("There is no process");
}

ChildProcess::~ChildProcess() {
  kill();
  close(process_->output);
}

bool ChildProcess::read(char& byte) {
  return ::read(process_->output, &byte, 1) == 1;
}

void ChildProcess::kill() {
  if (process_->id < 0) return;
  ::kill(process_->id, SIGKILL);
  waitpid(process_->id, nullptr, 0);
  process_->id = -1;
}

}  // namespace kiv::test
