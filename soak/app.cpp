// What a program that uses the library can rely on for its own life. Each scene is a process of its
// own that talks to the demo service in this one:
//
//     app [CONTEXTS]
//
// Contexts that are made and dropped leave nothing behind; what belongs to the app stays as it is;
// a program that it starts inherits nothing; and however the process ends, it ends soon, with no
// thread of the library left (and no leak, where the sanitizer looks for one).

#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/DemoService.h>
#include <malloc.h>
#include <signal.h>
#include <soak/OwnTransfers.h>
#include <soak/Surroundings.h>
#include <support/Loopback.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 60s;
/// A scene that takes longer hangs, and is ended by its alarm.
constexpr unsigned kSecondsOfAScene = 300;
/// So does a child that it forks.
constexpr unsigned kSecondsOfAChild = 20;
constexpr int kUnderWay = 20;
constexpr int kThreads = 4;
/// What the network thread waits with, and what wakes it; the timer's two clocks.
constexpr int kDescriptorsOfThreads = 4;
/// libcurl marks its descriptors close-on-exec, but not these, with which it wakes itself.
constexpr int kDescriptorsOfLibcurl = 2;
/// A smaller leak goes unseen, except by the sanitizer: the allocator keeps what it likes per
/// thread.
constexpr std::ptrdiff_t kBytesKept = 128 * 1024;
constexpr std::ptrdiff_t kBytesOfAContext = 200;

void require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what.c_str());
  _exit(1);
}

/// Waits, within reason, for what comes by itself.
void settle(const std::string& what, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    require(std::chrono::steady_clock::now() < end, what);
    std::this_thread::sleep_for(1ms);
  }
}

std::size_t entries(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                std::filesystem::directory_iterator()));
}

/// The library's threads, except the calling one.
std::size_t libraryThreads() {
  std::size_t count = 0;
  std::error_code gone;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
    std::string name;
    std::ifstream(task.path() / "comm") >> name;
    count += name.starts_with("orvo-") && task.path().filename() != std::to_string(gettid());
  }
  return count;
}

/// Destroyed after everything else that this program has made.
struct LastWord {
  bool isNeeded = false;
  LastWord() = default;
  LastWord(const LastWord&) = delete;
  LastWord& operator=(const LastWord&) = delete;
  ~LastWord() {
    // A thread that the library no longer waits for needs a moment to vanish.
    const auto end = std::chrono::steady_clock::now() + 1s;
    while (isNeeded && libraryThreads() > 0) {
      require(std::chrono::steady_clock::now() < end, "a thread runs into destruction");
    }
  }
} lastWord;

/// What the scenes talk to.
struct Service {
  URL api;
  URL resources;
  URL silent;  // takes connections and says nothing

  [[nodiscard]] std::shared_ptr<Context> open() const {
    return ContextService::context(api, resources, Client::appleTV).wait(kPatience).force();
  }
};

void fetch(const Context& context) {
  const auto page = context.fetchPage("view-discover", {.noCache = true});
  const auto video = context.fetchVideo("welcome", {.noCache = true});
  require(page.wait(kPatience).force()->id == "view-discover", "another page");
  require(video.wait(kPatience).force()->id == "welcome", "another video");
}

/// Leaves requests under way, half of which get no answer.
void leaveUnderWay(const Context& context, const URL& silent) {
  for (int i = 0; i < kUnderWay; ++i) {
    (void)context.fetchPage("view-discover", {.noCache = true});
    (void)context.fetchLineup(*URL::parse(silent.text() + std::to_string(i)));
  }
}

// ---- Contexts that come and go

void visit(const Service& service, int number) {
  const auto context = service.open();
  const auto page = context->fetchPage("view-discover");
  if (number % 3 == 0) return page.cancel();
  if (number % 3 == 1) fetch(*context);
  (void)context->fetchVideoAdMetadata("welcome");  // goes on without it
}

void visitOften(const Service& service, int count) {
  std::vector<std::thread> threads;
  for (int first = 0; first < kThreads; ++first) {
    threads.emplace_back([&service, first, count] {
      for (int number = first; number < count; number += kThreads) visit(service, number);
    });
  }
  for (auto& thread : threads) thread.join();
}

