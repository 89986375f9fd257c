#include <OrvoAPI/Testing/ManualQueue.h>

namespace orvo {

void ManualQueue::post(Job job) {
  jobs_.change([&](Jobs& jobs) { jobs.ready.push_back(std::move(job)); });
}

void ManualQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  if (delay <= std::chrono::milliseconds(0)) return post(std::move(job));
  const auto due = clock_->elapsed() + delay;
  jobs_.with([&](Jobs& jobs) { jobs.delayed.emplace(due, std::move(job)); });
}

bool ManualQueue::runOne() {
  Job job = next();
  if (!job) return false;
  job();
  return true;
}

std::size_t ManualQueue::run() {
  std::size_t count = 0;
  while (runOne()) ++count;
  return count;
}

std::size_t ManualQueue::advance(std::chrono::milliseconds span) {
  const auto end = clock_->elapsed() + span;
  std::size_t count = run();
  for (auto due = nextDue(); due && *due <= end; due = nextDue()) {
    moveTo(*due);
    count += run();
  }
  moveTo(end);
  return count;
}

std::size_t ManualQueue::advanceToNext() {
  if (const auto due = nextDue()) moveTo(*due);
  return run();
}

bool ManualQueue::waitForJob(std::chrono::milliseconds limit) const {
  return jobs_.waitUntil([](const Jobs& jobs) { return !jobs.ready.empty(); }, limit);
}

std::size_t ManualQueue::waiting() const {
  return jobs_.with([](const Jobs& jobs) { return jobs.ready.size(); });
}

std::size_t ManualQueue::delayed() const {
  return jobs_.with([](const Jobs& jobs) { return jobs.delayed.size(); });
}

std::optional<std::chrono::milliseconds> ManualQueue::nextDue() const {
  return jobs_.with([](const Jobs& jobs) {
    return jobs.delayed.empty() ? std::nullopt : std::optional(jobs.delayed.begin()->first);
  });
}

/// A job, or another queue on the same clock, may have moved it further already.
void ManualQueue::moveTo(std::chrono::milliseconds time) {
  if (time > clock_->elapsed()) clock_->advance(time - clock_->elapsed());
}

Job ManualQueue::next() {
  return jobs_.with([this](Jobs& jobs) -> Job {
    auto& [ready, delayed] = jobs;
    while (!delayed.empty() && delayed.begin()->first <= clock_->elapsed()) {
      ready.push_back(std::move(delayed.extract(delayed.begin()).mapped()));
    }
    if (ready.empty()) return {};
    Job job = std::move(ready.front());
    ready.pop_front();
    return job;
  });
}

}  // namespace orvo
