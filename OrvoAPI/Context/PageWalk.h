#pragma once

#include <OrvoAPI/Context/Capability.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Platform/Lock.h>
#include <OrvoAPI/Platform/URLError.h>

#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvo {

/// A list that the server gives out page by page.
template <class T>
concept Paged = std::same_as<T, ItemCollection> || std::same_as<T, Playlist> ||
    std::same_as<T, SearchCollection> || std::same_as<T, LinearProgramGuide>;

}  // namespace orvo

namespace orvo::detail {

/// Where a walk stands. It holds no fetch that is under way, and is held weakly by that.
template <Paged T>
class PageWalk : public std::enable_shared_from_this<PageWalk<T>> {
  using Fetch = std::shared_ptr<const Capability<Shared<T>>>;

 public:
  PageWalk(std::shared_ptr<const Context> context, Capability<Shared<T>> first)
      : context_(std::move(context)),
        upcoming_(std::make_shared<const Capability<Shared<T>>>(std::move(first))) {}

  [[nodiscard]] Future<Shared<T>> next() {
    LockGuard guard(lock_);
    const auto fetch = upcoming_;
    const auto offset = offset_;
    const bool cancelled = cancelled_;
    guard.unlock();
    if (cancelled) return Future<Shared<T>>::failed(URLError{URLError::cancelled, "cancelled"});
    if (fetch == nullptr) return Future<Shared<T>>::succeeded(nullptr);
    const auto weak = this->weak_from_this();
    auto page = (*fetch)().map([weak, offset](const Shared<T>& came) {
      const bool isFurther = came != nullptr && (!offset || came->meta.offset > *offset);
      const auto walk = weak.lock();
      if (walk != nullptr) walk->move(offset, isFurther ? came.get() : nullptr);
      return isFurther ? came : nullptr;
    });
    page.onCancel([weak](bool completed) {
      const auto walk = weak.lock();
      if (walk != nullptr && !completed) walk->cancel();
    });
    return page;
  }

  void cancel() {
    Fetch dropped;
    const LockGuard guard(lock_);
    cancelled_ = true;
    upcoming_.swap(dropped);
  }

  [[nodiscard]] bool ended() {
    const LockGuard guard(lock_);
    return upcoming_ == nullptr;
  }

 private:
  /// From `offset`, where the walk stood when it asked, on to the page; to the end without one.
  void move(std::optional<std::int64_t> offset, const T* page) {
    Fetch following = page != nullptr ? fetchAfter(*page) : nullptr;
    const LockGuard guard(lock_);
    // Of several calls for one page the first moves the walk.
    if (cancelled_ || offset_ != offset) return;
    if (page != nullptr) offset_ = page->meta.offset;
    upcoming_.swap(following);
  }

  /// Nothing after the last page. The context stops the process when offset and limit add up beyond
  /// their range; a page without extent would be followed by itself.
  [[nodiscard]] Fetch fetchAfter(const T& page) const {
    const auto& [total, limit, offset] = page.meta;
    if (limit <= 0 || offset > std::numeric_limits<std::int64_t>::max() - limit) return nullptr;
    auto fetch = capabilityAfter(page);
    return fetch ? std::make_shared<const Capability<Shared<T>>>(std::move(*fetch)) : nullptr;
  }
  [[nodiscard]] auto capabilityAfter(const T& page) const {
    if constexpr (std::same_as<T, LinearProgramGuide>) {
      return context_->nextCapability(page);
    } else {
      return context_->nextFetchCapability(page);
    }
  }

  const std::shared_ptr<const Context> context_;
  Lock lock_;
  Fetch upcoming_ ORVO_GUARDED_BY(lock_);                      // null once the walk has ended
  std::optional<std::int64_t> offset_ ORVO_GUARDED_BY(lock_);  // of the last page, if there is one
  bool cancelled_ ORVO_GUARDED_BY(lock_) = false;
};

/// Calls a task with page after page. The callback that waits for a page holds it.
template <Paged T, class F>
class PageLoop : public std::enable_shared_from_this<PageLoop<T, F>> {
 public:
  template <class From>
  PageLoop(std::shared_ptr<PageWalk<T>> walk, std::shared_ptr<DispatchQueue> queue, From&& task)
      : walk_(std::move(walk)),
        queue_(std::move(queue)),
        outcome_(queue_),
        task_(std::forward<From>(task)) {}

  [[nodiscard]] Future<bool> start() {
    outcome_.onCancel([walk = walk_](bool completed) {
      if (!completed) walk->cancel();
    });
    askForNext();
    return outcome_;
  }

 private:
  void askForNext() {
    walk_->next().onComplete(
        queue_, [self = this->shared_from_this()](const auto& page) { self->take(page); });
  }
  void take(const Result<Shared<T>>& page) {
    if (outcome_.isCancelled()) return;
    if (page.failed()) return outcome_.failure(*page.error());
    if (*page.value() == nullptr) return outcome_.success(true);
    try {
      if (!wantsMoreAfter(*page.value())) return outcome_.success(false);
    } catch (...) {
      return outcome_.failure(AnyError::current());
    }
    if (!outcome_.isCancelled()) askForNext();
  }
  bool wantsMoreAfter(const Shared<T>& page) {
    if constexpr (std::is_void_v<std::invoke_result_t<F&, const Shared<T>&>>) {
      task_(page);
      return true;
    } else {
      return task_(page);
    }
  }

  const std::shared_ptr<PageWalk<T>> walk_;
  const std::shared_ptr<DispatchQueue> queue_;
  const Future<bool> outcome_;
  F task_;
};

}  // namespace orvo::detail
