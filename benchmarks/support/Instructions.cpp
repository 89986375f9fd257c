#include <benchmarks/support/Instructions.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace orvo::benchmarks {
namespace {

/// Where callgrind writes its counts; each count ends a file with a number of its own behind it.
constexpr const char* kFileVariable = "ORVO_CALLGRIND_FILE";
int dumps = 0;

}  // namespace

void runUnderCallgrind(char** argv) {
  if (RUNNING_ON_VALGRIND != 0) return;
  std::string file = "/tmp/orvo-callgrind-XXXXXX";
  const int descriptor = mkstemp(file.data());
  if (descriptor >= 0) close(descriptor);
  setenv(kFileVariable, file.c_str(), 1);
  const std::string output = "--callgrind-out-file=" + file;
  std::vector<char*> words;
  std::string fixed[] = {"valgrind", "--quiet", "--tool=callgrind", output};
  for (auto& word : fixed) words.push_back(word.data());
  for (; *argv != nullptr; ++argv) words.push_back(*argv);
  words.push_back(nullptr);
  execvp("valgrind", words.data());
  std::perror("valgrind");
  std::exit(2);
}

void startCounting() { CALLGRIND_ZERO_STATS; }

double stopCounting() {
  CALLGRIND_DUMP_STATS;
  const std::string name = std::string(std::getenv(kFileVariable)) + "." + std::to_string(++dumps);
  double total = 0;
  std::string line;
  for (std::ifstream file(name); std::getline(file, line);) {
    if (line.starts_with("totals:")) total = std::stod(line.substr(7));
  }
  std::remove(name.c_str());
  return total;
}

}  // namespace orvo::benchmarks
