#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/Futures/AnyError.h>

#include <cxxabi.h>

#include <cstdlib>

namespace orvo {
namespace {

class ExceptionBox final : public detail::ErrorBox {
 public:
  explicit ExceptionBox(std::exception_ptr exception) : exception_(std::move(exception)) {}
  [[nodiscard]] const void* find(const std::type_info&) const noexcept override { return nullptr; }
  [[nodiscard]] std::exception_ptr exception() const noexcept override { return exception_; }
  [[nodiscard]] std::string description() const override {
    try {
      std::rethrow_exception(exception_);
    } catch (const std::exception& error) {
      return error.what();
    } catch (...) {
      return "an exception of unknown type";
    }
  }

 private:
  std::exception_ptr exception_;
};

/// A `std::bad_alloc` that no memory is needed for.
class OutOfMemoryBox final : public detail::ErrorBox {
 public:
  [[nodiscard]] const void* find(const std::type_info& type) const noexcept override {
    if (type == typeid(std::bad_alloc)) return &error_;
    return type == typeid(std::exception) ? static_cast<const std::exception*>(&error_) : nullptr;
  }
  [[nodiscard]] std::string description() const override { return "out of memory"; }

 private:
  const std::bad_alloc error_;
};

/// An error with what was asked for; all else is the error's.
class ContextBox final : public detail::ErrorBox {
 public:
  ContextBox(std::shared_ptr<const detail::ErrorBox> error, ErrorContext context)
      : error_(std::move(error)), context_(std::move(context)) {}
  [[nodiscard]] const void* find(const std::type_info& type) const noexcept override {
    return error_->find(type);
  }
  [[nodiscard]] std::exception_ptr exception() const noexcept override {
    return error_->exception();
  }
  [[nodiscard]] std::string description() const override {
    return error_->description() + " (" + context_.description() + ")";
  }
  [[nodiscard]] const ErrorContext* context() const noexcept override { return &context_; }
  [[nodiscard]] const std::shared_ptr<const detail::ErrorBox>& error() const { return error_; }

 private:
  const std::shared_ptr<const detail::ErrorBox> error_;
  const ErrorContext context_;
};

}  // namespace

std::string ErrorContext::description() const {
  std::string text = operation;
  if (!identifier.empty()) text.append(1, ' ').append(identifier);
  if (!note.empty()) text.append(": ").append(note);
  return text;
}

AnyError AnyError::withContext(ErrorContext context) const noexcept {
  try {
    const auto* const known = dynamic_cast<const ContextBox*>(box_.get());
    return AnyError(std::shared_ptr<const detail::ErrorBox>(std::make_shared<ContextBox>(
        known != nullptr ? known->error() : box_, std::move(context))));
  } catch (const std::bad_alloc&) {
    return *this;
  }
}

ErrorException::ErrorException(AnyError error) noexcept : AnyError(std::move(error)) {
  try {
    text_ = std::make_shared<const std::string>(description());
  } catch (const std::bad_alloc&) {
    // The error itself is there in any case.
  }
}

const char* ErrorException::what() const noexcept {
  return text_ != nullptr ? text_->c_str() : "an error that there is no memory to describe";
}

std::shared_ptr<const detail::ErrorBox> AnyError::outOfMemory() noexcept {
  static const auto* const box = new (detail::immortalPlace<OutOfMemoryBox>()) OutOfMemoryBox;
  return {std::shared_ptr<void>(), box};
}

std::string detail::readableTypeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return name ? name.get() : type.name();
}

AnyError AnyError::current() {
  try {
    throw;
  } catch (const AnyError& error) {
    return error;
  } catch (...) {
    try {
      return AnyError(std::shared_ptr<const detail::ErrorBox>(
          std::make_shared<ExceptionBox>(std::current_exception())));
    } catch (const std::bad_alloc&) {
      return AnyError(outOfMemory());
    }
  }
}

}  // namespace orvo
