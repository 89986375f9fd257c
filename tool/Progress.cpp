#include <fmt/format.h>
#include <tool/Progress.h>
#include <tool/Text.h>

#include <algorithm>
#include <array>
#include <utility>

namespace orvo::tool {

namespace {

constexpr const char* kWipe = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string label, Terminal terminal,
                   std::chrono::steady_clock::time_point start)
    : terminal_(terminal), label_(std::move(label)), start_(start) {}

Progress::~Progress() {
  if (!drawn_) return;
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  printDiagnostic(kWipe);
}

/// Lets signals that end the process wipe the line away first.
void Progress::wipeWhenInterrupted() {
  struct sigaction action {};
  action.sa_handler = [](int signal) {
    printDiagnostic(kWipe);
    raise(signal);
  };
  // What is raised in the handler comes after it, and ends the process.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler == SIG_DFL) sigaction(kSignals[i], &action, nullptr);
  }
}

void Progress::set(std::size_t done, std::size_t total) {
  done_ = done;
  total_ = total;
}

void Progress::tick() {
  const auto elapsed = std::chrono::steady_clock::now() - start_;
  if (!terminal_.redraws || elapsed < std::chrono::seconds(1)) return;
  static constexpr std::array<const char*, 4> kFrames{"◐", "◓", "◑", "◒"};
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
  const std::string text =
      fmt::format("{} {}{}  {} s", kFrames[frame_++ % kFrames.size()], label_, bar(), seconds);
  if (!drawn_) wipeWhenInterrupted();
  drawn_ = true;
  printDiagnostic("\r" + cut(text, terminal_.columns - 1) + "\x1b[K");
}

std::string Progress::bar() const {
  if (total_ == 0) return "";
  constexpr std::size_t kCells = 20;
  const std::size_t filled = kCells * std::min(done_, total_) / total_;
  std::string text = "  ";
  for (std::size_t cell = 0; cell < kCells; ++cell) text += cell < filled ? "█" : "░";
  return fmt::format("{}  {} of {}", text, done_, total_);
}

}  // namespace orvo::tool
