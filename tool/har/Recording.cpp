#include <fcntl.h>
#include <tool/Output.h>
#include <tool/Present.h>
#include <tool/har/Recorder.h>
#include <tool/har/Traffic.h>
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

/// Writes the file before a signal ends the program.
void awaitSignal(const std::shared_ptr<Recorder>& recorder) {
  char byte = 0;
  while (read(signalPipe[0], &byte, 1) < 0 && errno == EINTR) {
  }
  if (byte == 0) return;
  recorder->write();
  wipeInterruption();
  std::signal(byte, SIG_DFL);
  kill(getpid(), byte);
}

}  // namespace

Recording::Recording(const std::string& file, GlobalOptions& options) {
  if (file.empty()) return;
  holdPresent();
  recorder_ = std::make_shared<Recorder>(file, options.json);
  options.bootstrap.session.measuresRequests = true;
  options.bootstrap.wrapNetwork = [recorder = recorder_](auto network) {
    return recorder->before(std::move(network));
  };
  options.onService = [recorder = recorder_](const auto& service) { recorder->serves(service); };
  doBeforeEarlyEnd([recorder = recorder_] { recorder->write(); });
  watchSignals();
}

void Recording::watchSignals() {
  if (pipe2(signalPipe.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  watcher_ = std::thread(awaitSignal, recorder_);
  struct sigaction action {};
  action.sa_handler = tellWatcher;
  // Whoever does not want to wait for the file says so once more.
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

int Recording::end(int status) { return recorder_ == nullptr || recorder_->write() ? status : 1; }

Recording::~Recording() {
  if (recorder_ == nullptr) return;
  recorder_->write();
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  tellWatcher(0);
  watcher_.join();
  for (int& descriptor : signalPipe) close(std::exchange(descriptor, -1));
  doBeforeEarlyEnd(nullptr);
}

}  // namespace orvo::tool
