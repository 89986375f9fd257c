#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvo {

/// A valid URL, absolute or relative, kept byte for byte as it was written. A value; thread-safe.
/// The views that it returns are valid as long as the URL itself.
class URL {
 public:
  /// The longest text that is accepted. Far more than servers accept; it bounds the memory that a
  /// hostile document can cost.
  static constexpr std::size_t kMaximumLength = std::size_t{1} << 20;

  /// Reads an absolute or relative URL by the strict grammar of RFC 3986: no spaces, no non-ASCII,
  /// no bad percent signs. Empty is invalid.
  [[nodiscard]] static std::optional<URL> parse(std::string_view text);

  /// Reads `reference` and resolves it against an absolute `base` (RFC 3986, section 5.2).
  [[nodiscard]] static std::optional<URL> parse(std::string_view reference, const URL& base);

  /// As `parse`, for a reference that begins with a path: a ":" in its first segment does not make
  /// a scheme of it ("a:b" resolves as "./a:b").
  [[nodiscard]] static std::optional<URL> parsePath(std::string_view path, const URL& base);

  /// The reference that consists of this path, which is not empty. Characters that are not allowed
  /// in a path are percent-encoded (existing escapes stay), so that it never fails, not even by
  /// length.
  [[nodiscard]] static URL fromPath(std::string_view path);

  [[nodiscard]] const std::string& text() const { return text_; }

  /// Whether there is a scheme.
  [[nodiscard]] bool isAbsolute() const { return schemeEnd_ > 0; }

  /// Without the ":"; empty when the URL is relative.
  [[nodiscard]] std::string_view scheme() const { return part(0, schemeEnd_); }
  /// Without the brackets of an IPv6 address; empty when there is none.
  [[nodiscard]] std::string_view host() const { return part(hostBegin_, hostEnd_); }
  /// Only as written; also absent when it is empty or above 65535.
  [[nodiscard]] std::optional<std::uint16_t> port() const;
  [[nodiscard]] std::string_view path() const { return part(pathBegin_, pathEnd_); }
  /// Without the "?"; an empty query ("a?") is there, and empty.
  [[nodiscard]] std::optional<std::string_view> query() const;
  /// Without the "#".
  [[nodiscard]] std::optional<std::string_view> fragment() const;

  /// The URL with a further component after its path: exactly one "/" between the two, each "/"
  /// within `component` begins a segment. Characters that are not allowed in a path are
  /// percent-encoded (existing escapes stay); query and fragment stay after the path.
  [[nodiscard]] URL appendingPathComponent(std::string_view component) const;

  /// The URL with this query in place of its own; nothing when `query` is not a valid query.
  [[nodiscard]] std::optional<URL> withQuery(std::string_view query) const;

  [[nodiscard]] URL withoutFragment() const;

  /// Equal by text.
  friend bool operator==(const URL& lhs, const URL& rhs) { return lhs.text_ == rhs.text_; }

 private:
  URL() = default;
  explicit URL(std::string validText);
  URL(const URL& base, std::string_view plainPath);
  [[nodiscard]] bool isPlainBase() const;

  [[nodiscard]] std::string_view part(std::size_t begin, std::size_t end) const {
    return std::string_view(text_).substr(begin, end - begin);
  }

  std::string text_;
  // Positions in text_; a component that is absent is empty.
  std::uint32_t schemeEnd_ = 0;
  std::uint32_t hostBegin_ = 0;
  std::uint32_t hostEnd_ = 0;
  std::uint32_t pathBegin_ = 0;
  std::uint32_t pathEnd_ = 0;
  std::uint32_t queryEnd_ = 0;
};

/// `text` as the value of a query item. Characters that are not allowed in a query, and "+", "&",
/// "=", ";" and "%", which have a meaning there, are percent-encoded: a space is "%20", never "+".
[[nodiscard]] std::string percentEncodedQueryValue(std::string_view text);

}  // namespace orvo
