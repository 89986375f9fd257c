#pragma once

#include <OrvoAPI/Context/Context.h>

#include <memory>

namespace orvo {

namespace detail {
class FetchScopeState;
}

/// What belongs to one screen, or to one search: when it is cancelled, assigned another or
/// destroyed, all that was fetched through it ends, down to the network, and what comes next finds
/// the connections free.
///
///     class Screen {
///       orvo::FetchScope scope_{app.context};  // made with the screen, and gone with it
///       …
///       scope_.context()->fetchPage("view-discover").onComplete(mainQueue, weak_from_this(), …);
///
/// Its context shares session, configuration, caches, the app's values and logger with the one that
/// it was made from, and can do all that a context can. Once the scope is cancelled:
///   - what was under way fails with `URLError` -999, unless its answer was there already. It
///     sends and receives nothing more, and nothing stays pending. The session's renewal goes on,
///     and its token and the caches stay, as they belong to all.
///   - everything asked of its context, by what holds it still, by its capabilities, walks and
///     monitors, fails at once with -999, cached or not.
///
/// Cancelling the future of a fetch does neither: it drops the result only. What the app has
/// replaced a network provider with is cancelled as far as it heeds a future's cancel.
///
/// Movable. `cancel` and the context may be used from any thread.
class FetchScope final {
 public:
  /// A null context stops the process.
  explicit FetchScope(const std::shared_ptr<const Context>& context);
  FetchScope(FetchScope&&) noexcept = default;
  /// Cancels what it held before.
  FetchScope& operator=(FetchScope&& other) noexcept;
  ~FetchScope();

  /// Stays what it is when the scope has ended; null only when that was moved from.
  [[nodiscard]] const std::shared_ptr<const Context>& context() const { return context_; }

  /// May be called again.
  void cancel();
  [[nodiscard]] bool isCancelled() const;

 private:
  std::shared_ptr<detail::FetchScopeState> state_;
  std::shared_ptr<const Context> context_;
};

}  // namespace orvo
