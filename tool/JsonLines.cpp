#include <OrvoAPI/Platform/ConsoleSink.h>
#include <tool/JsonLines.h>
#include <tool/Output.h>

namespace orvo::tool {

void printJsonLine(const Json& document) { printDiagnostic(document.text() + "\n"); }

void printConsoleAsJsonLines() {
  setConsoleSink([](std::string_view line) {
    printJsonLine(Json::object({{"report", line.substr(0, line.size() - 1)}}));
  });
}

}  // namespace orvo::tool
