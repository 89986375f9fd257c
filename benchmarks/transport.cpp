// Fetches through the library beside raw libcurl: how many per second, what they cost in processor
// time, and what a fresh connection takes. The server is an nginx; each side asks for all at once
// and has ten connections.

#include <benchmarks/support/Measure.h>
#include <benchmarks/support/Transport.h>
#include <sys/resource.h>

#include <semaphore>
#include <thread>

namespace orvo::benchmarks {
namespace {

double processSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double wallSeconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// Prints the throughput and, if it has a goal, the processor time of both.
template <class Ours, class Theirs>
void report(const std::string& what, const std::string& peer, std::size_t count, Ours&& ours,
            Theirs&& theirs, double leastThroughput, double mostProcessor = kNothing) {
  ours(count), theirs(count);  // connections are made
  std::vector<double> ourTimes, theirTimes;
  const auto side = [count](auto& work, std::vector<double>& times) {
    const double processor = processSeconds(), wall = wallSeconds();
    work(count);
    times.push_back((processSeconds() - processor) * 1e6 / static_cast<double>(count));
    return static_cast<double>(count) / (wallSeconds() - wall);
  };
  const auto throughput =
      inTurns([&] { return side(ours, ourTimes); }, [&] { return side(theirs, theirTimes); });
  print(what, "fetches/s", peer, throughput, leastThroughput, Goal::atLeast);
  if (std::isnan(mostProcessor)) return;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ourTimes.size(); ++i) ratios.push_back(ourTimes[i] / theirTimes[i]);
  print(what, "CPU us", peer, {median(ourTimes), median(theirTimes), median(ratios)},
        mostProcessor);
}

void besideRawMulti(const std::string& what, const Work& work, std::size_t count,
                    double leastThroughput) {
  Library library(work);
  RawMulti raw(work);
  report(
      what, "raw libcurl multi", count, [&](std::size_t n) { library.fetch(n); },
      [&](std::size_t n) { raw.fetch(n); }, leastThroughput, 1.35);
}

/// One request as a program makes it that does not think about it.
void fetchAlone(const Work& work, bool defaults) {
  CURL* const handle = curl_easy_init();
  std::string body;
  curl_easy_setopt(handle, CURLOPT_URL, work.url.c_str());
  curl_easy_setopt(handle, CURLOPT_CAINFO, work.authority.c_str());
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &appendTo);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
  if (!defaults) curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);  // there are threads
  curl_easy_perform(handle);
  curl_easy_cleanup(handle);
  expectSize(body.size(), work);
}

void besideThreads(const Work& work) {
  Library library(work);
  report(
      "fetch 3 KB, HTTP/1.1", "thread and handle each", 1000,
      [&](std::size_t n) { library.fetch(n); },
      [&](std::size_t n) {
        std::counting_semaphore<kConnections> free(kConnections);
        for (; n > 0; --n) {
          free.acquire();
          std::thread([&] {
            fetchAlone(work, false);
            free.release();
          }).detach();
        }
        for (std::size_t i = 0; i < kConnections; ++i) free.acquire();
      },
      2);
}

/// Both trust the system's authorities and the server's own.
void freshConnections(const FileServer& server) {
  auto work = server.freshTLS();
  const std::ifstream system("/etc/ssl/certs/ca-certificates.crt");
  if (!system) {
    std::puts("fresh TLS connection: left out, the system has no authorities");
    return;
  }
  const std::string file = server.nginx().folder() + "/authorities.pem";
  std::ofstream(file) << system.rdbuf() << std::ifstream(work.authority).rdbuf();
  work.authority = file;
  Library library(work);
  const auto milliseconds = [](auto&& fetch) {
    const double begin = wallSeconds();
    for (int i = 0; i < 10; ++i) fetch();
    return (wallSeconds() - begin) * 1e3 / 10;
  };
  library.fetch(1);
  print("fresh TLS connection", "ms", "libcurl, its defaults",
        inTurns([&] { return milliseconds([&] { library.fetch(1); }); },
                [&] { return milliseconds([&] { fetchAlone(work, true); }); }),
        0.1);
}

}  // namespace
}  // namespace orvo::benchmarks

int main() {
  using namespace orvo::benchmarks;
  const FileServer server;
  besideRawMulti("fetch 3 KB, HTTP/1.1", server.http(kSmallBody), 2000, 0.85);
  besideRawMulti("fetch 60 KB, HTTP/1.1", server.http(kLargeBody), 1000, 0.75);
  besideRawMulti("fetch 3 KB, TLS", server.tls(kSmallBody), 1000, 0.75);
  besideRawMulti("fetch 60 KB, TLS", server.tls(kLargeBody), 500, 0.75);
  besideRawMulti("fetch 3 KB, HTTP/2", server.http2(kSmallBody), 1000, 0.75);
  besideRawMulti("fetch 60 KB, HTTP/2", server.http2(kLargeBody), 500, 0.75);
  besideThreads(server.http(kSmallBody));
  freshConnections(server);
}
