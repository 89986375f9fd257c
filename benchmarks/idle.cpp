// What a process that waits costs: the context switches of its threads in ten seconds, while it
// holds a context, while a monitor waits for a distant end, and while one follows programmes of
// five seconds. The service is another process.

#include <OrvoAPI/OrvoAPI.h>
#include <benchmarks/support/Measure.h>
#include <demo/DemoService.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

/// The demo service in a process of its own.
class Service {
 public:
  explicit Service(std::chrono::seconds programLength) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || (process_ = fork()) < 0) std::perror("idle");
    if (process_ == 0) serve(programLength, ends[1]);
    close(ends[1]);
    std::array<char, 16> text{};
    if (read(ends[0], text.data(), text.size()) > 0) port_ = text.data();
    close(ends[0]);
  }
  ~Service() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  [[nodiscard]] orvo::URL url(const std::string& path) const {
    return *orvo::URL::parse("http://127.0.0.1:" + port_ + path);
  }

 private:
  [[noreturn]] static void serve(std::chrono::seconds programLength, int out) {
    orvo::demo::DemoService service({.programLength = programLength});
    if (!service.start()) _exit(1);
    const auto port = std::to_string(service.port());
    if (write(out, port.c_str(), port.size() + 1) < 0) _exit(1);
    close(out);
    for (;;) pause();
  }

  pid_t process_ = -1;
  std::string port_;
};

/// The context switches of each of the process's threads so far.
std::map<std::string, long> switches() {
  std::map<std::string, long> counts;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream status(task.path() / "status");
    std::string name, line;
    status >> name >> name;
    name += " " + task.path().filename().string();
    while (std::getline(status, line)) {
      if (line.find("ctxt_switches") == std::string::npos) continue;
      counts[name] += std::stol(line.substr(line.find(':') + 1));
    }
  }
  return counts;
}

/// Prints what the next ten seconds bring; this thread sleeps through them and does not count.
void measure(const char* what, double goal) {
  std::this_thread::sleep_for(3s);  // what has just been done comes to rest
  const auto before = switches();
  std::this_thread::sleep_for(10s);
  const auto self = std::to_string(getpid());
  long sum = 0;
  for (const auto& [name, count] : switches()) {
    if (name.ends_with(" " + self)) continue;
    const auto found = before.find(name);
    sum += count - (found == before.end() ? 0 : found->second);
  }
  orvo::benchmarks::print(
      {.name = what, .unit = "switches", .ours = static_cast<double>(sum), .bound = goal});
}

std::shared_ptr<orvo::Context> open(const Service& service) {
  return orvo::ContextService::context(service.url("/v3/"), service.url("/"), orvo::Client::appleTV)
      .wait(30s)
      .force();
}

std::shared_ptr<orvo::LinearProgramGuideMonitor> watch(
    const std::shared_ptr<orvo::Context>& context) {
  auto monitor = orvo::LinearProgramGuideMonitor::make(context);
  (void)monitor->load(orvo::Clock::system()->now(), 3).wait(30s).force();
  while (monitor->lastUpdate() == nullptr) std::this_thread::sleep_for(10ms);
  return monitor;
}

}  // namespace

int main() {
  const Service television(24h);
  const Service quick(5s);
  const auto context = open(television);
  (void)context->fetchVideo("welcome").wait(30s).force();
  measure("10 s with one Context held", 0);
  auto monitor = watch(context);
  measure("10 s with a monitor that waits for a distant end", 0);
  monitor.reset();
  const auto other = open(quick);
  monitor = watch(other);
  measure("10 s with a monitor of programmes of 5 s", orvo::benchmarks::kNothing);
}
