#pragma once

namespace orvo::detail {

class JobNode;

/// Says that `job`, which is running, posts as its last act. When a worker of the global queue runs
/// that very job, the first one that it posts there within such a scope stays on the worker and
/// runs next, without a lock or a wakeup; after 64 in a row it queues like any other, so that
/// others get their turn. A job that runs inside another one gets no such treatment: what it posts
/// would wait for the other's end.
class TailPosition {
 public:
  explicit TailPosition(const JobNode* job);
  ~TailPosition();
  TailPosition(const TailPosition&) = delete;
  TailPosition& operator=(const TailPosition&) = delete;
};

}  // namespace orvo::detail