void makeAndDropContexts(const Service& service, int count) {
  const auto descriptors = entries("/proc/self/fd") + kDescriptorsOfThreads;
  const auto isBack = [&] { return entries("/proc/self/fd") <= descriptors; };
  visitOften(service, count);  // after which the allocator has what it wants
  settle("descriptors stay open after the first contexts", isBack);
  const auto threads = entries("/proc/self/task");
  const auto bytes = mallinfo2().uordblks;
  visitOften(service, count);
  settle("descriptors stay open", isBack);
  settle("threads stay", [&] { return entries("/proc/self/task") <= threads; });
  const auto more = static_cast<std::ptrdiff_t>(mallinfo2().uordblks - bytes);
  std::printf("%d contexts: %zu descriptors and %zu threads as before, %td more bytes\n", count,
              descriptors, threads, more);
  std::fflush(stdout);
  require(more < kBytesKept + kBytesOfAContext * count, "memory stays");
}

// ---- What belongs to the app

std::atomic<int> handled{0};
void handle(int) { ++handled; }

void leaveTheAppAlone(const Service& service, int) {
  const auto missing = enterCommaLocale();
  require(missing.empty(), missing);
  setenv("TZ", "Asia/Kathmandu", 1);
  tzset();
  struct sigaction own {};
  own.sa_handler = handle;
  for (const int signal : {SIGPIPE, SIGTERM, SIGCHLD, SIGUSR1, SIGWINCH}) {
    sigaction(signal, &own, nullptr);
  }
  auto transfers =
      std::make_unique<OwnTransfers>(service.api.appendingPathComponent("configuration/ios/v1"));
  const auto transfer = [&] { require(transfers->work(), "the app's own transfer fails"); };
  const auto before = surroundings();
  transfer();
  auto context = service.open();
  transfer();
  fetch(*context);
  const auto part = context->fetchItemCollection("everything", {.page = ListPartRequest{1000, 10}})
                        .wait(kPatience)
                        .force();
  require(part->meta.offset == 1000, "numbers are written otherwise");
  const auto numbers = JSONDataParser::object(Data(R"({"a": 1.5, "b": 1234567.25})")).force();
  require(numbers.asValue().text() == R"({"a":1.5,"b":1234567.25})" && numbers.number("a") == 1.5,
          "numbers are read otherwise: " + numbers.asValue().text());
  auto monitor = LinearProgramGuideMonitor::make(context);
  require(monitor->load(Clock::system()->now(), 2).wait(kPatience).force(), "no guide");
  monitor.reset();
  kill(getpid(), SIGUSR1);
  settle("the app's signal does not arrive", [] { return handled == 1; });
  transfer();
  context.reset();
  transfer();
  for (const auto& [what, after] : surroundings()) {
    require(before.at(what) == after, what + " changed");
  }
  transfers.reset();
  fetch(*service.open());
}

// ---- Other processes

