#pragma once

#include <OrvoAPI/Queues/DispatchQueue.h>

#include <concepts>
#include <memory>
#include <utility>

namespace orvo::detail {

template <class P>
inline constexpr bool isOwner = false;
template <class O>
inline constexpr bool isOwner<std::weak_ptr<O>> = true;
template <class O>
inline constexpr bool isOwner<std::shared_ptr<O>> =
    !std::convertible_to<std::shared_ptr<O>, std::shared_ptr<DispatchQueue>>;

/// What may own a callback: a `std::weak_ptr`, or a `std::shared_ptr`, which is held weakly all the
/// same. One to a queue names the queue that a callback runs on.
template <class P>
concept Owner = isOwner<P>;

/// A callback that runs only while its owner is alive, and keeps it alive meanwhile.
template <class O, class F>
class OwnedTask {
 public:
  template <class From>
  OwnedTask(std::weak_ptr<O> owner, From&& task)
      : owner_(std::move(owner)), task_(std::forward<From>(task)) {}

  template <class Argument>
  void operator()(const Argument& argument) {
    if (const auto held = owner_.lock()) task_(argument);
  }

 private:
  std::weak_ptr<O> owner_;
  F task_;
};

template <Owner P, class F>
[[nodiscard]] auto owned(const P& owner, F&& task) {
  using O = typename P::element_type;
  return OwnedTask<O, std::decay_t<F>>(owner, std::forward<F>(task));
}

}  // namespace orvo::detail
