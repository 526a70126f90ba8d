#include <windows.h>

#include <stdexcept>

#include "support/child_process.h"

namespace kiv::test {

struct ChildProcess::Process {
  HANDLE handle = nullptr;
  HANDLE output = nullptr;
};

ChildProcess::ChildProcess(const std::vector<std::string>& command)
    : process_(std::make_unique<Process>()) {
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  HANDLE written = nullptr;
  if (!CreatePipe(&process_->output, &written, &inherited, 0))
    throw std::runtime_error("There is no pipe");
  SetHandleInformation(process_->output, HANDLE_FLAG_INHERIT, 0);
  std::string line;
  for (const std::string& word : command) line += '"' + word + "\" ";
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = written;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION child{};
  const BOOL started =
      CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                     nullptr, &startup, &child);
  CloseHandle(written);
  if (!started) throw std::runtime_error("There is no process");
  CloseHandle(child.hThread);
  process_->handle = child.hProcess;
}

ChildProcess::~ChildProcess() {
  kill();
  CloseHandle(process_->output);
}

bool ChildProcess::read(char& byte) {
  DWORD count = 0;
  return ReadFile(process_->output, &byte, 1, &count, nullptr) && count == 1;
}

void ChildProcess::kill() {
  if (process_->handle == nullptr) return;
  TerminateProcess(process_->handle, 9);
  WaitForSingleObject(process_->handle, INFINITE);
  CloseHandle(process_->handle);
  process_->handle = nullptr;
}

}  // namespace kiv::test