void leaveNothingToPrograms(const Service& service, int) {
  const auto inherited = [] {
    const pid_t child = fork();
    if (child == 0) {
      execl("/proc/self/exe", "app", "descriptors", nullptr);
      _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    require(WIFEXITED(status) && WEXITSTATUS(status) != 127, "no program could be started");
    return WEXITSTATUS(status);
  };
  const int before = inherited();
  const auto own = entries("/proc/self/fd");
  const auto context = service.open();
  leaveUnderWay(*context, service.silent);
  settle("there are no connections", [&] { return entries("/proc/self/fd") > own + 10; });
  const int after = inherited();
  std::printf("a program inherits %d descriptors more\n", after - before);
  require(after <= before + kDescriptorsOfLibcurl, "a program inherits descriptors");
  fetch(*context);
}

bool isForked = false;

/// Runs `part` in a forked child, and ends it as programs end.
void inForkedChild(const std::function<void()>& part) {
  const pid_t child = fork();
  if (child == 0) {
    isForked = true;
    alarm(kSecondsOfAChild);
    part();
    std::exit(0);  // NOLINT(concurrency-mt-unsafe)
  }
  int status = 0;
  waitpid(child, &status, 0);
  require(status == 0, "a forked child ends with " + std::to_string(status));
}

template <class T>
void requireRefusal(const Future<T>& fetched) {
  const auto result = fetched.wait(kPatience);
  require(result.failed(), "a forked child fetches");
  const auto* const error = result.error()->template as<URLError>();
  require(error != nullptr && error->code == URLError::unknown,
          "another error in a forked child: " + result.error()->description());
}

/// Nothing that was under way, and no thread, has come along.
void useInForkedChild(const Service& service, Context& context) {
  URLSession session;
  requireRefusal(session.fetch({.url = service.api}));
  requireRefusal(context.fetchVideo("welcome", {.noCache = true}));
  requireRefusal(ContextService::context(service.api, service.resources, Client::appleTV));
  const auto video = context.fetchVideo("welcome").wait(kPatience);
  require(!video.failed() && (*video.value())->id == "welcome", "the cache has gone");
  int called = 0;
  context.fetchVideo("welcome").onComplete([&called](const auto&) { ++called; });
  session.fetch({.url = service.silent}).onComplete([&called](const auto&) { ++called; });
  require(called == 2, "callbacks are not called");
}

void leaveForkedChildrenAlone(const Service& service, int) {
  // Behind the library's own end, and before a leak checker that misses the parent's threads.
  std::atexit([] {
    if (isForked) _exit(0);
  });
  inForkedChild([&service] { fetch(*service.open()); });  // as a service that leaves its terminal
  const auto context = service.open();
  (void)context->fetchVideo("welcome").wait(kPatience).force();
  leaveUnderWay(*context, service.silent);
  inForkedChild([&service, &context] { useInForkedChild(service, *context); });
  fetch(*context);
}

// ---- The end

std::shared_ptr<Context> early;  // destroyed after everything that comes later

void endWithAStaticMadeEarly(const Service& service, int) {
  early = service.open();
  leaveUnderWay(*early, service.silent);
}

void endWithAStaticMadeLate(const Service& service, int) {
  static const auto late = service.open();
  leaveUnderWay(*late, service.silent);
}

void endWhileOthersFetch(const Service& service, int) {
  const auto& kept = *new std::shared_ptr<Context>(service.open());
  static std::atomic<int> fetches{0};
  for (int i = 0; i < kThreads; ++i) {
    std::thread([&kept] {
      for (;;) {
        (void)kept->fetchPage("view-discover", {.noCache = true}).wait(1s);
        ++fetches;
      }
    }).detach();
  }
  settle("nobody fetches", [] { return fetches > 20; });
}

void endAndUseItAgain(const Service& service, int) {
  static const auto silent = service.silent;
  // Registered before the library is used at all: it runs after that has ended.
  std::atexit([] { leaveUnderWay(*early, silent); });
  early = service.open();
}

struct Scene {
  const char* name;
  void (*play)(const Service& service, int contexts);
};
constexpr Scene kScenes[] = {{"contexts come and go", makeAndDropContexts},
                             {"what is the app's stays", leaveTheAppAlone},
                             {"programs inherit nothing", leaveNothingToPrograms},
                             {"forked children", leaveForkedChildrenAlone},
                             {"ends with a static made early", endWithAStaticMadeEarly},
                             {"ends with a static made late", endWithAStaticMadeLate},
                             {"ends while others fetch", endWhileOthersFetch},
                             {"is used after its end", endAndUseItAgain}};

/// One scene in a process of its own.
bool play(std::size_t scene, const Service& service, const std::string& contexts) {
  const auto start = std::chrono::steady_clock::now();
  const auto number = std::to_string(scene);
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", "app", number.c_str(), service.api.text().c_str(),
          service.resources.text().c_str(), service.silent.text().c_str(), contexts.c_str(),
          nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::printf("%-32s %s after %.2f s\n", kScenes[scene].name, status == 0 ? "well" : "FAILED",
              took.count());
  std::fflush(stdout);
  if (WIFSIGNALED(status)) std::fprintf(stderr, "ended by signal %d\n", WTERMSIG(status));
  return status == 0;
}

int playAll(const std::string& contexts) {
  demo::DemoService demo;
  require(demo.start(), "the demo service does not start");
  const auto [listener, port] = test::listenOnLoopback();
  const Service service{*URL::parse(demo.baseURL()), *URL::parse(demo.resourceURL()),
                        *URL::parse("http://127.0.0.1:" + std::to_string(port) + "/")};
  bool well = true;
  for (std::size_t scene = 0; scene < std::size(kScenes); ++scene) {
    well = play(scene, service, contexts) && well;
  }
  close(listener);
  return well ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using namespace orvo::soak;
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 2 && (words.empty() || words[0] != "descriptors")) {
    return playAll(words.empty() ? "300" : words[0]);
  }
  // The folder that is looked into is open meanwhile.
  if (words.size() < 2) return static_cast<int>(entries("/proc/self/fd"));
  alarm(kSecondsOfAScene);
  lastWord.isNeeded = true;
  const Service service{*orvo::URL::parse(words[1]), *orvo::URL::parse(words[2]),
                        *orvo::URL::parse(words[3])};
  try {
    kScenes[std::stoul(words[0])].play(service, std::stoi(words[4]));
  } catch (const orvo::AnyError& error) {
    require(false, error.description());
  }
  return 0;
}
