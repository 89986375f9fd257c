#pragma once

#include <curl/curl.h>

#include <cstddef>

namespace orvo::detail {

/// Keeps a session's cookies within bounds, since libcurl bounds only those of one answer: looked
/// at whenever as much has come in headers as a full jar could hold. When there are too many, the
/// domains that take the most lose theirs. Used on the network thread.
class CookieBound {
 public:
  /// `handle`, which shares the session's cookies, has received so many bytes of headers.
  void note(std::size_t headerBytes, CURL* handle) {
    received_ += headerBytes;
    if (received_ >= kMost) enforce(handle);
  }

 private:
  /// Bytes, with what each cookie costs beside its text.
  static constexpr std::size_t kMost = std::size_t{256} << 10;
  static constexpr std::size_t kBesideText = 256;

  void enforce(CURL* handle);

  std::size_t received_ = 0;  // since it was last looked at
};

}  // namespace orvo::detail
