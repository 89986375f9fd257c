#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>

#include <concepts>
#include <string>

namespace orvo {

/// The check of a response's status.
struct Response {
  Response() = delete;

  /// A status that is no success. A value.
  class Error {
   public:
    struct badStatus {
      using Enumeration = Error;
      int status;
      friend bool operator==(const badStatus&, const badStatus&) = default;
    };

    Error(badStatus value)  // NOLINT(google-explicit-constructor): a case is its enumeration
        : value_(value) {}

    /// The payload when it is this case, else null.
    template <std::same_as<badStatus> Case>
    [[nodiscard]] const Case* as() const {
      return &value_;
    }
    template <std::same_as<badStatus> Case>
    [[nodiscard]] bool is() const {
      return true;
    }

    [[nodiscard]] std::string description() const {
      return "badStatus " + std::to_string(value_.status);
    }

    friend bool operator==(const Error&, const Error&) = default;

   private:
    badStatus value_;
  };

  /// The answer unchanged when its status is at most 399, else `Error::badStatus`.
  [[nodiscard]] static Result<HTTPResult> validate(const HTTPResult& result);
};

}  // namespace orvo
