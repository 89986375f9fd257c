#include <OrvoAPI/HTTP/StagesInternal.h>
#include <OrvoAPI/Network/URLTaskInternal.h>

#include <new>
#include <utility>

namespace orvo::detail {

/// Nobody measures when there is no memory for that.
void URLTask::beginTimeline() noexcept {
  try {
    timeline_ = std::make_shared<RequestTimeline>();
    note(timeline_->last, RequestTimeline::Stage::begun);
  } catch (const std::bad_alloc&) {
  }
}

void URLTask::noteRedirect(const HTTPURLResponse& response) noexcept {
  try {
    timeline_->redirects.push_back({timeline_->last, response, request_.url});
    timeline_->last = {};
    note(timeline_->last, RequestTimeline::Stage::begun);
  } catch (const std::bad_alloc&) {
    timeline_ = nullptr;
  }
}

void URLTask::endHop() { settleStages(timeline_->last.times, std::chrono::steady_clock::now()); }

void URLTask::endTimeline(HTTPOutcome& outcome) {
  const bool isOver = timeline_->last.at(RequestTimeline::Stage::done) != NetworkTime();
  if (!isOver) endHop();
  std::visit([this](auto& ended) { ended.timeline = std::move(timeline_); }, outcome);
}

}  // namespace orvo::detail
