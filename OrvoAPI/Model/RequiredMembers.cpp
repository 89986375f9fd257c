#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

namespace orvo::detail {

URL RequiredMembers::url(const Member& member) {
  // There is no empty URL; what was read after a failure is not used.
  static const URL unused = *URL::parse("/");
  const auto text = member.string();
  auto url = text ? URL::parse(*text) : std::nullopt;
  if (!url) fail(member.key());
  return url ? *std::move(url) : unused;
}

std::optional<JSONObjects> RequiredMembers::objects(const Member& member) {
  if (failed()) return std::nullopt;
  auto found = member.objects();
  if (!found) fail(member.key());
  return found;
}

PagingMeta RequiredMembers::meta(const Member& member, std::string_view reportedDetails) {
  const auto object = member.object();
  if (!object) fail(member.key());
  return found(object ? PagingMetaParser::parse(*object) : std::nullopt, reportedDetails);
}

Failure RequiredMembers::failure() const { return unableToParse(type_, failedKey_); }

}  // namespace orvo::detail
