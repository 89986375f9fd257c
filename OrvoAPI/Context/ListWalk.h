#pragma once

#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/detail/ListWalkState.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace orvo {

/// A list that the server returns in parts.
template <class T>
concept Listed = std::same_as<T, ItemCollection> || std::same_as<T, Playlist> ||
    std::same_as<T, SearchCollection> || std::same_as<T, LinearProgramGuide>;

/// Iterates over the parts of a list, as the server returns them, from the first to the last.
/// Thread-safe. A cheap handle that keeps its context alive; copies share their position. It keeps
/// none of the parts.
///
///     ListWalk walk(context, context->collectionCapability("films"));
///     walk.forEach(MainQueue::shared(), [](const Shared<ItemCollection>& part) { … })
///         .onFailure(MainQueue::shared(), [](const AnyError& error) { … });
///
/// or, in a coroutine,
///
///     while (true) {
///       const auto part = co_await walk.next();
///       if (part.failed() || *part.value() == nullptr) break;
///       …
///     }
///
/// The walk ends after the part that reaches the list's total. It also ends before a part whose
/// offset would not increase or would exceed 64 bits, so that no server can make it loop endlessly.
template <Listed T>
class ListWalk {
 public:
  /// `first` fetches the first part; it may ask for a part of another size than the server's own,
  /// or for one in the middle of the list. The others follow with the limit that it answers with.
  ListWalk(std::shared_ptr<const Context> context, Capability<Shared<T>> first)
      : walk_(std::make_shared<detail::ListWalkState<T>>(std::move(context), std::move(first))) {}

  /// The next part, or null after the last one.
  ///
  /// A failure leaves the walk where it stood: a further call asks for the same part again. So does
  /// one that is made before the last call has its part. Cancelling the future before it has its
  /// part drops that part and ends the walk for good: further calls fail with `URLError` -999.
  [[nodiscard]] Future<Shared<T>> next() const { return walk_->next(); }

  /// Whether there is nothing more to ask for. That a list has stopped growing shows only when its
  /// next part is asked for.
  [[nodiscard]] bool ended() const { return walk_->ended(); }

  /// Calls `task(const Shared<T>&)` on the queue with each remaining part, one call at a
  /// time; the next part is asked for when the call has returned. A task may return false to
  /// stop.
  ///
  /// The future succeeds after the last part: with false when a task wanted no more, else with
  /// true. The first error fails it, what a task throws included; the walk can then go on where it
  /// stands. Cancelling the future before that ends the walk: a call that is running on another
  /// thread at that moment is the last, and nothing more is asked for.
  template <class F>
  Future<bool> forEach(std::shared_ptr<DispatchQueue> queue, F&& task) const {
    using Loop = detail::ListWalkLoop<T, std::decay_t<F>>;
    return std::make_shared<Loop>(walk_, std::move(queue), std::forward<F>(task))->start();
  }
  template <class F>
  Future<bool> forEach(F&& task) const {
    return forEach(DispatchQueue::global(), std::forward<F>(task));
  }

 private:
  std::shared_ptr<detail::ListWalkState<T>> walk_;
};

/// The kind of list follows from what `first` fetches, also when it is a lambda.
template <class First>
ListWalk(std::shared_ptr<const Context>, First)
    -> ListWalk<std::remove_const_t<typename std::invoke_result_t<First&>::Value::element_type>>;

}  // namespace orvo
