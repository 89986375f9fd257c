// Many processes, each of which ends when the library has only just begun:
//
//     exits [RUNS [SEED]]
//
// Each run is a process of its own that starts one fetch and ends up to 5 ms later: by a return
// from main, exit or quick_exit, with a fetch over HTTP or HTTPS, made by the thread that ends the
// process or by another. None may crash, and none may take long to end.

#include <OrvoAPI/Network/URLSession.h>
#include <spawn.h>
#include <support/Loopback.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace {

using namespace std::chrono_literals;
using orvo::URL;
using orvo::URLSession;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr auto kLongestEnd = 5s;
#else
constexpr auto kLongestEnd = 250ms;
#endif
constexpr std::array kWays = {"return", "exit", "quick_exit"};
constexpr std::array kSchemes = {"http", "https"};
constexpr std::array kCallers = {"main", "another thread"};
/// Ends a process that hangs.
constexpr unsigned kSecondsOfARun = 20;
constexpr int kWell = 7;  // no exit status that anything else has
/// A processor that is busy elsewhere keeps a process from ending, but not five times in a row.
constexpr int kAttempts = 5;

std::chrono::nanoseconds now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// What one process does.
struct Run {
  std::size_t way;
  std::size_t scheme;
  std::size_t caller;
  std::chrono::microseconds delay;

  [[nodiscard]] std::string text() const {
    return std::string(kWays[way]) + " " + std::to_string(delay.count()) + " us after a fetch by " +
           kCallers[caller] + " over " + kSchemes[scheme];
  }
};

/// The process itself: `output` is where it tells when its end begins.
int live(const Run& run, const URL& url, int output) {
  alarm(kSecondsOfARun);
  const auto fetch = [url](URLSession& session) { (void)session.fetch({.url = url}); };
  if (run.caller == 0) {
    static URLSession session;
    fetch(session);
  } else {
    std::thread([fetch] {
      static auto& session = *new URLSession;
      fetch(session);
    }).detach();
  }
  std::this_thread::sleep_for(run.delay);
  const auto end = now().count();
  if (write(output, &end, sizeof end) != sizeof end) return 1;
  if (run.way == 1) std::exit(kWell);
  if (run.way == 2) std::quick_exit(kWell);
  return kWell;
}

/// Takes connections, says nothing, and lets go of the oldest.
void listenSilently(int listener) {
  std::deque<int> connections;
  for (;;) {
    connections.push_back(accept(listener, nullptr, nullptr));
    if (connections.size() <= 100) continue;
    close(connections.front());
    connections.pop_front();
  }
}

/// How long the process took to end; negative when it did not end as it meant to.
std::chrono::nanoseconds timeToEnd(const Run& run, int port) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return -1ns;
  std::vector<std::string> words{"exits",
                                 std::to_string(run.way),
                                 std::to_string(run.scheme),
                                 std::to_string(run.caller),
                                 std::to_string(run.delay.count()),
                                 std::to_string(port),
                                 std::to_string(ends[1])};
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  int status = -1;
  if (posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments.data(), environ) == 0) {
    waitpid(child, &status, 0);
  }
  const auto gone = now();
  close(ends[1]);
  std::int64_t began = 0;
  const bool told = read(ends[0], &began, sizeof began) == sizeof began;
  close(ends[0]);
  if (WIFSIGNALED(status)) std::fprintf(stderr, "signal %d\n", WTERMSIG(status));
  if (!told || !WIFEXITED(status) || WEXITSTATUS(status) != kWell) return -1ns;
  return gone - std::chrono::nanoseconds(began);
}

int runAll(int runs, unsigned seed) {
  const auto [listener, port] = orvo::test::listenOnLoopback();
  std::thread([listener = listener] { listenSilently(listener); }).detach();
  std::mt19937 random(seed);
  int crashed = 0, late = 0;
  std::chrono::nanoseconds longest{0};
  for (int i = 0; i < runs; ++i) {
    const Run run{random() % 3, random() % 2, random() % 2,
                  std::chrono::microseconds(random() % 5001)};
    std::chrono::nanoseconds took{0};
    int attempt = 0;
    do {
      took = timeToEnd(run, port);
      longest = std::max(longest, took);
    } while (took > kLongestEnd && ++attempt < kAttempts);
    crashed += took < 0ns;
    late += attempt == kAttempts;
    if (took < 0ns || attempt == kAttempts) std::fprintf(stderr, "%s\n", run.text().c_str());
  }
  std::printf(
      "%d processes: %d ended otherwise than they meant to, %d late, the longest in %lld ms\n",
      runs, crashed, late, static_cast<long long>(longest / std::chrono::milliseconds(1)));
  return crashed + late == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 6) {
    return runAll(words.empty() ? 150 : std::stoi(words[0]),
                  words.size() < 2 ? 1 : static_cast<unsigned>(std::stoul(words[1])));
  }
  const Run run{std::stoul(words[0]), std::stoul(words[1]), std::stoul(words[2]),
                std::chrono::microseconds(std::stoi(words[3]))};
  const auto url = std::string(kSchemes.at(run.scheme)) + "://127.0.0.1:" + words[4] + "/";
  return live(run, *URL::parse(url), std::stoi(words[5]));
}
