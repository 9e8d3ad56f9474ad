#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace BP::tool {

/// Threads that do tasks in the order in which they were given.
class Workers {
 public:
  /// `wanted` threads, of 0 as many as the machine has cores. A single one is the caller's: a task is done as it is
  /// given.
  explicit Workers(unsigned wanted);
  /// Lets the tasks that are under way end, and drops those that have not begun.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  unsigned count() const { return number; }

  /// Has `task` done; the future has its result, or what it threw.
  template <class Task>
  std::future<std::invoke_result_t<Task>> give(Task task) {
    const auto packaged = std::make_shared<std::packaged_task<std::invoke_result_t<Task>()>>(std::move(task));
    std::future<std::invoke_result_t<Task>> result = packaged->get_future();
    if (threads.empty()) {
      (*packaged)();
    } else {
      enqueue([packaged] { (*packaged)(); });
    }
    return result;
  }

 private:
  void enqueue(std::function<void()> task);
  void work();
  void end();

  unsigned number;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> tasks;
  bool isEnding = false;
  std::vector<std::thread> threads;
};

}  // namespace BP::tool
