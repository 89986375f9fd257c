#include <OrvoAPI/Linear/LinearReadersInternal.h>
#include <OrvoAPI/Linear/LineupSlot.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

#include <array>
#include <iterator>

namespace orvo {

namespace detail {

LineupTemplateImages LineupSlotReader::images(const JSONMember& member) {
  using ImageKey = LineupTemplateImage::ResourceKey;
  static constexpr TextIndex kTemplateKeys({"template"});
  const auto object = member.object();
  if (!object) return {};
  const JSONMembers<kRawValues<ImageKey>> members(*object);
  KeySet<ImageKey> keys;
  std::array<std::string_view, std::size(enumCases<ImageKey>)> templates;
  for (std::size_t number = 0; number < templates.size(); ++number) {
    const auto image = members.at(number).object();
    if (!image) continue;
    const auto text = JSONMembers<kTemplateKeys>(*image)["template"].token().string();
    if (!text) {
      detail::drop(*image, "template");
      continue;
    }
    templates[keys.size()] = *text;
    keys.insert(static_cast<ImageKey>(number));
  }
  return {keys, templates.data()};
}

LineupSlotReader::LineupSlotReader(const JSONObject& json)
    : RequiredMembers("LineupSlot"),
      members_(json),
      start_(date(members_["start"])),
      end_(date(members_["end"])),
      title_(text(members_["title"])) {
  if (!failed()) readChannel();
}

Date LineupSlotReader::date(const JSONMember& member) {
  const auto string = text(member);
  if (failed()) return {};
  const auto date = eventDate(string);
  if (!date) badDate_ = string;
  return found(date, member, Wanted::string, member.key());
}

void LineupSlotReader::readChannel() {
  static constexpr TextIndex kKeys({"id", "name", "order"});
  const auto channel = members_["channel"].requiredObject();
  if (!channel) return fail(members_["channel"].fault(Wanted::object), "channel");
  const JSONMembers<kKeys> members(*channel);
  channelID_ = text(members["id"], "channel/id");
  channelName_ = text(members["name"], "channel/name");
  channelOrder_ = integer(members["order"], "channel/order");
}

Failure LineupSlotReader::failure() const {
  if (badDate_.data() == nullptr) return RequiredMembers::failure();
  const auto date = fromEventDate(badDate_);
  return Failure{*date.error()};
}

LineupSlot LineupSlotReader::record() const {
  return {.start = start_,
          .end = end_,
          .title = std::string(title_),
          .imageResources = images(members_["images"]),
          .channelID = std::string(channelID_),
          .channelName = std::string(channelName_),
          .channelOrder = channelOrder_};
}

}  // namespace detail

Result<LineupSlot> LineupSlotParser::parse(const JSONObject& json) {
  return detail::parsed<detail::LineupSlotReader>(json);
}

}  // namespace orvo
