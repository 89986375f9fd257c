#pragma once

#include <array>
#include <csignal>
#include <thread>

namespace orvo::tool {

/// While it lives, a signal that ends the program has it do first what each `BeforeEarlyEnd` is
/// for; a second one does not wait for that. There is one at most. Used by the main thread.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

 private:
  static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

  std::thread watcher_;
  std::array<struct sigaction, kSignals.size()> before_{};
};

}  // namespace orvo::tool
