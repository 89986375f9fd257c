#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <tool/Output.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

namespace orvo::tool {

namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

Colours chosenColours = Colours::fromEnvironment;

bool wantsColours(bool isCapable) {
  if (chosenColours != Colours::fromEnvironment) return chosenColours == Colours::always;
  if (!environment("NO_COLOR").empty()) return false;
  const std::string_view force = environment("CLICOLOR_FORCE");
  if (!force.empty() && force != "0") return true;
  return isCapable && environment("CLICOLOR") != "0";
}

/// Of the terminal at the descriptor, or behind the pager at its other end.
std::size_t columnsOf(int descriptor) {
  constexpr std::size_t kDefault = 80;
  constexpr std::size_t kFewest = 30;
  winsize size{};
  const auto isKnown = [&](int place) {
    return ioctl(place, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  };
  if (isKnown(descriptor)) return std::max<std::size_t>(size.ws_col, kFewest);
  const std::string_view text = environment("COLUMNS");
  std::size_t columns = 0;
  std::from_chars(text.data(), text.data() + text.size(), columns);
  if (columns > 0) return std::clamp<std::size_t>(columns, kFewest, 1000);
  return isKnown(STDERR_FILENO) ? std::max<std::size_t>(size.ws_col, kFewest) : kDefault;
}

Terminal describe(int descriptor) {
  Terminal terminal;
  terminal.isTerminal = isatty(descriptor) == 1;
  const std::string_view kind = environment("TERM");
  terminal.redraws = terminal.isTerminal && !kind.empty() && kind != "dumb";
  terminal.colour = wantsColours(terminal.redraws);
  const std::string_view depth = environment("COLORTERM");
  terminal.trueColour = terminal.colour && (depth == "truecolor" || depth == "24bit");
  terminal.columns = columnsOf(descriptor);
  return terminal;
}

/// False with `errno` when something could not be written.
bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EAGAIN) {
      pollfd event{descriptor, POLLOUT, 0};
      poll(&event, 1, -1);
    } else if (written < 0 && errno != EINTR) {
      return false;
    }
    if (written < 0) continue;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

const char* sequence(Style style) {
  switch (style) {
    case Style::strong:
      return "\x1b[1m";
    case Style::faint:
      return "\x1b[2m";
    case Style::accent:
      return "\x1b[36m";
    case Style::good:
      return "\x1b[32m";
    case Style::warning:
      return "\x1b[33m";
    case Style::bad:
      return "\x1b[31m";
    case Style::marked:
      return "\x1b[7m";
    case Style::plain:
      break;
  }
  return "";
}

}  // namespace

void setColours(Colours colours) { chosenColours = colours; }

Terminal standardOutput() { return describe(STDOUT_FILENO); }

Terminal standardError() { return describe(STDERR_FILENO); }

void holdStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // It gets the lowest number that is free; the wrong way round, so that its use still fails.
    open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void print(std::string_view text) {
  if (writeAll(STDOUT_FILENO, text)) return;
  const int error = errno;
  BeforeEarlyEnd::now();
  // The reader has seen what it wanted to see; there is nothing left to do and nobody to tell.
  if (error == EPIPE) _exit(0);
  printDiagnostic(std::string("orvo: standard output: ") + std::strerror(error) + "\n");
  _exit(1);
}

struct BeforeEarlyEnd::List {
  std::mutex lock;
  std::vector<Task> tasks;
};

BeforeEarlyEnd::List& BeforeEarlyEnd::list() {
  static auto& list = *new List;  // whoever ends the program early may do so while it ends
  return list;
}

BeforeEarlyEnd::BeforeEarlyEnd(std::function<void()> task)
    : task_(std::make_shared<std::function<void()>>(std::move(task))) {
  const std::lock_guard guard(list().lock);
  list().tasks.push_back(task_);
}

BeforeEarlyEnd::~BeforeEarlyEnd() {
  const std::lock_guard guard(list().lock);
  std::erase(list().tasks, task_);
}

void BeforeEarlyEnd::now() {
  const auto taken = [] {
    const std::lock_guard guard(list().lock);
    Task task = list().tasks.empty() ? nullptr : std::move(list().tasks.back());
    if (task != nullptr) list().tasks.pop_back();
    return task;
  };
  while (const Task task = taken()) (*task)();
}

void printDiagnostic(std::string_view text) { writeAll(STDERR_FILENO, text); }

void wipeInterruption() {
  const Terminal terminal = standardError();
  if (terminal.isTerminal) printDiagnostic(terminal.redraws ? "\r\x1b[K" : "\n");
}

std::string styled(const Terminal& terminal, Style style, std::string_view text) {
  if (!terminal.colour || style == Style::plain || text.empty()) return std::string(text);
  return std::string(sequence(style)).append(text).append("\x1b[0m");
}

}  // namespace orvo::tool
