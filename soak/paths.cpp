// Ways to a server that die, and come back:
//
//     paths [some]
//
// {HTTP/1.1, HTTP/2 over TLS} x {what breaks} x {0, 1, 16 requests under way}. After the break, no
// more than one round of fetches fails, those under way included, until all succeed again; none
// when the app says that the network has changed and nothing was under way. With "some", the cells
// that are hardest.
//
// The device's sleep and the move of a name are simulated by functions that this program puts in
// the place of the system's: the clock that counts sleep jumps, and the name resolves to another
// address of this machine.

#include <OrvoAPI/Network/URLSession.h>
#include <dlfcn.h>
#include <netdb.h>
#include <soak/Path.h>
#include <support/Nginx.h>
#include <sys/syscall.h>
#include <time.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

constexpr auto kSilence = 800ms;
/// How many are open before the break, with HTTP/1.1.
constexpr unsigned kConnections = 10;
constexpr const char* kName = "moving.test";

std::atomic<std::int64_t> secondsSlept = 0;
std::atomic<const char*> addressOfName = "127.0.0.1";

enum class Break { blackHole, reset, addressGone, nameMoved, standby, told };
constexpr std::array kBreaks = {Break::blackHole, Break::reset,   Break::addressGone,
                                Break::nameMoved, Break::standby, Break::told};
constexpr std::array kNames = {"black hole", "reset",   "address gone",
                               "name moved", "standby", "app tells"};

struct Cell {
  bool isHTTP2;
  Break what;
  unsigned underWay;
};

class Trial {
 public:
  Trial(const Cell& cell, const test::Nginx& nginx)
      : cell_(cell),
        path_(cell.isHTTP2 ? nginx.http2Port : nginx.port),
        newPath_(cell.isHTTP2 ? nginx.http2Port : nginx.port, "127.0.0.2", path_.port()),
        session_({.certificateAuthorityFile = nginx.certificateFile()}),
        url_(*URL::parse((cell.isHTTP2 ? "https://" : "http://") + std::string(kName) + ":" +
                         std::to_string(path_.port()) + "/")) {
    addressOfName = "127.0.0.1";
  }

  /// How many rounds failed; none when it did not work before, or never again.
  std::optional<unsigned> failedRounds() {
    if (!round(kConnections)) return std::nullopt;
    unsigned failed = 0;
    std::vector<Future<HTTPResult>> underWay;
    if (cell_.underWay > 0) {
      path_.hold();
      underWay = start(cell_.underWay);
      waitUntilSent();
    }
    breakPath();
    if (!underWay.empty() && !succeed(underWay)) ++failed;
    if (cell_.what == Break::addressGone) {
      if (underWay.empty() && !round(1)) ++failed;
      path_.comeBack();
    }
    for (int good = 0, rounds = 0; good < 2; ++rounds) {
      if (rounds == 8) return std::nullopt;
      const bool isGood = round(std::max(cell_.underWay, 1U));
      if (isGood)
        ++good;
      else
        ++failed;
    }
    return failed;
  }

 private:
  void breakPath() {
    switch (cell_.what) {
      case Break::reset:
        path_.reset();
        break;
      case Break::addressGone:
        path_.leave();
        path_.silence();
        break;
      case Break::nameMoved:
        path_.silenceForGood();
        addressOfName = "127.0.0.2";
        break;
      case Break::standby:
        path_.silence();
        secondsSlept += 3600;
        break;
      case Break::blackHole:
        path_.silence();
        break;
      case Break::told:
        path_.silence();
        URLSession::networkChanged();
        break;
    }
    path_.release();
  }
  std::vector<Future<HTTPResult>> start(unsigned count) {
    std::vector<Future<HTTPResult>> fetches;
    for (; count > 0; --count) {
      fetches.push_back(session_.fetch({.url = url_, .timeoutInterval = kSilence}));
    }
    return fetches;
  }
  static bool succeed(const std::vector<Future<HTTPResult>>& fetches) {
    bool all = true;
    for (const auto& fetch : fetches) {
      const auto result = fetch.wait(30s);
      all = all && !result.failed() && result.value()->response.statusCode == 200;
    }
    return all;
  }
  bool round(unsigned count) { return succeed(start(count)); }
  void waitUntilSent() const {
    std::uint64_t before = 0;
    for (int quiet = 0; quiet < 5;) {
      std::this_thread::sleep_for(10ms);
      const auto now = path_.sent();
      quiet = std::exchange(before, now) == now ? quiet + 1 : 0;
    }
  }

  const Cell cell_;
  Path path_;
  Path newPath_;
  URLSession session_;
  const URL url_;
};

/// Whether no more than one round failed.
bool isGood(const Cell& cell, const test::Nginx& nginx) {
  const auto start = std::chrono::steady_clock::now();
  const auto failed = Trial(cell, nginx).failedRounds();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::printf("%-9s %-13s %2u under way: ", cell.isHTTP2 ? "HTTP/2" : "HTTP/1.1",
              kNames[static_cast<std::size_t>(cell.what)], cell.underWay);
  if (failed) {
    std::printf("%u rounds failed, %.1f s\n", *failed, took.count());
  } else {
    std::printf("no way, %.1f s\n", took.count());
  }
  const unsigned most = cell.what == Break::told && cell.underWay == 0 ? 0 : 1;
  return failed && *failed <= most;
}

int breakAll(bool all) {
  test::Nginx nginx("location / { return 200 hello; }");
  unsigned bad = 0;
  for (const bool isHTTP2 : {false, true}) {
    for (const auto what : kBreaks) {
      for (const unsigned underWay : {0U, 1U, 16U}) {
        const bool isHard = isHTTP2 && underWay != 1 && what != Break::reset;
        if ((all || isHard) && !isGood({isHTTP2, what, underWay}, nginx)) ++bad;
      }
    }
  }
  std::printf("%u cells are bad\n", bad);
  return bad == 0 ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (clock == CLOCK_BOOTTIME) time->tv_sec += orvo::soak::secondsSlept;
  return result;
}

int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
  using Function = decltype(&getaddrinfo);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
  const bool isOurs = name != nullptr && std::strcmp(name, orvo::soak::kName) == 0;
  return real(isOurs ? orvo::soak::addressOfName.load() : name, service, hints, found);
}

}  // extern "C"

int main(int argc, char** argv) {
  return orvo::soak::breakAll(argc < 2 || std::string_view(argv[1]) != "some");
}
