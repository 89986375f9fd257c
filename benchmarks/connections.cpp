// What TLS takes until the first answer: the first connection of a process, with all that has to be
// made ready for it; a new one later, with a full handshake and with a session that both sides
// remember. Each side keeps what it has made ready.

#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/URLSession.h>
#include <benchmarks/support/Library.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/RawLibcurl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

namespace orvo::benchmarks {
namespace {

constexpr const char* kAuthorities = "/etc/ssl/certs/ca-certificates.crt";
constexpr const char* kFolder = "/etc/ssl/certs";

struct Times {
  double wall = 0;
  double processor = 0;
};

/// What the request takes in a process that has made none before, in milliseconds.
Times inNewProcess(const std::function<void()>& request) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) std::exit(2);
  const pid_t child = fork();
  if (child == 0) {
    const double wall = wallSeconds(), processor = processSeconds();
    request();
    const Times times{(wallSeconds() - wall) * 1e3, (processSeconds() - processor) * 1e3};
    _exit(write(ends[1], &times, sizeof times) == sizeof times ? 0 : 2);
  }
  close(ends[1]);
  Times times;
  const bool isTold = read(ends[0], &times, sizeof times) == sizeof times;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!isTold) std::exit(2);
  return times;
}

/// The server's authority is not the system's, so that the request ends when the authorities have
/// been looked through: there is no way to add one for a while.
void refuseByLibrary(const std::string& url) {
  const auto result = URLSession().fetch({.url = *URL::parse(url)}).wait(std::chrono::seconds(30));
  const auto* const error = result.failed() ? result.error()->as<URLError>() : nullptr;
  if (error == nullptr || error->code != URLError::serverCertificateUntrusted) _exit(2);
}

void refuseByLibcurl(const std::string& url, const char* folder) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  RawHandle raw(Work{url, 0, {}});
  if (folder != nullptr) {
    raw.set(CURLOPT_CAINFO, nullptr);
    raw.set(CURLOPT_CAPATH, folder);
  }
  raw.begin();
  if (curl_easy_perform(raw.handle()) != CURLE_PEER_FAILED_VERIFICATION) _exit(2);
}

void firstOfAProcess(const std::string& url) {
  const auto beside = [&](const char* peer, const char* folder, double goal) {
    std::vector<double> ourWalls, theirWalls, ours, theirs;
    for (int round = 0; round < 11; ++round) {
      const auto a = inNewProcess([&] { refuseByLibrary(url); });
      const auto b = inNewProcess([&] { refuseByLibcurl(url, folder); });
      ourWalls.push_back(a.wall), ours.push_back(a.processor);
      theirWalls.push_back(b.wall), theirs.push_back(b.processor);
    }
    const std::string name = "first TLS connection of a process";
    print(name, "ms", peer, comparison(ourWalls, theirWalls), kNothing);
    print(name, "ms of CPU", peer, comparison(ours, theirs), kNothing);
    if (std::isnan(goal)) return;
    print(Row{.name = name, .unit = "ms", .ours = median(ourWalls), .bound = goal});
  };
  beside("libcurl, its defaults", nullptr, 12);
  beside("libcurl, told of the folder", kFolder, kNothing);
}

/// Both trust the system's authorities and the server's own.
void later(const std::string& name, const FileServer& server) {
  auto work = server.once();
  const std::string file = server.nginx().folder() + "/authorities.pem";
  std::ofstream(file) << std::ifstream(kAuthorities).rdbuf()
                      << std::ifstream(work.authority).rdbuf();
  work.authority = file;
  Library library(work);
  RawHandle raw(work);
  const auto milliseconds = [](auto&& fetch) {
    constexpr int kTimes = 20;
    const double begin = wallSeconds();
    for (int i = 0; i < kTimes; ++i) fetch();
    return (wallSeconds() - begin) * 1e3 / kTimes;
  };
  library.fetch(1);
  raw.fetch();
  print(name, "ms", "libcurl, a kept handle",
        inTurns([&] { return milliseconds([&] { library.fetch(1); }); },
                [&] { return milliseconds([&] { raw.fetch(); }); }),
        1.5);
}

}  // namespace
}  // namespace orvo::benchmarks

int main() {
  using namespace orvo::benchmarks;
  if (!std::ifstream(kAuthorities)) {
    std::puts("left out: TLS connections, as the system has no authorities");
    return 0;
  }
  unsetenv("SSL_CERT_FILE");  // the library would heed it, libcurl by itself does not
  const FileServer remembering;
  firstOfAProcess(remembering.tls(kSmallBody).url);  // before this process makes a request
  const FileServer forgetting("ssl_session_cache off; ssl_session_tickets off;");
  later("a new TLS connection, full handshake", forgetting);
  later("a new TLS connection, resumed", remembering);
}
