#include <OrvoAPI/Platform/ConsoleSink.h>
#include <tool/CommandLine.h>
#include <tool/Output.h>
#include <tool/Text.h>

#include <csignal>

int main(int argc, char** argv) {
  using namespace orvo::tool;
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
