#pragma once

#include <OrvoAPI/Context/Context.h>

#include <memory>

namespace orvo {

namespace detail {
class FetchScopeState;
}

/// The fetches of one screen, or of one search: when the scope is cancelled, assigned to or
/// destroyed, everything fetched through it ends, down to the network, which frees the connections
/// for what comes next.
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
/// Cancelling the future of a fetch does neither: it drops the result only. A network provider of
/// the app's own is cancelled as far as it honours the cancellation of its futures.
///
/// Movable. `cancel` and the context may be used from any thread.
class FetchScope final {
 public:
  /// A null context terminates the process.
  explicit FetchScope(const std::shared_ptr<const Context>& context);
  FetchScope(FetchScope&&) noexcept = default;
  /// Cancels what it held before.
  FetchScope& operator=(FetchScope&& other) noexcept;
  ~FetchScope();

  /// Unchanged when the scope has ended; null only after a move.
  [[nodiscard]] const std::shared_ptr<const Context>& context() const { return context_; }

  /// May be called again.
  void cancel();
  [[nodiscard]] bool isCancelled() const;

 private:
  std::shared_ptr<detail::FetchScopeState> state_;
  std::shared_ptr<const Context> context_;
};

}  // namespace orvo
