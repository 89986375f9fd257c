#pragma once

namespace orvo::detail {

/// Says that the calling function posts as its last act. The first job that reaches the global
/// queue from one of its workers within such a scope stays on that worker and runs next, without a
/// lock or a wakeup; after 64 in a row it queues like any other, so that others get their turn.
class TailPosition {
 public:
  TailPosition();
  ~TailPosition();
  TailPosition(const TailPosition&) = delete;
  TailPosition& operator=(const TailPosition&) = delete;
};

}  // namespace orvo::detail
