#pragma once

#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URLRequest.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orvo::detail {

/// Builds the request of one content fetch: a path beneath the API's base URL and query items in
/// the order in which they are added.
class ContentRequest {
 public:
  /// `input` is reported when path and query make no URL.
  ContentRequest(std::string path, std::string_view input)
      : reference_(std::move(path)), input_(input) {}
  /// What has this identifier in one of the service's folders.
  [[nodiscard]] static ContentRequest of(std::string_view folder, std::string_view id) {
    return {std::string(folder).append(1, '/').append(id), id};
  }

  ContentRequest& add(std::string_view name, std::string_view value);
  /// Adds "offset" and "limit" when a part is asked for.
  ContentRequest& add(const std::optional<ListPartRequest>& page);

  /// Fails with `URLService::Error::invalidInput`. Nothing of an identifier may end up in a
  /// fragment, which would never reach the server.
  [[nodiscard]] Result<URL> url(const URL& baseURL) const;

 private:
  std::string reference_;
  std::string_view input_;
};

/// Why no reference makes a URL beneath such a base, in words.
inline constexpr std::string_view kRelativeBase = "the base URL is relative";

/// The URL with a path that ends with "/", beneath which references resolve.
[[nodiscard]] URL asBase(const URL& url);

/// A request that ignores what is cached on this device.
[[nodiscard]] URLRequest uncachedRequest(URL url, std::chrono::seconds timeout);

}  // namespace orvo::detail
