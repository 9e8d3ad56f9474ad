#include "tool/workers.h"

#include <algorithm>

#include "tool/temporary_file.h"

namespace BP::tool {

Workers::Workers(unsigned wanted) : number(wanted > 0 ? wanted : std::max(1u, std::thread::hardware_concurrency())) {
  if (number == 1) return;
  const SignalHold hold;  // the threads inherit it: signals go to the caller, who can hold them
  try {
    for (unsigned i = 0; i < number; ++i) threads.emplace_back(&Workers::work, this);
  } catch (...) {
    end();
    throw;
  }
}

Workers::~Workers() { end(); }

void Workers::end() {
  {
    const std::lock_guard lock(mutex);
    isEnding = true;
    tasks.clear();
  }
  changed.notify_all();
  for (std::thread& thread : threads) thread.join();
}

void Workers::enqueue(std::function<void()> task) {
  {
    const std::lock_guard lock(mutex);
    tasks.push_back(std::move(task));
  }
  changed.notify_one();
}

void Workers::work() {
  for (;;) {
    std::function<void()> task;
    {
      std::unique_lock lock(mutex);
      changed.wait(lock, [this] { return isEnding || !tasks.empty(); });
      if (isEnding) return;
      task = std::move(tasks.front());
      tasks.pop_front();
    }
    task();
  }
}

}  // namespace BP::tool
