// So many documents at the same moment, each as long and as dense as the library reads them, from a
// server on loopback:
//
//     bodies [COUNT [gzip]]
//
// All are read, and the memory that they take stays within bounds. Prints how long it took and the
// most memory that the process has held.

#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <signal.h>
#include <soak/FaultyServer.h>
#include <sys/wait.h>
#include <tests/Context/StubbedContext.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

/// The process itself, what reading one document takes, what may be kept in memory, and one body on
/// each of ten connections, with its copy when the buffer grows.
constexpr std::size_t kMostMegabytes = 10 + 112 + 64 + 10 * 32;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
constexpr std::size_t kDocuments = 2;  // each takes seconds
#else
constexpr bool kIsSanitized = false;
constexpr std::size_t kDocuments = 30;
#endif

/// A list of objects that hold one number each.
std::string denseDocument() {
  std::string document = "[{\"a\":10000}";
  while (document.size() < URLSessionConfiguration::kDefaultMaximumBodySize - 64) {
    document += ",{\"a\":10000}";
  }
  return document + "]";
}

/// In a process of its own, so that its memory does not count.
pid_t serve(int listener, bool isCompressed) {
  const pid_t child = fork();
  if (child != 0) return child;
  signal(SIGPIPE, SIG_IGN);
  const auto document = denseDocument();
  const auto bytes = isCompressed
                         ? answer(gzip(document, Z_BEST_COMPRESSION), "Content-Encoding: gzip\r\n")
                         : answer(document);
  for (;;) {
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0) _exit(1);
    std::thread([connection, &bytes] {
      Peer peer(connection);
      while (!peer.target().empty() && peer.send(bytes)) {
      }
    }).detach();
  }
}

std::size_t mostKilobytesSoFar() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6));
  }
  return 0;
}

int readAll(const std::string& host, std::size_t count) {
  const auto session = std::make_shared<StubSessionProvider>();
  const auto context = makeContext(session, std::make_shared<DefaultNetworkProvider>(session));
  const auto start = std::chrono::steady_clock::now();
  std::vector<Future<Shared<Lineup>>> lineups;
  for (std::size_t i = 0; i < count; ++i) {
    lineups.push_back(context->fetchLineup(url(host + std::to_string(i))));
  }
  std::size_t failed = 0;
  for (const auto& lineup : lineups) {
    const auto result = lineup.wait(300s);
    if (!result.failed()) continue;
    if (failed++ == 0) std::fprintf(stderr, "%s\n", result.error()->description().c_str());
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  const auto megabytes = mostKilobytesSoFar() / 1024;
  std::printf("%zu documents: %zu failed, %.2f s, %zu MB at most\n", count, failed, took.count(),
              megabytes);
  // A sanitizer's own bookkeeping says nothing of the library.
  const bool isBounded = kIsSanitized || megabytes <= kMostMegabytes;
  return failed == 0 && isBounded ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using namespace orvo;
  const auto [listener, port] = test::listenOnLoopback();
  const pid_t server = soak::serve(listener, argc > 2 && std::string_view(argv[2]) == "gzip");
  const auto status =
      soak::readAll("http://127.0.0.1:" + std::to_string(port) + "/",
                    argc > 1 ? std::strtoul(argv[1], nullptr, 10) : soak::kDocuments);
  kill(server, SIGKILL);
  waitpid(server, nullptr, 0);
  return status;
}
