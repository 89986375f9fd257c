#include <OrvoAPI/Linear/LineupSlot.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

#include <string_view>
#include <utility>

namespace orvo {
namespace {

constexpr std::string_view kType = "LineupSlot";

Result<Date> date(const JSONObject& json, std::string_view key) {
  const auto text = json.string(key);
  if (!text) return unableToParse(kType, key);
  return fromEventDate(*text);
}

LineupTemplateImages images(const JSONObject& json) {
  LineupTemplateImages images;
  const auto members = json.object("images");
  if (!members) return images;
  for (const auto& [name, value] : *members) {
    const auto key = fromRawValue<LineupTemplateImage::ResourceKey>(name);
    const auto object = key ? value.object() : std::nullopt;
    if (!object) continue;
    auto image = LineupTemplateImageParser::parse(*object);
    if (auto* found = image.value()) images.insert(*key, std::move(*found));
  }
  return images;
}

}  // namespace

Result<LineupSlot> LineupSlotParser::parse(const JSONObject& json) {
  const auto start = date(json, "start");
  if (start.failed()) return Failure{*start.error()};
  const auto end = date(json, "end");
  if (end.failed()) return Failure{*end.error()};
  const auto title = json.string("title");
  if (!title) return unableToParse(kType, "title");
  const auto channel = json.object("channel");
  if (!channel) return unableToParse(kType, "channel");
  const auto channelID = channel->string("id");
  if (!channelID) return unableToParse(kType, "channel/id");
  const auto channelName = channel->string("name");
  if (!channelName) return unableToParse(kType, "channel/name");
  const auto channelOrder = channel->integer("order");
  if (!channelOrder) return unableToParse(kType, "channel/order");

  return LineupSlot{.start = *start.value(),
                    .end = *end.value(),
                    .title = std::string(*title),
                    .imageResources = images(json),
                    .channelID = std::string(*channelID),
                    .channelName = std::string(*channelName),
                    .channelOrder = *channelOrder};
}

}  // namespace orvo
