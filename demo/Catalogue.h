#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::demo {

/// A video or page of the catalogue, in the service's own words.
struct Product {
  enum class Sort { video, page };

  std::string id{};
  Sort sort = Sort::video;
  std::string kind{};
  std::string title{};
  std::string subheading{};
  std::string description{};
  /// 0: none.
  std::int64_t durationMilliseconds = 0;
  /// The shelves that a page shows, or that a video belongs to; by their identifiers.
  std::vector<std::string> shelves{};
  /// The shelf that is played after the video, or nothing.
  std::string nextPlaylist{};
  /// "grid", "lineup", or nothing.
  std::string lineup{};
  /// Neighbouring pages, by their identifiers.
  std::vector<std::string> siblings{};
  /// What the page's play button plays, or nothing.
  std::string plays{};
  /// A live programme's start, counted from the present hour.
  std::optional<int> hoursFromNow{};
  /// The state set by hand, or nothing.
  std::string code{};
};

/// An ordered list of products: an item collection, and a playlist of the videos in it.
struct Shelf {
  std::string id{};
  std::string label{};
  std::string shortLabel{};
  /// "generic", "featured" or "schedule".
  std::string kind = "generic";
  /// "videos", "pages" or "mixed".
  std::string contents = "videos";
  std::vector<const Product*> items{};
};

/// All that the invented channel has to offer. Immutable; safe to use from any thread. It owns its
/// products and shelves; the pointers it hands out live as long as it does.
class Catalogue {
 public:
  static constexpr std::string_view kUpcomingEvents =
      "playlists::0b6f6a52-34b1-4c0e-9d0c-6a4f5f2f7a10";

  Catalogue();
  Catalogue(const Catalogue&) = delete;
  Catalogue& operator=(const Catalogue&) = delete;

  /// The product or shelf, or null.
  [[nodiscard]] const Product* product(std::string_view id) const;
  [[nodiscard]] const Shelf* shelf(std::string_view id) const;

  [[nodiscard]] const std::map<std::string, Product, std::less<>>& products() const {
    return products_;
  }
  /// All episodes, in the order of the shows: the stuff the linear channel is made of.
  [[nodiscard]] const std::vector<const Product*>& episodes() const { return episodes_; }

  /// The products whose texts hold the query, those with it in their title first. Case is ignored;
  /// nothing matches an empty query.
  [[nodiscard]] std::vector<const Product*> search(std::string_view query) const;

 private:
  const Product* add(Product product);
  Shelf& addShelf(std::string id, std::string label, std::string shortLabel);

  void addShows();
  void addEpisodes(std::size_t show);
  void addFilms();
  void addEvents();
  void addChannels();
  void addFormatsAndYears();
  void addSystemViews();

  std::map<std::string, Product, std::less<>> products_;
  std::map<std::string, Shelf, std::less<>> shelves_;
  std::vector<const Product*> episodes_;
  /// In the order in which they were added: the order of "everything" and of search results.
  std::vector<const Product*> inOrder_;
};

}  // namespace orvo::demo
