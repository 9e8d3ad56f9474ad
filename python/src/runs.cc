#include "python/src/runs.h"

#include <pthread.h>

#include <stdexcept>

namespace BP::python {

namespace {
std::atomic<unsigned> forks{0};
}

unsigned forkCount() { return forks.load(std::memory_order_relaxed); }

void countForks() {
  pthread_atfork(nullptr, nullptr, [] { ++forks; });
}

filters::Progress Runs::progress(const py::object& callback) {
  if (!callback.is_none() && PyCallable_Check(callback.ptr()) == 0) {
    throw py::type_error("progress: it must be a callable, or True");
  }
  // Copies of the function share one reference, so that they can be made without the interpreter lock.
  return [this, kept = std::make_shared<py::object>(callback)](double fraction) { return report(*kept, fraction); };
}

void Runs::refuseNested() {
  throw std::runtime_error("run: called from the progress callback of a run of the same object");
}

bool Runs::report(py::handle callback, double fraction) {
  const std::thread::id self = std::this_thread::get_id();
  if (callback.is_none() && (fraction >= 1 || self != runner)) return true;
  const py::gil_scoped_acquire acquire;
  struct Mark {
    std::atomic<std::thread::id>& reporter;
    ~Mark() { reporter = std::thread::id(); }
  };
  reporter = self;
  const Mark mark{reporter};
  if (self == runner && PyErr_CheckSignals() != 0) throw py::error_already_set();
  if (callback.is_none()) return true;
  return !callback(fraction).is(py::handle(Py_False));
}

}  // namespace BP::python
