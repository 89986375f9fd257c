#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/detail/CoroutineState.h>

#include <coroutine>
#include <memory>
#include <utility>

/// Coroutines that await futures. Those that return a future are the library's own; others, such as
/// QCoro's, await futures, too. Not part of the umbrella header.
///
///     Future<std::string> title(std::shared_ptr<const Context> context) {
///       const auto video = co_await context->fetchVideo("film-long-thaw");
///       if (video.failed()) co_return Failure{*video.error()};
///       co_return (*video.value())->title;
///     }
///
/// `co_await` gives the future's `Result` and resumes on the future's callback queue, or on the one
/// named with `resumeOn`; never synchronously, even when the result is available. When the awaited
/// future is cancelled before it is completed, the coroutine resumes on that queue with `URLError`
/// -999.
///
/// A coroutine that returns a `Future` runs on its caller's thread until it first suspends. What it
/// returns with `co_return`, a value, a `Failure` or a `Result`, completes its future as
/// `Promise::success` and `failure` do, after its variables and parameters are destroyed. What it
/// throws fails that future, unwrapped.
///
/// The wait owns its frame. When the awaited future is destroyed without a result, or the queue
/// destroys the job that was to continue, the frame is destroyed with its variables, and the
/// coroutine's own future stays pending, as that of a dropped promise does. A coroutine that holds
/// a handle to the very future that it awaits keeps that alive: await the call itself, or
/// `std::move(variable)`, where a promise may be dropped.
///
/// Dropping or cancelling the future that a coroutine returned does not stop the coroutine; its
/// outcome is then dropped.
///
/// The frame of any other coroutine is its owner's. Destroyed while it waits, it is never resumed;
/// destroy it on the queue on which it would go on, or nothing else keeps the two apart. When the
/// awaited future is destroyed without a result it resumes on its queue with `URLError` -999; when
/// the queue destroys the job that was to continue, it stays as it is.

namespace orvo {

/// Await what it returns: `co_await` gives the future's result, and the coroutine resumes on the
/// queue.
template <class T>
[[nodiscard]] detail::FutureAwaiter<T> resumeOn(std::shared_ptr<DispatchQueue> queue,
                                                Future<T> future) {
  return {std::move(queue), std::move(future)};
}

/// Gives the future's result; the coroutine resumes on the future's callback queue.
template <class T>
[[nodiscard]] detail::FutureAwaiter<T> operator co_await(Future<T> future) {
  auto queue = future.callbackQueue();
  return resumeOn(std::move(queue), std::move(future));
}

}  // namespace orvo

template <class T, class... Arguments>
struct std::coroutine_traits<orvo::Future<T>, Arguments...> {
  using promise_type = orvo::detail::CoroutinePromise<T>;
};
