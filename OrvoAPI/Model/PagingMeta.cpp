#include <OrvoAPI/Model/PagingMeta.h>

namespace orvo {

std::optional<PagingMeta> PagingMetaParser::parse(const JSONObject& json) {
  const auto total = json.integer("total");
  const auto limit = json.integer("limit");
  const auto offset = json.integer("offset");
  if (!total || !limit || !offset) return std::nullopt;
  return PagingMeta{.total = *total, .limit = *limit, .offset = *offset};
}

}  // namespace orvo
