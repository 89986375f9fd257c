#pragma once

#include <OrvoAPI/Context/RequestReport.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <memory>
#include <vector>

namespace orvo::tool {

/// Is told what became of each request of a run: of the library's, and of the tool's own.
class RequestObserver {
 public:
  RequestObserver() = default;
  virtual ~RequestObserver() = default;
  RequestObserver(const RequestObserver&) = delete;
  RequestObserver& operator=(const RequestObserver&) = delete;

  /// Called on the queue.
  virtual void take(const RequestReport& report) = 0;
  /// Says what there is to say so far: something else is about to be said on standard error.
  virtual void flush() = 0;
  /// The same, of what has not ended, too; what is taken later is dropped. May be called again.
  virtual void close(const std::vector<RequestReport>& underWay) = 0;

  [[nodiscard]] const std::shared_ptr<SerialQueue>& queue() const { return queue_; }

 private:
  const std::shared_ptr<SerialQueue> queue_ = SerialQueue::make("orvo.reports");
};

}  // namespace orvo::tool
