#pragma once

#include <demo/Catalogue.h>
#include <demo/Json.h>
#include <demo/Times.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// Where the service that serves the documents can be reached, for the addresses inside them.
struct Addresses {
  /// `http://127.0.0.1:1234/`
  std::string root;

  [[nodiscard]] std::string api() const { return root + "v3/"; }
  [[nodiscard]] std::string resources() const { return root + "resources/"; }
  [[nodiscard]] std::string streams() const { return root + "hls"; }
  [[nodiscard]] std::string lineup(std::string_view name) const;
};

/// The window of a list that was asked for.
struct Paging {
  static constexpr std::int64_t kLargestLimit = 100;

  std::int64_t limit = 20;
  std::int64_t offset = 0;
};

/// The JSON documents of the catalogue, as the service's clients read them. Holds the catalogue by
/// reference. Immutable; safe to use from any thread.
class Documents {
 public:
  Documents(const Catalogue& catalogue, Addresses addresses);

  [[nodiscard]] Json configuration() const;
  /// A video or page; null when the catalogue has none with that identifier.
  [[nodiscard]] std::optional<Json> product(std::string_view id, Instant now) const;
  [[nodiscard]] Json product(const Product& product, Instant now) const;
  [[nodiscard]] std::optional<Json> collection(std::string_view id, const Paging& paging,
                                               Instant now) const;
  /// The videos of a shelf. The part is extended until it holds the included video, if the shelf
  /// has it; an empty `including` means none.
  [[nodiscard]] std::optional<Json> playlist(std::string_view id, std::string_view including,
                                             Paging paging, Instant now) const;
  /// All kinds of results, or the one that is named.
  [[nodiscard]] Json searchResults(std::string_view query, std::string_view kind,
                                   const Paging& paging, Instant now) const;
  [[nodiscard]] Json suggestions(std::string_view query) const;
  [[nodiscard]] Json adMetadata(std::string_view videoID) const;

 private:
  [[nodiscard]] Json status(const Product& product, Instant now) const;
  [[nodiscard]] Json links(const Product& product) const;
  [[nodiscard]] Json shelves(const Product& product) const;

  const Catalogue& catalogue_;
  Addresses addresses_;
};

/// `{"total": …, "limit": …, "offset": …}`
[[nodiscard]] Json pagingSummary(std::size_t total, const Paging& paging);

}  // namespace orvo::demo
