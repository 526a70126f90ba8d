#include "worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace kiv::ort {

// Outlives the worker where its thread finishes by itself.
struct Worker::Queue {
  explicit Queue(std::size_t most) : depth(most) {}

  bool hasRoom() const { return depth == 0 || tasks.size() < depth; }

  const std::size_t depth;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> tasks;
  bool isClosed = false;
};

Worker::Worker(std::size_t depth)
    : queue_(std::make_shared<Queue>(depth)),
      thread_([queue = queue_] { work(*queue); }) {}

Worker::~Worker() {
  {
    const std::scoped_lock lock(queue_->mutex);
    queue_->isClosed = true;
  }
  queue_->changed.notify_all();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

// A notification that posts the next execution must not wait for itself.
void Worker::post(std::function<void()> task) {
  const bool isOwnThread = thread_.get_id() == std::this_thread::get_id();
  std::unique_lock lock(queue_->mutex);
  if (!isOwnThread)
    queue_->changed.wait(lock, [&] { return queue_->hasRoom(); });
  queue_->tasks.push_back(std::move(task));
  queue_->changed.notify_all();
}

void Worker::work(Queue& queue) {
  std::unique_lock lock(queue.mutex);
  for (;;) {
    queue.changed.wait(lock,
                       [&] { return queue.isClosed || !queue.tasks.empty(); });
    if (queue.tasks.empty()) return;
    const std::function<void()> task = std::move(queue.tasks.front());
    queue.tasks.pop_front();
    queue.changed.notify_all();
    lock.unlock();
    task();
    lock.lock();
  }
}

}  // namespace kiv::ort
