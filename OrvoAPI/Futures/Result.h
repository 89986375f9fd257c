#pragma once

#include <OrvoAPI/Futures/AnyError.h>

#include <concepts>
#include <type_traits>
#include <utility>
#include <variant>

namespace orvo {

template <class T>
class Result;

/// An error on its way into a `Result` of any type: `return Failure{SomeError{…}};`
struct Failure {
  AnyError error;
};

namespace detail {
template <class T>
struct IsResult : std::false_type {};
template <class T>
struct IsResult<Result<T>> : std::true_type {
  using Value = T;
};
/// The type of a `Result` made by a function that returns a value or a `Result`.
template <class R>
struct ResultOf {
  using type = Result<R>;
};
template <class T>
struct ResultOf<Result<T>> {
  using type = Result<T>;
};
}  // namespace detail

/// A success with its value or a failure with its error. A value; not thread-safe.
template <class T>
class [[nodiscard]] Result {
 public:
  using Value = T;

  // Two, so that a large record is moved once only.
  Result(const T& value)  // NOLINT(google-explicit-constructor): a value is a success
      : state_(std::in_place_index<0>, value) {}
  Result(T&& value)  // NOLINT(google-explicit-constructor)
      : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Failure failure)  // NOLINT(google-explicit-constructor)
      : state_(std::in_place_index<1>, std::move(failure.error)) {}

  [[nodiscard]] static Result success(T value) { return Result(std::move(value)); }
  [[nodiscard]] static Result failure(AnyError error) { return Result(Failure{std::move(error)}); }

  /// Calls `f` immediately: a success with what it returns, or a failure with the exception that it
  /// throws, unwrapped.
  template <class F>
  [[nodiscard]] static Result calling(F&& f) {
    try {
      return Result(std::forward<F>(f)());
    } catch (...) {
      return failure(AnyError::current());
    }
  }

  /// The success value, or null.
  [[nodiscard]] const T* value() const& { return std::get_if<0>(&state_); }
  [[nodiscard]] T* value() & { return std::get_if<0>(&state_); }
  [[nodiscard]] const T* value() const&& = delete;
  /// The failure's error, or null.
  [[nodiscard]] const AnyError* error() const& { return std::get_if<1>(&state_); }
  [[nodiscard]] const AnyError* error() const&& = delete;
  [[nodiscard]] bool failed() const { return state_.index() == 1; }

  /// Calls `f` with the success value, not at all on failure, and returns the result unchanged.
  template <class F>
  const Result& process(F&& f) const {
    if (const T* found = value()) std::forward<F>(f)(*found);
    return *this;
  }

  /// The success value transformed by `f`, which returns a value or a `Result`. An exception of `f`
  /// becomes the failure, unwrapped; a failure passes through unchanged.
  template <class F>
  [[nodiscard]] auto map(F&& f) const {
    using R = typename detail::ResultOf<std::decay_t<std::invoke_result_t<F, const T&>>>::type;
    if (failed()) return R(Failure{*error()});
    try {
      return R(std::forward<F>(f)(*value()));
    } catch (...) {
      return R(Failure{AnyError::current()});
    }
  }

  /// As `map`, for an `f` that returns a `Result`.
  template <class F>
  requires detail::IsResult<std::decay_t<std::invoke_result_t<F, const T&>>>::value
      [[nodiscard]] auto
      flatMap(F&& f) const {
    return map(std::forward<F>(f));
  }

  /// The success value; throws the error on failure, as an `ErrorException`: an `AnyError` that is
  /// a `std::exception` too.
  [[nodiscard]] const T& force() const& {
    if (failed()) throw ErrorException(*error());
    return *value();
  }
  [[nodiscard]] T force() && {
    if (failed()) throw ErrorException(*error());
    return std::move(*value());
  }

  /// The success value, or what `fallback` returns; it is called only on failure.
  template <std::invocable F>
  [[nodiscard]] T rescue(F&& fallback) const {
    return failed() ? T(std::forward<F>(fallback)()) : *value();
  }

  /// The success value; throws the error on failure. The fallback is never called, because existing
  /// callers depend on the exception; use `rescue` to fall back.
  template <std::invocable F>
  [[nodiscard]] T d_rescue(F&&) const {
    return force();
  }

 private:
  std::variant<T, AnyError> state_;
};

}  // namespace orvo
