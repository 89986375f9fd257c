// What the library does when the system refuses it something, so often:
//
//     memory [STRIDE [SCENE [REFUSED CALL]]]
//
// Plays each scene again and again, each time in a process of its own and with another call
// refused: the first, the second and so on (or every so many) until a run asks for less. What is
// refused is memory, once or from there on, or what one of the system's calls gives. Each run must
// end, with what was asked for, with a typed error, or with a std::bad_alloc for who asked; the
// same process must then do the same without a fault; and no error may hold a token. With a call
// named, one run is played in this process, for a debugger.

#include <OrvoAPI/Context/ContextService.h>
#include <demo/DemoService.h>
#include <signal.h>
#include <soak/Refusal.h>
#include <soak/RefusedScenes.h>
#include <support/Nginx.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::soak {
namespace {

/// A run that takes longer hangs, and is ended by its alarm.
constexpr unsigned kSecondsOfARun = 30;
/// Longer than any limit of the library's that a scene could run into.
constexpr auto kSlow = std::chrono::seconds(2);

/// How a run can end; those up to `stated` are well.
enum class End {
  success,
  error,
  badAlloc,
  stated,   // as SECURITY.md says: the process was stopped, or the TLS library gave up
  aborted,  // or elsewhere
  crashed,
  hung,
  lost,
  token,
  broken,  // did not work again when nothing was refused any more
  other,
  unknown,
};
constexpr std::array kEnds = {"well", "error", "alloc", "stated", "abort", "crash",
                              "hung", "lost",  "token", "broken", "other"};
/// What the library says where it stops the process by intention.
constexpr std::string_view kStated = "OrvoAPI: no thread could be started";

/// What a run's process tells.
struct Report {
  End end = End::unknown;
  long refused = 0;
  std::array<char, 200> text{};
};

/// What is refused in a row of runs.
struct Refused {
  const char* name;
  Refusal::Kind kind;
  long count;
};
constexpr Refused kRefused[] = {
    {"one allocation", Refusal::Kind::memory, 1},
    {"all memory", Refusal::Kind::memory, Refusal::kForEver},
    {"socket", Refusal::Kind::socket, 1},
    {"connect", Refusal::Kind::connect, 1},
    {"epoll_create1", Refusal::Kind::epollCreate, 1},
    {"epoll_ctl", Refusal::Kind::epollControl, 1},
    {"eventfd", Refusal::Kind::eventfd, 1},
    {"timerfd_create", Refusal::Kind::timerfd, 1},
    {"a thread", Refusal::Kind::thread, 1},
    {"all threads", Refusal::Kind::thread, Refusal::kForEver},
    {"clock_gettime", Refusal::Kind::clock, 1},
    {"getrandom", Refusal::Kind::random, 1},
};

void tell(Report& report, End end, const std::string& text) {
  report.end = end;
  text.copy(report.text.data(), report.text.size() - 1);
}

void judge(Report& report, const Ending& ending) {
  if (!ending.error) return tell(report, End::success, {});
  const auto text = ending.error->description();
  if (text.find("secret-token") != std::string::npos) return tell(report, End::token, text);
  tell(report, ending.isLost ? End::lost : End::error, text);
}

/// The same again, with nothing refused: at the second attempt at the latest, because the first may
/// find a connection that was refused memory unseen.
void demandRecovery(Report& report, const Scene& scene, const Service& service, Player& player) {
  auto ending = player.act(service);
  if (ending.error) ending = player.act(service);
  if (!ending.error) return;
  const auto* const fault = ending.error->as<URLError>();
  const bool isOfTLS =
      scene.needsTLS && fault != nullptr &&
      (fault->code == URLError::secureConnectionFailed || fault->code == URLError::unknown);
  tell(report, isOfTLS ? End::stated : End::broken, "afterwards: " + ending.error->description());
}

[[noreturn]] void play(const Scene& scene, const Refused& refused, long number,
                       const Service& service, Report& report) {
  alarm(kSecondsOfARun);
  static Report& told = report;
  std::atexit([] {
    // A scene that ends the process comes here only.
    Refusal::end();
    if (told.refused == 0) told.refused = Refusal::refused();
    if (told.end == End::unknown) told.end = End::success;
  });
  // Never destroyed: some scenes end the process.
  auto* const player = scene.make(service).release();
  Refusal::begin(refused.kind, number, refused.count);
  try {
    const auto ending = player->act(service);
    Refusal::end();
    judge(report, ending);
  } catch (const std::bad_alloc&) {
    Refusal::end();
    tell(report, End::badAlloc, {});
  } catch (const std::exception& error) {
    Refusal::end();
    tell(report, End::other, error.what());
  }
  report.refused = Refusal::refused();
  if (report.refused > 0) demandRecovery(report, scene, service, *player);
  std::exit(0);
}

/// What came of a row of runs.
struct Tally {
  std::array<long, kEnds.size()> ends{};
  long slow = 0;

