#pragma once

#include <OrvoAPI/Futures/detail/DerivedStates.h>

#include <memory>
#include <utility>
#include <vector>

namespace orvo::detail {

/// Collects the values of its inputs, in their order: it waits for one after another, each on that
/// input's own callback queue, and lets go of an input when it begins to wait for it: that input's
/// list owns this state from then on. Its cancellation reaches the first input only, and only until
/// that one's result has come.
template <class T>
class ConcatState final : public DerivedState<std::vector<T>> {
 public:
  explicit ConcatState(std::vector<Future<T>> inputs)
      : DerivedState<std::vector<T>>(inputs.front().callbackQueue(), *inputs.front().core_.get()),
        inputs_(std::move(inputs)),
        queue_(this->callbackQueue()) {
    values_.reserve(inputs_.size());
    inputs_.front().core_ = {};
  }

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override { return queue_; }

  void run() override {
    auto self = CoreRef<ConcatState>::adopt(this);
    const auto* result = static_cast<const Result<T>*>(this->sourceResult());
    this->leaveSource();
    for (;;) {
      if (result->failed()) return finish(Failure{*result->error()});
      try {
        values_.push_back(*result->value());
      } catch (...) {
        return finish(Failure{AnyError::current()});
      }
      if (values_.size() == inputs_.size()) return finish(std::move(values_));
      const auto& input = inputs_[values_.size()];
      result = input.core_->result();
      if (result == nullptr || input.callbackQueue() != queue_) break;
    }
    this->releaseSource();
    const auto input = std::move(inputs_[values_.size()].core_);
    queue_ = input->callbackQueue();
    self.detach()->waitLastFor(*input.get());
  }

 private:
  void finish(Result<std::vector<T>> result) {
    inputs_.clear();
    this->releaseSource();
    this->settleLast(std::move(result));
  }
  void destroyTask() noexcept override {
    inputs_.clear();
    values_.clear();
  }

  std::vector<Future<T>> inputs_;
  std::vector<T> values_;
  std::shared_ptr<DispatchQueue> queue_;
};

}  // namespace orvo::detail
