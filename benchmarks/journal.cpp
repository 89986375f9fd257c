// One record on its way to the journal's socket: through the library's logger and through
// libsystemd, which knows no other path than the system's. Where no journal runs, and the program
// runs as root, a socket stands in for it there. And the longest call while the reader has stalled.

#include <OrvoAPI/Logging/OSLogger.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if __has_include(<systemd/sd-journal.h>)
// Neither side says where in its source the record comes from.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>
#define ORVO_HAS_LIBSYSTEMD 1
#else
#define ORVO_HAS_LIBSYSTEMD 0
#endif

namespace {

using namespace orvo;
using namespace orvo::benchmarks;
namespace fs = std::filesystem;

constexpr std::string_view kMessage =
    "GET https://api.example/v3/collections/7d2e9a40-featured?offset=200&limit=100: 200, 61437 "
    "bytes, 84 ms";
/// The kernel keeps ten datagrams at least for a reader that is late.
constexpr int kBatch = 8;

/// Reads in the journal's place; binds its path, and removes it again with a folder that had to be
/// made for it.
class Journal {
 public:
  explicit Journal(fs::path path)
      : path_(std::move(path)), madeFolder_(fs::create_directories(path_.parent_path())) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.string().copy(address.sun_path, sizeof address.sun_path - 1);
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      std::perror(path_.c_str());
      std::exit(2);
    }
  }
  ~Journal() {
    close(socket_);
    fs::remove(path_);
    if (madeFolder_) fs::remove(path_.parent_path());
  }
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  /// How many records wait; they are gone afterwards.
  int drain() const {
    std::array<char, 4096> record{};
    int count = 0;
    while (recv(socket_, record.data(), record.size(), MSG_DONTWAIT) > 0) ++count;
    return count;
  }

 private:
  fs::path path_;
  bool madeFolder_;
  int socket_;
};

OSLogger loggerTo(const fs::path& path) { return OSLogger(SystemLog::open({path, ""})); }

/// Sends as many records at a time as a late reader is left, and reads them outside of what is
/// measured.
template <class Send>
double nanoseconds(const Journal& journal, Send&& send) {
  constexpr int kBatches = 500;
  double taken = 0;
  for (int i = 0; i < kBatches; ++i) {
    const double begin = threadSeconds();
    for (int j = 0; j < kBatch; ++j) send();
    taken += threadSeconds() - begin;
    if (journal.drain() != kBatch) std::abort();  // what was dropped was cheap
  }
  return 1e9 * taken / (kBatches * kBatch);
}

/// Nobody reads, and the socket is full.
void measureStalledReader(const fs::path& folder) {
  const auto path = folder / "stalled";
  const Journal journal(path);
  OSLogger logger = loggerTo(path);
  constexpr int kRounds = 101, kCalls = 200;
  const auto longest = [&] {
    std::chrono::duration<double, std::milli> most{0};
    for (int i = 0; i < kCalls; ++i) {
      const auto begin = std::chrono::steady_clock::now();
      logger.log(kMessage, LogLevel::info, "Network", "Fetch");
      most = std::max<std::chrono::duration<double, std::milli>>(
          most, std::chrono::steady_clock::now() - begin);
    }
    return most.count();
  };
  longest();
  // A wait of its own making would show in every round, another program's turn in a few.
  std::vector<double> rounds;
  rusage before{}, after{};
  getrusage(RUSAGE_THREAD, &before);
  for (int round = 0; round < kRounds; ++round) rounds.push_back(longest());
  getrusage(RUSAGE_THREAD, &after);
  print(Row{.name = "longest of 200 calls, stalled reader",
            .unit = "ms",
            .ours = median(rounds),
            .bound = 1});
  print(Row{.name = "waits in 20,200 calls, stalled reader",
            .unit = "waits",
            .ours = static_cast<double>(after.ru_nvcsw - before.ru_nvcsw),
            .bound = 0});
}

#if ORVO_HAS_LIBSYSTEMD
const char* const kSystemPath = "/run/systemd/journal/socket";

iovec field(std::string_view text) { return {const_cast<char*>(text.data()), text.size()}; }

void sendBySystemd() {
  // As a caller has it: a message of its own after the name of the field.
  const std::string message = "MESSAGE=" + std::string(kMessage);
  const std::array fields{field(message), field("PRIORITY=6"), field("SYSLOG_IDENTIFIER=journal"),
                          field("SUBSYSTEM=Network"), field("CATEGORY=Fetch")};
  if (sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) != 0) std::abort();
}

void comparePeers() {
  if (fs::exists(kSystemPath) || geteuid() != 0) {
    return (void)std::puts(
        "left out: a record beside sd_journal_sendv (needs root and no journal, for a stand-in)");
  }
  const Journal journal(kSystemPath);
  OSLogger logger = loggerTo(kSystemPath);
  const auto ours = [&] { logger.log(kMessage, LogLevel::info, "Network", "Fetch"); };
  const std::string name = "log a record to the journal", peer = "sd_journal_sendv";
  if (!underCallgrind()) {
    return print(name, "ns", peer,
                 inTurns([&] { return nanoseconds(journal, ours); },
                         [&] { return nanoseconds(journal, sendBySystemd); }),
                 0.6);
  }
  ours();
  sendBySystemd();
  journal.drain();
  const auto instructions = [&](auto&& send) {
    const double count = instructionsOf([&] {
      for (int i = 0; i < kBatch; ++i) send();
    });
    if (journal.drain() != kBatch) std::abort();
    return count / kBatch;
  };
  const double first = instructions(ours), second = instructions(sendBySystemd);
  printCounts(name, "instructions", first, peer, second, 0.6);
}
#else
void comparePeers() { std::puts("left out: a record beside sd_journal_sendv (libsystemd-dev)"); }
#endif

}  // namespace

int main(int, char** argv) {
  if (!underCallgrind()) {
    std::string folder = "/tmp/orvo-journal-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) return 2;
    measureStalledReader(folder);
    fs::remove_all(folder);
  }
  comparePeers();
  runUnderCallgrind(argv);
}
