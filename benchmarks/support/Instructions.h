#pragma once

#include <concepts>

namespace orvo::benchmarks {

/// Runs the program again under callgrind, with the same arguments, and ends this process with its
/// exit status; goes on when it is that second run. What comes before it runs twice, except what
/// depends on `underCallgrind`.
void runUnderCallgrind(char** argv);
[[nodiscard]] bool underCallgrind();

struct Counts {
  double instructions;  // in user mode
  double allocations;   // by `operator new`
};

void startCounting();
/// What all threads did since `startCounting`.
Counts stopCounting();

template <std::invocable Work>
Counts countsOf(Work&& work) {
  startCounting();
  work();
  return stopCounting();
}
template <std::invocable Work>
double instructionsOf(Work&& work) {
  return countsOf(work).instructions;
}

}  // namespace orvo::benchmarks
