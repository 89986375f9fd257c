#include <OrvoAPI/Platform/ConsoleSink.h>
#include <tool/CommandLine.h>
#include <tool/Output.h>
#include <tool/Text.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <system_error>

namespace {

using namespace orvo::tool;

/// Says that memory, or a thread, was refused; without either.
[[noreturn]] void stopShort() {
  printDiagnostic("orvo: not enough memory\n");
  _exit(kNoMemory);
}

/// Where it cannot reach `main`: on another thread, or in what must not throw.
void stopWhenMemoryIsRefused() {
  static const std::terminate_handler before = std::set_terminate([] {
    try {
      if (std::current_exception()) throw;
    } catch (const std::bad_alloc&) {
      stopShort();
    } catch (const std::system_error&) {
      stopShort();
    } catch (...) {
    }
    before();
  });
}

int run(int argc, char** argv) {
  // A reader that has gone away shows when the text is written, and ends the program quietly.
  std::signal(SIGPIPE, SIG_IGN);
  // Standard output is for the answer alone.
  orvo::setConsoleSink([](std::string_view line) {
    printDiagnostic(escaped(line.substr(0, line.size() - 1)) + "\n");
  });
  CommandLine commandLine;
  if (const auto explanation = commandLine.read(argc, argv)) {
    (explanation->exitStatus == 0 ? print : printDiagnostic)(explanation->text);
    return explanation->exitStatus;
  }
  return commandLine.run();
}

}  // namespace

int main(int argc, char** argv) {
  holdStandardStreams();
  stopWhenMemoryIsRefused();
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    stopShort();
  } catch (const std::system_error&) {
    stopShort();
  }
}
