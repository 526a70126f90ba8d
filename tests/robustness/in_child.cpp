#include "robustness/in_child.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace kiv::test {

int inChild(const std::function<int()>& body) {
  constexpr unsigned kMostSeconds = 30;
  const pid_t child = fork();
  if (child == 0) {
    alarm(kMostSeconds);
    std::exit(body());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void expectInChild(const std::function<void()>& body) {
  EXPECT_EQ(inChild([&] {
              body();
              return ::testing::Test::HasFailure() ? 1 : 0;
            }),
            0);
}

}  // namespace kiv::test
