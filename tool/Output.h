#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvo::tool {

/// What is known of the place where text appears.
struct Terminal {
  bool isTerminal = false;
  /// Whether what is shown there can be overwritten.
  bool redraws = false;
  /// Whether colours are wanted.
  bool colour = false;
  /// Whether it shows 24-bit colours and not just 256.
  bool trueColour = false;
  std::size_t columns = 80;
  /// Whether somebody looks at it through a pager.
  bool isPaged = false;

  /// Whether what is too wide gives way. What programs read, or what is saved, is never cut off.
  [[nodiscard]] bool isFitted() const { return isTerminal || isPaged; }
};

/// Whether to use colours. Left to the environment they are used where NO_COLOR is not set, and
/// CLICOLOR_FORCE is, or on a terminal that has them unless CLICOLOR is 0.
enum class Colours { fromEnvironment, always, never };
/// Set once, before anything is printed.
void setColours(Colours colours);

[[nodiscard]] Terminal standardOutput();
[[nodiscard]] Terminal standardError();

/// To be called before anything is opened: a standard stream that is closed would become the next
/// file or connection. From then on it can neither be read nor written.
void holdStandardStreams();

/// Writes to standard output. Ends the program quietly when the reader has gone, and with a message
/// and status 1 when the text cannot be written for another reason.
void print(std::string_view text);
/// Writes to standard error; what cannot be written is dropped.
void printDiagnostic(std::string_view text);

/// While it lives, there is something to do before `print`, or an `Interruption`, ends the program.
/// May be made and destroyed on any thread.
class BeforeEarlyEnd {
 public:
  explicit BeforeEarlyEnd(std::function<void()> task);
  ~BeforeEarlyEnd();
  BeforeEarlyEnd(const BeforeEarlyEnd&) = delete;
  BeforeEarlyEnd& operator=(const BeforeEarlyEnd&) = delete;

  /// Does all there is to do, the last first and each once.
  static void now();

 private:
  using Task = std::shared_ptr<std::function<void()>>;
  struct List;
  static List& list();

  const Task task_;
};

/// Takes away what a terminal shows of the key that has just interrupted the program.
void wipeInterruption();

enum class Style { plain, strong, faint, accent, good, warning, bad, marked };

/// The text between the control sequences of the style, where colours are wanted.
[[nodiscard]] std::string styled(const Terminal& terminal, Style style, std::string_view text);

}  // namespace orvo::tool
