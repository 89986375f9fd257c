#include <fcntl.h>
#include <tool/Interruption.h>
#include <tool/Output.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace orvo::tool {

namespace {

/// The ends to read from and to write to; a 0 is for the watcher to leave, all else is a signal.
std::array<int, 2> signalPipe{-1, -1};

void tellWatcher(int signal) {
  const int error = errno;
  const char byte = static_cast<char>(signal);
  while (write(signalPipe[1], &byte, 1) < 0 && errno == EINTR) {
  }
  errno = error;
}

void awaitSignal() {
  char byte = 0;
  while (read(signalPipe[0], &byte, 1) < 0 && errno == EINTR) {
  }
  if (byte == 0) return;
  wipeInterruption();
  BeforeEarlyEnd::now();
  std::signal(byte, SIG_DFL);
  kill(getpid(), byte);
}

}  // namespace

Interruption::Interruption() {
  if (pipe2(signalPipe.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  watcher_ = std::thread(awaitSignal);
  struct sigaction action {};
  action.sa_handler = tellWatcher;
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  tellWatcher(0);
  watcher_.join();
  for (int& descriptor : signalPipe) close(std::exchange(descriptor, -1));
}

}  // namespace orvo::tool
