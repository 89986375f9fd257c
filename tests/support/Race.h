#pragma once

#include <tests/support/Test.h>
#include <barrier>

namespace orvo::test {

inline constexpr int kRacers = 4;

/// Lets `kRacers` threads run `body(racer, round)`, all beginning each round at the same moment,
/// with `between(round)` run alone before each.
template <class Between, class Body>
void race(int rounds, Between between, Body body) {
  int round = -1;
  std::barrier start(kRacers, [&]() noexcept { between(++round); });
  std::vector<std::thread> threads;
  for (int racer = 0; racer < kRacers; ++racer) {
    threads.emplace_back([&, racer] {
      for (int i = 0; i < rounds; ++i) {
        start.arrive_and_wait();
        body(racer, i);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace orvo::test
