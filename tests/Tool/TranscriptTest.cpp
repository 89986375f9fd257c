#include "Fixtures.h"
#include "RunTool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace orvo::tool {
namespace {

/// The lines, each after a mark; what a terminal obeys is made visible.
std::string marked(const std::string& text, const std::string& mark) {
  std::istringstream lines(replaced(replaced(text, "\r\n", "\n"), "\x1b", "^["));
  std::string out;
  for (std::string line; std::getline(lines, line);) out += mark + line + "\n";
  return out;
}

/// Runs the commands of a transcript again. `$ COMMAND` writes into files, `$60 COMMAND` on a
/// terminal of 60 columns; then come the requests (<), what stands on standard output, what stands
/// on standard error (!), and the exit status (=) unless it is 0.
std::string rerun(const std::string& transcript) {
  const DocumentService service;
  std::istringstream lines(transcript);
  std::string out;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("#")) out += line + "\n";
    if (!line.starts_with("$")) continue;
    out += (out.empty() ? "" : "\n") + line + "\n";
    const std::size_t before = service.requests();
    const std::string command = line.substr(line.find(' ') + 1);
    const ToolRun run = runLine(
        replaced(replaced(command, "$api", kOptions), kHost, service.base()), std::atoi(&line[1]));
    const std::string targets = service.targets(before);
    if (!targets.empty()) out += "<" + targets + "\n";
    out += marked(run.output, "") + marked(run.error, "! ");
    if (run.status != 0) out += "= " + std::to_string(run.status) + "\n";
  }
  return replaced(out, service.base(), kHost);
}

std::vector<std::string> transcripts() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(ORVO_FIXTURES "/transcripts")) {
    names.push_back(entry.path().stem());
  }
  return names;
}

class Transcript : public testing::TestWithParam<std::string> {};

TEST_P(Transcript, ReadsTheSameAgain) {
  const std::string name = "transcripts/" + GetParam() + ".txt";
  expectFixture(name, rerun(fixture(name)));
}

INSTANTIATE_TEST_SUITE_P(Fixtures, Transcript, testing::ValuesIn(transcripts()),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace orvo::tool
