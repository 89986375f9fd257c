#pragma once

#include <OrvoAPI/Context/PageWalk.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace orvo {

/// A walk over a list's pages, from the first to the last. Safe to use from any thread. A cheap
/// handle that keeps its context alive: copies are the same walk; of the pages it keeps none.
///
///     Pages pages(context, context->collectionCapability("films"));
///     pages.forEach(MainQueue::shared(), [](const Shared<ItemCollection>& page) { … })
///         .onFailure(MainQueue::shared(), [](const AnyError& error) { … });
///
/// or, in a coroutine,
///
///     while (true) {
///       const auto page = co_await pages.next();
///       if (page.failed() || *page.value() == nullptr) break;
///       …
///     }
///
/// The walk ends with the list: after the page that reaches its total, and before one that would
/// not lie further on, or beyond 64 bits, so that no server makes it go round for ever.
template <Paged T>
class Pages {
 public:
  /// `first` fetches the first page; it may ask for a page of another size than the server's own,
  /// or for one in the middle of the list. The others follow with the limit that it answers with.
  Pages(std::shared_ptr<const Context> context, Capability<Shared<T>> first)
      : walk_(std::make_shared<detail::PageWalk<T>>(std::move(context), std::move(first))) {}

  /// The next page, or null after the last one.
  ///
  /// A failure leaves the walk where it stood: a further call asks for the same page again. So does
  /// one that is made before the last call has its page. Cancelling the future before it has its
  /// page drops that page and ends the walk for good: further calls fail with `URLError` -999.
  [[nodiscard]] Future<Shared<T>> next() const { return walk_->next(); }

  /// Whether there is nothing more to ask for. That a list has stopped growing shows only when its
  /// next page is asked for.
  [[nodiscard]] bool ended() const { return walk_->ended(); }

  /// Calls `task(const Shared<T>&)` on the queue with each page that is left, one call at a time;
  /// the next page is asked for when the call has returned. A task may return false to have no
  /// more.
  ///
  /// The future succeeds after the last page: with false when a task wanted no more, else with
  /// true. The first error fails it, what a task throws included; the walk can then go on where it
  /// stands. Cancelling the future before that ends the walk: a call that is running on another
  /// thread at that moment is the last, and nothing more is asked for.
  template <class F>
  Future<bool> forEach(std::shared_ptr<DispatchQueue> queue, F&& task) const {
    using Loop = detail::PageLoop<T, std::decay_t<F>>;
    return std::make_shared<Loop>(walk_, std::move(queue), std::forward<F>(task))->start();
  }
  template <class F>
  Future<bool> forEach(F&& task) const {
    return forEach(DispatchQueue::global(), std::forward<F>(task));
  }

 private:
  std::shared_ptr<detail::PageWalk<T>> walk_;
};

/// The kind of list follows from what `first` fetches, also when it is a lambda.
template <class First>
Pages(std::shared_ptr<const Context>, First)
    -> Pages<std::remove_const_t<typename std::invoke_result_t<First&>::Value::element_type>>;

}  // namespace orvo
