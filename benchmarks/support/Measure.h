#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

/// What the benchmarks share: interleaved rounds, their medians, and the rows that
/// benchmarks/report.py makes a table of.
namespace orvo::benchmarks {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

/// Keeps the optimizer from leaving out what makes `value`.
template <class T>
inline void keep(const T& value) {
  asm volatile("" : : "r,m"(&value) : "memory");
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// What two pieces of work cost, each the median of its rounds; `ratio` is the median of the
/// rounds' own ratios, in which a slow moment of the machine touches both sides, and lies between
/// `low` and `high` with a probability of at least 95 %, as far as the rounds tell.
struct Comparison {
  double ours = 0;
  double theirs = 0;
  double ratio = 0;
  double low = 0;
  double high = 0;
};

/// Of rounds that were taken in turns.
inline Comparison comparison(const std::vector<double>& ours, const std::vector<double>& theirs) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / theirs[i]);
  std::sort(ratios.begin(), ratios.end());
  // The median lies beyond the second of nine with a probability of 10 in 512, on either side.
  const std::size_t cut = ratios.size() < 9 ? 0 : ratios.size() / 9;
  return {median(ours), median(theirs), median(ratios), ratios[cut],
          ratios[ratios.size() - 1 - cut]};
}

/// A figure of two sides, taken in turns. `ours` and `theirs` return the figure of one round.
template <std::invocable Ours, std::invocable Theirs>
Comparison inTurns(Ours&& ours, Theirs&& theirs, int rounds = 9) {
  std::vector<double> first, second;
  for (int round = 0; round < rounds; ++round) {
    // Neither side is always the one that finds the caches warm.
    if (round % 2 == 0) {
      first.push_back(ours());
      second.push_back(theirs());
    } else {
      second.push_back(theirs());
      first.push_back(ours());
    }
  }
  return comparison(first, second);
}

/// The processor time of this thread, in seconds: other processes do not count.
inline double threadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// The processor time of all threads so far, in seconds.
inline double processSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double wallSeconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// The nanoseconds of this thread that a call of `work` takes, over as many calls as fill
/// `seconds`.
template <std::invocable Work>
double nanosecondsPerCall(Work&& work, double seconds = 0.02) {
  for (std::size_t calls = 1;; calls *= 2) {
    const double begin = threadSeconds();
    for (std::size_t i = 0; i < calls; ++i) work();
    const double taken = threadSeconds() - begin;
    if (taken >= seconds) return taken * 1e9 / static_cast<double>(calls);
  }
}

/// The time of a call of both, in turns.
template <std::invocable Ours, std::invocable Theirs>
Comparison compare(Ours&& ours, Theirs&& theirs, int rounds = 9) {
  return inTurns([&] { return nanosecondsPerCall(ours); },
                 [&] { return nanosecondsPerCall(theirs); }, rounds);
}

/// The geometric mean: of ratios, the only fair one.
inline Comparison geometricMean(const std::vector<Comparison>& figures) {
  const auto mean = [&](double Comparison::*member) {
    double sum = 0;
    for (const auto& figure : figures) sum += std::log(figure.*member);
    return std::exp(sum / static_cast<double>(figures.size()));
  };
  return {kNothing, kNothing, mean(&Comparison::ratio), mean(&Comparison::low),
          mean(&Comparison::high)};
}

enum class Goal { atMost, atLeast };

/// Prints a row for the report: what was measured, in which unit, ours beside the peer's. `bound`
/// is the goal for the ratio, or for our own figure where there is no peer; `kNothing` where there
/// is no goal. `low` and `high` are of the ratio, where rounds tell them.
struct Row {
  std::string name;
  std::string unit;
  double ours = kNothing;
  std::string peer = {};
  double theirs = kNothing;
  double ratio = kNothing;
  Goal goal = Goal::atMost;
  double bound = kNothing;
  double low = kNothing;
  double high = kNothing;
};

inline void print(const Row& row) {
  std::printf("%s\t%s\t%.9g\t%s\t%.9g\t%.9g\t%s\t%.9g\t%.9g\t%.9g\n", row.name.c_str(),
              row.unit.c_str(), row.ours, row.peer.c_str(), row.theirs, row.ratio,
              row.goal == Goal::atMost ? "<=" : ">=", row.bound, row.low, row.high);
  std::fflush(stdout);
}

/// A row of a comparison in turns.
inline void print(std::string name, std::string unit, std::string peer, const Comparison& figures,
                  double bound, Goal goal = Goal::atMost) {
  print(Row{std::move(name), std::move(unit), figures.ours, std::move(peer), figures.theirs,
            figures.ratio, goal, bound, figures.low, figures.high});
}

/// A row of counts, which are the same in each round.
inline void printCounts(std::string name, std::string unit, double ours, std::string peer = {},
                        double theirs = kNothing, double bound = kNothing) {
  print(Row{std::move(name), std::move(unit), ours, std::move(peer), theirs,
            theirs > 0 ? ours / theirs : kNothing, Goal::atMost, bound});
}

}  // namespace orvo::benchmarks
