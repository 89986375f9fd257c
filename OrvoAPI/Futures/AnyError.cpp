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

}  // namespace

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
    return AnyError(std::shared_ptr<const detail::ErrorBox>(
        std::make_shared<ExceptionBox>(std::current_exception())));
  }
}

}  // namespace orvo
