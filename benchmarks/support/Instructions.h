#pragma once

#include <concepts>

namespace orvo::benchmarks {

/// Goes on under callgrind, with the same arguments, when the process does not run under it yet.
/// Call it first in `main`. Exit status 2 when callgrind cannot be started.
void runUnderCallgrind(char** argv);

void startCounting();
/// Instructions in user mode since `startCounting`, of all threads.
double stopCounting();

template <std::invocable Work>
double instructionsOf(Work&& work) {
  startCounting();
  work();
  return stopCounting();
}

}  // namespace orvo::benchmarks
