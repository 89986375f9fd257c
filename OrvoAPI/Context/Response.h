#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>

#include <string>
#include <utility>
#include <variant>

namespace orvo {

/// The check of a response's status.
struct Response {
  Response() = delete;

  /// A status of 400 or above. A value.
  class Error : public detail::ErrorEnumeration<Error> {
   public:
    /// The status was 400 or above.
    struct badStatus {
      using Enumeration = Error;
      int status;
      friend bool operator==(const badStatus&, const badStatus&) = default;
    };

    template <detail::CaseOf<Error> Case>
    Error(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
        : value_(std::move(value)) {}

    [[nodiscard]] std::string description() const;

    friend bool operator==(const Error& lhs, const Error& rhs) { return lhs.value_ == rhs.value_; }

   private:
    friend detail::ErrorEnumeration<Error>;
    std::variant<badStatus> value_;
  };

  /// The answer unchanged when its status is at most 399, else `Error::badStatus`.
  [[nodiscard]] static Result<HTTPResult> validate(const HTTPResult& result);
};

}  // namespace orvo
