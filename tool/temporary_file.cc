#include "tool/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

namespace BP::tool {

namespace {

/// A name that the signal handler can read at any time: plain memory that is complete before `isUsed` is set.
struct Slot {
  volatile sig_atomic_t isUsed = 0;
  std::array<char, PATH_MAX> name{};
};
std::array<Slot, maxTemporaryFiles> slots;

/// Removes the temporary files, then ends the program as the signal would have. Calls nothing that a signal handler may
/// not call. The signal has its default action again (SA_RESETHAND) and takes effect when this function returns.
extern "C" void removeTemporaryFiles(int signal) {
  for (const Slot& slot : slots) {
    if (slot.isUsed != 0) ::unlink(slot.name.data());
  }
  ::raise(signal);
}

/// Whether the default action of a signal is to end the program.
bool isTerminating(int signal) {
  constexpr int others[] = {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH};
  return std::ranges::find(others, signal) == std::end(others);
}

/// Handles every signal that would end the program; ignored signals stay ignored.
void handleSignals() {
  struct sigaction action {};
  action.sa_handler = removeTemporaryFiles;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigfillset(&action.sa_mask);
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    struct sigaction current {};
    if (!isTerminating(signal) || ::sigaction(signal, nullptr, &current) != 0) continue;
    const bool isDefault = (current.sa_flags & SA_SIGINFO) == 0 && current.sa_handler == SIG_DFL;
    if (isDefault) ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

SignalHold::SignalHold() {
  sigset_t all;
  sigfillset(&all);
  // Faults of the thread itself cannot wait: held, they would end the program before its files are removed.
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) sigdelset(&all, fault);
  ::pthread_sigmask(SIG_BLOCK, &all, &before);
}

SignalHold::~SignalHold() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

TemporaryFile::TemporaryFile(const std::filesystem::path& folder) : path((folder / ".orvane-XXXXXX").string()) {
  static const bool areHandled = (handleSignals(), true);
  static_cast<void>(areHandled);
  const auto unused = std::ranges::find_if(slots, [](const Slot& candidate) { return candidate.isUsed == 0; });
  if (unused == slots.end() || path.size() >= unused->name.size()) {
    errno = unused == slots.end() ? EMFILE : ENAMETOOLONG;
    return;
  }
  const SignalHold hold;  // no signal may come between the file and its slot
  openDescriptor = ::mkostemp(path.data(), O_CLOEXEC);
  if (openDescriptor < 0) return;
  std::ranges::copy(path, unused->name.begin());
  unused->name[path.size()] = '\0';
  unused->isUsed = 1;
  slot = static_cast<int>(unused - slots.begin());
}

TemporaryFile::~TemporaryFile() {
  if (slot < 0) return;
  ::unlink(path.c_str());
  forget();
}

bool TemporaryFile::rename(const std::filesystem::path& target) {
  if (::rename(path.c_str(), target.c_str()) != 0) return false;
  forget();
  return true;
}

void TemporaryFile::forget() { slots[static_cast<std::size_t>(std::exchange(slot, -1))].isUsed = 0; }

}  // namespace BP::tool
