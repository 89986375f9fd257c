#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

std::optional<PagingMeta> PagingMetaParser::parse(const JSONObject& json) {
  detail::RequiredMembers required("PagingMeta");
  const auto meta = required.meta(json, "meta");
  return required.failed() ? std::nullopt : std::optional(meta);
}

}  // namespace orvo
