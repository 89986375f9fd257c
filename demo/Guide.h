#pragma once

#include <demo/Catalogue.h>
#include <demo/Documents.h>
#include <demo/Json.h>
#include <demo/Times.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// The schedule of the linear channel: without beginning or end, the same whenever it is asked for.
/// Programmes are numbered, number 0 starts in 1970. Holds the catalogue by reference. Immutable;
/// safe to use from any thread.
class Guide {
 public:
  /// Every programme is as long as stated; zero means lengths from half an hour to two hours.
  Guide(const Catalogue& catalogue, std::chrono::seconds programLength);

  /// A part of the programmes that run at some time within the range. Null for a range that would
  /// hold absurdly many.
  [[nodiscard]] std::optional<Json> part(Instant start, Instant end, const Paging& paging,
                                         Instant now) const;

  /// The programme as a video, by its identifier (`program-123`); none when it is not a programme.
  [[nodiscard]] std::optional<Product> video(std::string_view id) const;

 private:
  [[nodiscard]] std::int64_t numberAt(Instant instant) const;
  [[nodiscard]] Instant startOf(std::int64_t number) const;
  [[nodiscard]] const Product& content(std::int64_t number) const;
  [[nodiscard]] Json program(std::int64_t number, Instant now) const;

  const Catalogue& catalogue_;
  std::int64_t programSeconds_;
};

}  // namespace orvo::demo
