#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

namespace orvo {
namespace {

constexpr detail::TextIndex kStatusKeys({"code", "label", "message", "ttl", "start_time",
                                         "end_time"});

std::optional<Date> timeOf(const detail::JSONMember& member) {
  return member.stringAs([](std::string_view text) { return resourceTime(text); });
}

}  // namespace

Status StatusParser::parse(const JSONObject& json) {
  const detail::JSONMembers<kStatusKeys> members(json);
  const auto code = detail::caseOf<StatusCode>(members["code"].token().string());
  const auto label = members["label"].token().string();
  if (!code || !label) {
    detail::drop(json, code ? "label" : "code");
    return {};
  }
  const auto milliseconds = members["ttl"].number();
  return {.code = *code,
          .label = std::string(*label),
          .ttl = milliseconds ? *milliseconds / 1000.0 : DefaultCacheableTTL,
          .message = members["message"].text(),
          .startTime = timeOf(members["start_time"]),
          .endTime = timeOf(members["end_time"])};
}

}  // namespace orvo
