#pragma once

#include <tool/Output.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <string>

namespace orvo::tool {

/// A line on standard error that says what is being waited for. It appears on a terminal, after a
/// second, and is wiped away at the end, also when the process is
/// interrupted. One at a time. Used by one thread.
class Progress {
 public:
  explicit Progress(std::string label, Terminal terminal = standardError(),
                    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now());
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// How much of a known whole is done; a bar then shows it.
  void set(std::size_t done, std::size_t total);
  /// Draws the line anew, if it is time for it.
  void tick();

 private:
  static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

  void wipeWhenInterrupted();
  [[nodiscard]] std::string bar() const;

  const Terminal terminal_;
  const std::string label_;
  const std::chrono::steady_clock::time_point start_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
  std::size_t frame_ = 0;
  bool drawn_ = false;
  std::array<struct sigaction, kSignals.size()> before_{};
};

}  // namespace orvo::tool
