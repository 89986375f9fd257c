#include <benchmarks/support/Instructions.h>
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvo::benchmarks {
namespace {

/// Where callgrind writes its counts; each count ends a file whose name has a number of its own
/// appended.
constexpr const char* kFileVariable = "ORVO_CALLGRIND_FILE";
int dumps = 0;

[[noreturn]] void execute(const std::string& file, char** argv) {
  setenv(kFileVariable, file.c_str(), 1);
  std::string fixed[] = {"valgrind", "--quiet", "--tool=callgrind", "--callgrind-out-file=" + file};
  std::vector<char*> words;
  for (auto& word : fixed) words.push_back(word.data());
  for (; *argv != nullptr; ++argv) words.push_back(*argv);
  words.push_back(nullptr);
  execvp("valgrind", words.data());
  std::perror("valgrind");
  _exit(2);
}

/// The sums of a file of callgrind's: a function that is called is named ("cfn=(12) name", later
/// only "cfn=(12)"), then follows how often ("calls=3 …").
Counts read(const std::string& name) {
  Counts counts{-1, 0};
  std::string line, allocator = "none";
  bool allocates = false;
  for (std::ifstream file(name); std::getline(file, line);) {
    if (line.starts_with("cfn=") || line.starts_with("fn=")) {
      const auto id = line.substr(line.find('('), line.find(')') - line.find('('));
      if (line.find(" operator new(unsigned long)") != std::string::npos) allocator = id;
      allocates = id == allocator;
    } else if (line.starts_with("calls=") && allocates) {
      counts.allocations += std::stod(line.substr(6));
    } else if (line.starts_with("totals:")) {
      counts.instructions = std::stod(line.substr(7));
    }
  }
  if (counts.instructions < 0) {
    std::fprintf(stderr, "callgrind wrote no counts to %s\n", name.c_str());
    std::exit(2);
  }
  return counts;
}

}  // namespace

bool underCallgrind() { return RUNNING_ON_VALGRIND != 0; }

void runUnderCallgrind(char** argv) {
  if (underCallgrind()) return;
  std::string folder = "/tmp/orvo-callgrind-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) std::exit(2);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) execute(folder + "/counts", argv);
  int status = -1;
  if (child > 0) waitpid(child, &status, 0);
  std::filesystem::remove_all(folder);  // callgrind writes to it until its very end
  std::exit(WIFEXITED(status) ? WEXITSTATUS(status) : 2);
}

// Callgrind keeps the counts of all threads together unless it is asked to separate them.
void startCounting() { CALLGRIND_ZERO_STATS; }

Counts stopCounting() {
  CALLGRIND_DUMP_STATS;
  const std::string name = std::string(std::getenv(kFileVariable)) + "." + std::to_string(++dumps);
  const auto counts = read(name);
  std::remove(name.c_str());
  return counts;
}

}  // namespace orvo::benchmarks
