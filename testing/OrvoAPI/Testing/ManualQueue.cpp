#include <OrvoAPI/Testing/ManualQueue.h>

namespace orvo {

void ManualQueue::post(Job job) {
  const std::lock_guard guard(lock_);
  jobs_.push_back(std::move(job));
  came_.notify_all();
}

void ManualQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  if (delay <= std::chrono::milliseconds(0)) return post(std::move(job));
  const std::lock_guard guard(lock_);
  delayed_.emplace(clock_->elapsed() + delay, std::move(job));
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
  std::unique_lock guard(lock_);
  return came_.wait_for(guard, limit, [this] { return !jobs_.empty(); });
}

std::size_t ManualQueue::waiting() const {
  const std::lock_guard guard(lock_);
  return jobs_.size();
}

std::size_t ManualQueue::delayed() const {
  const std::lock_guard guard(lock_);
  return delayed_.size();
}

std::optional<std::chrono::milliseconds> ManualQueue::nextDue() const {
  const std::lock_guard guard(lock_);
  return delayed_.empty() ? std::nullopt : std::optional(delayed_.begin()->first);
}

/// A job, or another queue on the same clock, may have moved it further already.
void ManualQueue::moveTo(std::chrono::milliseconds time) {
  if (time > clock_->elapsed()) clock_->advance(time - clock_->elapsed());
}

Job ManualQueue::next() {
  const std::lock_guard guard(lock_);
  while (!delayed_.empty() && delayed_.begin()->first <= clock_->elapsed()) {
    jobs_.push_back(std::move(delayed_.extract(delayed_.begin()).mapped()));
  }
  if (jobs_.empty()) return {};
  Job job = std::move(jobs_.front());
  jobs_.pop_front();
  return job;
}

}  // namespace orvo
