#pragma once

// A thread that runs a context's asynchronous executions one after the other:
//
//   Worker worker(depth);
//   worker.post([execution] { execution->run(); });
//
// Any thread may post. The destructor waits for all that was posted; on the
// worker's own thread, which is where a notification may free the context, it
// lets the thread finish by itself.

#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

namespace kiv::ort {

class Worker {
 public:
  // The depth is the most tasks that wait, 0 for no limit.
  explicit Worker(std::size_t depth);
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Waits while the queue is full. The task must not throw.
  void post(std::function<void()> task);

 private:
  struct Queue;

  static void work(Queue& queue);

  std::shared_ptr<Queue> queue_;
  std::thread thread_;
};

}  // namespace kiv::ort
