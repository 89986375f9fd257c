#pragma once

#include <OrvoAPI/Context/RequestReport.h>
#include <soak/SimulatedService.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include <tests/support/Outcome.h>

namespace orvo::soak {

/// What the library reports: the outcomes, and what is wrong with a report. Safe to use from any
/// thread.
class Reports {
 public:
  void add(const RequestReport& report) {
    auto sum = std::chrono::nanoseconds(0);
    bool isForward = true;
    for (const auto phase : report.phases) {
      sum += phase;
      isForward = isForward && phase.count() >= 0;
    }
    auto texts = report.identifier + report.path;
    for (const auto& path : report.redirects) texts += path;
    if (report.error) texts += report.error->description();
    const std::lock_guard guard(lock_);
    ++outcomes_[outcomeOf(report.error ? &*report.error : nullptr)];
    hits_ += report.source == RequestReport::Source::cache;
    if (!isForward || sum != report.total) fault_ = "the phases of a report do not add up";
    if (texts.find(kToken) != std::string::npos) fault_ = "a report tells the token";
  }
  struct Tally {
    std::map<std::string, std::uint64_t> outcomes;
    std::uint64_t hits = 0, all = 0;
    std::string fault;
  };
  [[nodiscard]] Tally tally() const {
    const std::lock_guard guard(lock_);
    Tally tally{outcomes_, hits_, 0, fault_};
    for (const auto& [outcome, count] : outcomes_) tally.all += count;
    return tally;
  }

 private:
  mutable std::mutex lock_;
  std::map<std::string, std::uint64_t> outcomes_;  // guarded by lock_
  std::uint64_t hits_ = 0;                         // guarded by lock_
  std::string fault_;                              // guarded by lock_
};

}  // namespace orvo::soak
