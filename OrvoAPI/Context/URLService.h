#pragma once

#include <OrvoAPI/Context/Client.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>
#include <OrvoAPI/HTTP/URL.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace orvo {

/// The two base URLs in use, and the fixed URLs that do not depend on content. A value;
/// thread-safe.
struct URLService {
  /// A URL that cannot be formed. A value.
  class Error : public detail::ErrorEnumeration<Error> {
   public:
    /// The input cannot become part of a URL.
    struct invalidInput {
      using Enumeration = Error;
      /// What was to become part of the URL.
      std::string input;
    };

    template <detail::CaseOf<Error> Case>
    Error(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
        : value_(std::move(value)) {}

    [[nodiscard]] std::string description() const;

   private:
    friend detail::ErrorEnumeration<Error>;
    std::variant<invalidInput> value_;
  };

  /// Makes a relative URL from a session's token.
  using URLFromToken = std::function<URL(std::string_view token)>;

  /// The API's base URL. It ends with "/", so that references resolve beneath its path.
  URL baseURL;
  /// The base URL of images.
  URL resourceURL;

  /// Where a session is opened. A base URL that no reference can be resolved against terminates the
  /// process.
  [[nodiscard]] URL session(Client client) const;

  /// The remote configuration's address; fails with `Error::invalidInput` and the client's raw
  /// value.
  [[nodiscard]] Result<URL> configuration(Client client) const;

  /// The stream's playlist, relative to the configuration's base URL of streams. Each "/" in the
  /// identifier or the token begins a segment; what a path cannot hold is percent-encoded.
  [[nodiscard]] URLFromToken videoURL(std::string id) const;

  /// The stream's ad metadata, likewise.
  [[nodiscard]] URLFromToken videoAdMetadataURL(std::string id) const;
};

}  // namespace orvo
