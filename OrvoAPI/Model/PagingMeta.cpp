#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONMembersInternal.h>

namespace orvo {

std::optional<PagingMeta> PagingMetaParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"total", "limit", "offset"});
  const detail::JSONMembers<kKeys> members(json);
  const auto total = members["total"].integer();
  const auto limit = members["limit"].integer();
  const auto offset = members["offset"].integer();
  if (!total || !limit || !offset) return std::nullopt;
  return PagingMeta{.total = *total, .limit = *limit, .offset = *offset};
}

}  // namespace orvo