  void add(const Tally& other) {
    for (std::size_t i = 0; i < ends.size(); ++i) ends[i] += other.ends[i];
    slow += other.slow;
  }
  [[nodiscard]] long runs() const { return std::accumulate(ends.begin(), ends.end(), 0L); }
  [[nodiscard]] bool isWell() const {
    return std::accumulate(ends.begin() + 4, ends.end(), 0L) == 0;
  }
  void print(const char* scene, const char* refused) const {
    std::printf("%-12s %-15s %6ld", scene, refused, runs());
    for (const long count : ends) std::printf(" %6ld", count);
    std::printf(" %6ld\n", slow);
    std::fflush(stdout);
  }
};

/// What a file holds.
std::string contents(int file) {
  std::string text(4096, '\0');
  const auto size = pread(file, text.data(), text.size(), 0);
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return text;
}

End endOf(int status, const Report& report, std::string_view said) {
  const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  if (said.find("secret-token") != std::string_view::npos) return End::token;
  if (signal == SIGALRM) return End::hung;
  if (signal == SIGABRT) {
    return said.find(kStated) != std::string_view::npos ? End::stated : End::aborted;
  }
  if (signal != 0 || WEXITSTATUS(status) != 0) return End::crashed;
  return report.end == End::unknown ? End::other : report.end;
}

/// One run; false when nothing was refused in it.
bool playOne(const Scene& scene, const Refused& refused, long number, const Service& service,
             Report& report, Tally& tally) {
  report = {};
  const auto start = std::chrono::steady_clock::now();
  const int output = memfd_create("output", 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(output, 2);
    play(scene, refused, number, service, report);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const auto said = contents(output);
  close(output);
  const auto end = endOf(status, report, said);
  if (end == End::success && report.refused == 0) return false;
  ++tally.ends[static_cast<std::size_t>(end)];
  const bool isSlow = std::chrono::steady_clock::now() - start > kSlow;
  tally.slow += isSlow;
  if (end > End::stated || isSlow) {
    std::fprintf(stderr, "%s%s: %s, %s from call %ld: %s\n%s", isSlow ? "slow, " : "",
                 kEnds[static_cast<std::size_t>(end)], scene.name, refused.name, number,
                 report.text.data(), said.c_str());
  }
  return true;
}

Tally playRow(const Scene& scene, const Refused& refused, long stride, const Service& service,
              Report& report) {
  Tally tally;
  // What a call of the system gives is asked for a few times only.
  const long step = refused.kind == Refusal::Kind::memory ? stride : 1;
  for (long number = 0; playOne(scene, refused, number, service, report, tally);) number += step;
  if (tally.runs() > 0) tally.print(scene.name, refused.name);
  return tally;
}

[[noreturn]] void playNamed(const std::vector<std::string>& words, const Service& service) {
  const auto scene = std::find_if(scenes().begin(), scenes().end(),
                                  [&](const Scene& known) { return known.name == words[1]; });
  const auto refused = std::find_if(std::begin(kRefused), std::end(kRefused),
                                    [&](const Refused& known) { return known.name == words[2]; });
  if (scene == scenes().end() || refused == std::end(kRefused)) std::exit(2);
  static Report report;
  std::atexit([] {
    std::printf("%ld refused: end %d %s\n", report.refused, static_cast<int>(report.end),
                report.text.data());
  });
  play(*scene, *refused, std::stol(words[3]), service, report);
}

int playAll(long stride, const std::string& only, const Service& service) {
  auto* const report = static_cast<Report*>(
      mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  std::printf("%-12s %-15s %6s", "scene", "refused", "runs");
  for (const auto* const end : kEnds) std::printf(" %6s", end);
  std::printf(" %6s\n", "slow");
  std::fflush(stdout);  // what is buffered would be each run's to print
  Tally all;
  for (const auto& scene : scenes()) {
    if (!only.empty() && only != scene.name) continue;
    for (const auto& refused : kRefused) {
      all.add(playRow(scene, refused, stride, service, *report));
    }
  }
  all.print("all", "");
  return all.isWell() ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using namespace orvo;
  const std::vector<std::string> words(argv + 1, argv + argc);
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  // The runs are forked from a process that has no other thread and has not used the library.
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return 1;
  const pid_t player = fork();
  if (player == 0) {
    std::array<char, 800> text{};
    close(ends[1]);
    const auto size = read(ends[0], text.data(), text.size());
    if (size <= 0) return 1;
    const auto service = soak::Service::fromText({text.data(), static_cast<std::size_t>(size)});
    if (words.size() == 4) soak::playNamed(words, service);
    return soak::playAll(words.empty() ? 1 : std::stol(words[0]), words.size() < 2 ? "" : words[1],
                         service);
  }
  demo::DemoService lasting, forgetful({.tokenLifetime = 2});
  const test::Nginx nginx("location / { return 200 secure; }");
  if (!lasting.start() || !forgetful.start()) return 1;
  const auto text = lasting.baseURL() + "\n" + lasting.resourceURL() + "\n" + forgetful.baseURL() +
                    "\n" + forgetful.resourceURL() +
                    "\nhttps://127.0.0.1:" + std::to_string(nginx.http2Port) + "/\n" +
                    nginx.certificateFile() + "\n";
  if (write(ends[1], text.data(), text.size()) != static_cast<ssize_t>(text.size())) return 1;
  int status = 0;
  waitpid(player, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
