#include <demo/Guide.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace orvo::demo {

namespace {

constexpr std::int64_t kSlotSeconds = 1800;
/// The starts of half a day's programmes, in slots of half an hour.
constexpr std::array<std::int64_t, 12> kStarts{0, 2, 3, 6, 7, 8, 10, 14, 15, 17, 20, 22};
constexpr std::int64_t kBlockSeconds = 24 * kSlotSeconds;
constexpr auto kPerBlock = static_cast<std::int64_t>(kStarts.size());
constexpr std::int64_t kMostPrograms = 1'000'000;
constexpr std::string_view kPrefix = "program-";

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

}  // namespace

Guide::Guide(const Catalogue& catalogue, std::chrono::seconds programLength)
    : catalogue_(catalogue), programSeconds_(programLength.count()) {}

std::int64_t Guide::numberAt(Instant instant) const {
  const std::int64_t seconds = instant.time_since_epoch().count();
  if (programSeconds_ > 0) return floorDivide(seconds, programSeconds_);
  const std::int64_t block = floorDivide(seconds, kBlockSeconds);
  const std::int64_t slot = (seconds - block * kBlockSeconds) / kSlotSeconds;
  const auto after = std::upper_bound(kStarts.begin(), kStarts.end(), slot);
  return block * kPerBlock + (after - kStarts.begin()) - 1;
}

Instant Guide::startOf(std::int64_t number) const {
  if (programSeconds_ > 0) return Instant(std::chrono::seconds(number * programSeconds_));
  const std::int64_t block = floorDivide(number, kPerBlock);
  const auto within = static_cast<std::size_t>(number - block * kPerBlock);
  return Instant(std::chrono::seconds(block * kBlockSeconds + kStarts[within] * kSlotSeconds));
}

const Product& Guide::content(std::int64_t number) const {
  const auto& episodes = catalogue_.episodes();
  const auto size = static_cast<std::int64_t>(episodes.size());
  // A step that has no divisor in common with the number of episodes, so that each has its turn
  // and neighbours come from different shows.
  constexpr std::int64_t kStep = 23;
  const std::int64_t index = ((number % size + size) % size) * kStep % size;
  return *episodes[static_cast<std::size_t>(index)];
}

Json Guide::program(std::int64_t number, Instant now) const {
  const Product& product = content(number);
  const Instant start = startOf(number);
  const Instant end = startOf(number + 1);
  return Json::object(
      {{"id", std::string(kPrefix) + std::to_string(number)},
       {"title", product.title},
       {"subheading", product.subheading},
       {"short_description", product.description},
       {"playable", start <= now},
       {"resources", Json::array({"orvo_display_art_landscape", "orvo_cover_art_landscape"})},
       {"start_time", withNumericZone(start)},
       {"end_time", withNumericZone(end)},
       {"duration", (end - start).count()}});
}

std::optional<Json> Guide::part(Instant start, Instant end, const Paging& paging,
                                Instant now) const {
  const std::int64_t first = numberAt(start);
  const std::int64_t last = end > start ? numberAt(end - std::chrono::seconds(1)) + 1 : first;
  const std::int64_t total = last - first;
  if (total > kMostPrograms) return std::nullopt;
  Json items = Json::array();
  const std::int64_t from = std::min(paging.offset, total);
  for (std::int64_t index = from; index < from + std::min(paging.limit, total - from); ++index) {
    items.push(program(first + index, now));
  }
  return Json::object({{"meta", pagingSummary(static_cast<std::size_t>(total), paging)},
                       {"items", std::move(items)}});
}

std::optional<Product> Guide::video(std::string_view id) const {
  if (!id.starts_with(kPrefix)) return std::nullopt;
  const std::string_view digits = id.substr(kPrefix.size());
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  constexpr std::int64_t kLargest = 100'000'000'000;
  if (error != std::errc() || end != digits.data() + digits.size() || std::abs(number) > kLargest) {
    return std::nullopt;
  }
  Product video = content(number);
  video.id = id;
  video.kind = "live_program";
  video.durationMilliseconds = (startOf(number + 1) - startOf(number)).count() * 1000;
  return video;
}

}  // namespace orvo::demo
