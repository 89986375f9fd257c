#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

namespace orvo::detail {

URL RequiredMembers::url(const Member& member) {
  // There is no empty URL; what was read after a failure is not used.
  static const URL unused = *URL::parse("/");
  const auto text = member.token().string();
  auto url = text ? URL::parse(*text) : std::nullopt;
  if (!url) fail(member.fault(Wanted::string), member.key());
  return url ? *std::move(url) : unused;
}

std::optional<JSONObjects> RequiredMembers::objects(const Member& member) {
  if (failed()) return std::nullopt;
  auto found = member.requiredObjects();
  if (!found) fail(member.fault(Wanted::array), member.key());
  return found;
}

PagingMeta RequiredMembers::meta(const Member& member, std::string_view reportedDetails) {
  const auto object = member.requiredObject();
  if (!object) {
    fail(member.fault(Wanted::object), member.key());
    return {};
  }
  return meta(*object, reportedDetails);
}

PagingMeta RequiredMembers::meta(const JSONObject& json, std::string_view reportedDetails) {
  static constexpr TextIndex kKeys({"total", "limit", "offset"});
  const JSONMembers<kKeys> members(json);
  return {.total = integer(members["total"], reportedDetails),
          .limit = integer(members["limit"], reportedDetails),
          .offset = integer(members["offset"], reportedDetails)};
}

Failure RequiredMembers::failure() const {
  blame(fault_);
  return unableToParse(type_, failedKey_);
}

void RequiredMembers::drop(const JSONObject& json) const {
  blame(fault_);
  detail::drop(json);
}

}  // namespace orvo::detail
