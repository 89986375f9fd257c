#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

/// Requests and what was answered, as a file in the format HTTP Archive 1.2 (HAR) tells it: what
/// browsers' developer tools save, and what `orvo --record` writes. A value.
struct HTTPArchive {
  /// Bytes of a file beyond which it is refused.
  static constexpr std::size_t kMaximumSize = std::size_t{64} << 20;

  /// One request. What a redirect led to is an entry of its own.
  struct Entry {
    std::string method;
    /// Absolute, http or https.
    URL url;
    int statusCode = 0;
    /// Of the answer; some may say how its body was coded before it was decoded.
    HTTPHeaders headers = {};
    /// As decoded.
    Data body = {};
    /// In place of an answer: the request failed, or the archive was saved without the body.
    std::optional<URLError> error = std::nullopt;
  };

  /// What is wrong with a file that is no archive. A value.
  struct Error {
    /// For people: where in the document, and what.
    std::string message;
    [[nodiscard]] std::string description() const { return message; }
    friend bool operator==(const Error&, const Error&) = default;
  };

  /// Fails with `Error`, with `JSONReaderError` or with `URLError` -1103 (`JSONDataParser`).
  [[nodiscard]] static Result<HTTPArchive> parse(const Data& file);
  /// Reads a document that is there already; fails with `Error`.
  [[nodiscard]] static Result<HTTPArchive> parse(const JSONObject& document);
  /// Throws `std::runtime_error`, which names the file, when it cannot be read.
  [[nodiscard]] static HTTPArchive read(const std::string& file);

  /// In the order of the file. Those that no URL session could send are left out: `data:` and
  /// `blob:` addresses, WebSockets, and what is no valid URL.
  std::vector<Entry> entries = {};
};

}  // namespace orvo
