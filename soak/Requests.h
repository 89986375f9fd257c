#pragma once

#include <OrvoAPI/Network/URLSession.h>
#include <soak/FaultyServer.h>
#include <unistd.h>

#include <algorithm>
#include <concepts>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::soak {

constexpr int kInFlight = 50;
constexpr std::size_t kMaximumBodySize = 1U << 20;

/// A number of the command line.
inline std::uint64_t argument(int argc, char** argv, int index, std::uint64_t otherwise) {
  return argc > index ? std::strtoull(argv[index], nullptr, 10) : otherwise;
}

/// What the process holds, to compare.
struct Holdings {
  std::size_t descriptors = 0;
  std::size_t kilobytes = 0;

  static Holdings now() {
    Holdings now;
    now.descriptors = static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
    std::size_t size = 0;
    std::ifstream("/proc/self/statm") >> size >> now.kilobytes;
    now.kilobytes *= static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
    return now;
  }

  /// Whether a later look shows no leak: both ends of the connections that are kept may have come,
  /// and what the allocators of threads keep. The sanitizers keep what was freed, to recognise it.
  [[nodiscard]] bool isBack(const Holdings& later) const {
    std::printf("%-16s %10zu, %zu at the end\n", "descriptors", descriptors, later.descriptors);
    std::printf("%-16s %10zu, %zu at the end\n", "memory in KB", kilobytes, later.kilobytes);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const bool isMemoryBack = true;
#else
    const bool isMemoryBack = later.kilobytes <= kilobytes + kilobytes / 4;
#endif
    const bool isBack = later.descriptors <= descriptors + 2 * kInFlight && isMemoryBack;
    if (!isBack) std::fputs("descriptors or memory leak\n", stderr);
    return isBack;
  }
};

/// Whether the outcome is among those that a fault may have.
inline bool isAmong(const std::vector<int>& outcomes, int outcome) {
  return std::find(outcomes.begin(), outcomes.end(), outcome) != outcomes.end();
}

/// Makes requests to a faulty server, several at a time, and sees how each ends.
class Requests {
 public:
  /// What may come of a fault: the answer's status or the error's code.
  using Expected = std::function<bool(const Fault&, int outcome)>;

  Requests(std::string origin, URLSessionConfiguration configuration, Expected expected,
           std::uint64_t seed)
      : origin_(std::move(origin)),
        expected_(std::move(expected)),
        session_(std::move(configuration)),
        random_(seed) {}

  /// False when one ended wrongly.
  bool make(std::uint64_t requests) {
    std::unique_lock guard(lock_);
    for (std::uint64_t made = 0; made < requests; ++made) {
      if (!changed_.wait_for(guard, 120s, [&] { return inFlight_ < kInFlight; })) return hang();
      ++inFlight_;
      const auto fault = pickFault();
      const auto number = static_cast<unsigned>(random_() % 1'000'000);
      guard.unlock();
      start(fault, number);
      guard.lock();
    }
    if (!changed_.wait_for(guard, 120s, [&] { return inFlight_ == 0; })) return hang();
    return !failed_;
  }

  /// When nothing is in flight: how often each fault came, and each end.
  void printTally() const {
    for (const auto& [what, count] : tally_) {
      std::printf("%-16s %10llu\n", what.c_str(), static_cast<unsigned long long>(count));
    }
  }

 private:
  /// Most requests go well; the faults that take long are rare.
  std::size_t pickFault() {
    const auto dice = random_() % 100;
    if (dice < 40) return 0;
    const auto fault = random_() % faults().size();
    const std::string_view name = faults()[fault].name;
    const bool isSlow =
        name == "stall" || name == "trickle" || name == "bomb" || name.starts_with("endless");
    return isSlow && dice < 95 ? 0 : fault;
  }
  void start(std::size_t fault, unsigned number) {
    const auto url =
        *URL::parse(origin_ + "/" + std::to_string(fault) + "/" + std::to_string(number));
    session_.fetch({.url = url, .timeoutInterval = 2s})
        .onComplete([this, fault, number](const Result<HTTPResult>& result) {
          end(faults()[fault], number, result);
        });
  }
  void end(const Fault& fault, unsigned number, const Result<HTTPResult>& result) {
    int outcome = 0;
    if (const HTTPResult* answer = result.value()) outcome = answer->response.statusCode;
    if (const auto* error = result.failed() ? result.error()->as<URLError>() : nullptr) {
      outcome = error->code;
    }
    const std::lock_guard guard(lock_);
    if (!expected_(fault, outcome)) {
      failed_ = true;
      std::fprintf(stderr, "%s, number %u: ended with %d%s\n", fault.name, number, outcome,
                   result.failed() ? (" " + result.error()->description()).c_str() : "");
    }
    ++tally_[fault.name];
    ++tally_["ended with " + std::to_string(outcome)];
    --inFlight_;
    changed_.notify_one();
  }
  bool hang() const {
    std::fprintf(stderr, "%d requests do not end\n", inFlight_);
    return false;
  }

  const std::string origin_;
  const Expected expected_;
  URLSession session_;
  std::mt19937_64 random_;
  std::mutex lock_;
  std::condition_variable changed_;
  int inFlight_ = 0;                            // guarded by lock_
  bool failed_ = false;                         // guarded by lock_
  std::map<std::string, std::uint64_t> tally_;  // guarded by lock_
};

/// The exit status of a program that makes some requests, until all is warm, and then the others
/// by `makeRest`: whether all ended well, and what they held was given back.
template <std::predicate MakeRest>
int judge(Requests& client, std::uint64_t first, MakeRest&& makeRest) {
  if (!client.make(first)) return 1;
  const auto before = Holdings::now();
  if (!makeRest()) return 1;
  client.printTally();
  return before.isBack(Holdings::now()) ? 0 : 1;
}

}  // namespace orvo::soak
