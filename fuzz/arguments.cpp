// The tool's command line, one argument per line. Nothing is run.

#include <fuzz/FuzzTarget.h>
#include <tool/CommandLine.h>

#include <string>
#include <vector>

using namespace orvo;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto rest = fuzz::text(bytes, size);
  std::vector<std::string> arguments{"orvo"};
  while (!rest.empty()) arguments.emplace_back(fuzz::takePiece(rest));
  std::vector<const char*> pointers;
  for (const auto& argument : arguments) pointers.push_back(argument.c_str());

  tool::CommandLine commandLine;
  if (const auto explanation =
          commandLine.read(static_cast<int>(pointers.size()), pointers.data())) {
    fuzz::require(explanation->exitStatus == 0 || explanation->exitStatus == 2,
                  "a command line that is not run is help or wrong usage");
    fuzz::require(explanation->text.ends_with("\n"), "and what is said about it ends in a line");
  }
  return 0;
}
