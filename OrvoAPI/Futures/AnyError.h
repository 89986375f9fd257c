#pragma once

#include <concepts>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace orvo {

/// The operation during which an error occurred. A value.
struct ErrorContext {
  /// The operation, such as "fetchPage".
  std::string operation;
  /// The page, video or other object that it was about; empty where there is only one.
  std::string identifier = {};
  /// Further information for the reader; may be empty.
  std::string note = {};

  /// Such as "fetchPage home".
  [[nodiscard]] std::string description() const;
};

namespace detail {

/// What an `AnyError` shares: the error object behind one pointer.
class ErrorBox {
 public:
  virtual ~ErrorBox() = default;
  [[nodiscard]] virtual const void* find(const std::type_info& type) const noexcept = 0;
  [[nodiscard]] virtual std::exception_ptr exception() const noexcept { return nullptr; }
  [[nodiscard]] virtual std::string description() const = 0;
  [[nodiscard]] virtual const ErrorContext* context() const noexcept { return nullptr; }
};

template <class E>
concept HasDescription = requires(const E& error) {
  { error.description() } -> std::convertible_to<std::string>;
};

std::string readableTypeName(const std::type_info& type);

template <class E>
class TypedErrorBox final : public ErrorBox {
 public:
  template <class From>
  explicit TypedErrorBox(From&& from) : error_(std::forward<From>(from)) {}
  [[nodiscard]] const void* find(const std::type_info& type) const noexcept override {
    return type == typeid(E) ? std::addressof(error_) : nullptr;
  }
  [[nodiscard]] std::string description() const override {
    if constexpr (HasDescription<E>) {
      return error_.description();
    } else if constexpr (std::derived_from<E, std::exception>) {
      return error_.what();
    } else {
      return readableTypeName(typeid(E));
    }
  }

 private:
  E error_;
};

/// A case of an error enumeration names its enumeration, which is what an error holds.
template <class E>
struct ErrorTypeOf {
  using type = E;
};
template <class E>
requires requires { typename E::Enumeration; }
struct ErrorTypeOf<E> {
  using type = typename E::Enumeration;
};

}  // namespace detail

/// One error of any type: cheap to copy, shared, immutable. Thread-safe.
class AnyError {
 public:
  /// Holds the error object. A case of an enumeration is held as its enumeration. If there is no
  /// memory for the error, it becomes a preallocated `std::bad_alloc`.
  template <class E>
  requires(!std::derived_from<std::remove_cvref_t<E>, AnyError> &&
           !std::same_as<std::remove_cvref_t<E>, std::exception_ptr> &&
           std::copy_constructible<std::remove_cvref_t<E>>)
      AnyError(E&& error)  // NOLINT(google-explicit-constructor): every error object is an error
      : box_(boxed(std::forward<E>(error))) {}

  /// The error of the exception that is being handled: a thrown `AnyError` unchanged, any other
  /// exception as it is.
  [[nodiscard]] static AnyError current();

  /// The error object when it is an `E`, else null; valid as long as this or a copy of it lives. A
  /// caught exception is also found by its base classes. Does not look into
  /// `GeneralError::underlying`: take the wrapped error from there.
  template <class E>
  [[nodiscard]] const E* as() const noexcept {
    if (const void* found = box_->find(typeid(E))) return static_cast<const E*>(found);
    return asException<E>();
  }
  template <class E>
  [[nodiscard]] bool is() const noexcept {
    return as<E>() != nullptr;
  }

  /// A readable text for logs and developers, with what was asked for when that is known. The
  /// library puts no session token in it.
  [[nodiscard]] std::string description() const { return box_->description(); }

  /// What was asked for, or null: the failures of a `Context`'s fetches say so, and those of the
  /// bootstrap. Valid as long as this or a copy of it lives.
  [[nodiscard]] const ErrorContext* context() const noexcept { return box_->context(); }
  /// The same error, which says that this was asked for; unchanged when there is no memory for it.
  [[nodiscard]] AnyError withContext(ErrorContext context) const noexcept;

 private:
  explicit AnyError(std::shared_ptr<const detail::ErrorBox> box) : box_(std::move(box)) {}

  template <class E>
  static std::shared_ptr<const detail::ErrorBox> boxed(E&& error) {
    using Box = detail::TypedErrorBox<typename detail::ErrorTypeOf<std::remove_cvref_t<E>>::type>;
    try {
      return std::make_shared<const Box>(std::forward<E>(error));
    } catch (const std::bad_alloc&) {
      return outOfMemory();
    }
  }
  /// Always there, so that a failure can be told when there is no memory for its error.
  [[nodiscard]] static std::shared_ptr<const detail::ErrorBox> outOfMemory() noexcept;

  template <class E>
  [[nodiscard]] const E* asException() const noexcept {
    if (const auto exception = box_->exception()) {
      try {
        std::rethrow_exception(exception);
      } catch (const E& error) {
        return std::addressof(error);  // kept alive by the box
      } catch (...) {
        return nullptr;
      }
    }
    return nullptr;
  }

  std::shared_ptr<const detail::ErrorBox> box_;
};

/// What `Result::force` and `d_rescue` throw: the error as a standard exception. Thread-safe.
class ErrorException final : public AnyError, public std::exception {
 public:
  explicit ErrorException(AnyError error) noexcept;
  /// The error's description.
  [[nodiscard]] const char* what() const noexcept override;

 private:
  std::shared_ptr<const std::string> text_;
};

}  // namespace orvo
