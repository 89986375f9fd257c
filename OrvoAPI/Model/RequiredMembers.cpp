#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

namespace orvo {

std::string_view RequiredMembers::text(std::string_view key, std::string_view reportedKey) {
  if (failed()) return {};
  const auto found = json_.string(key);
  if (!found) fail(reportedKey);
  return found.value_or(std::string_view());
}

double RequiredMembers::number(std::string_view key) {
  if (failed()) return 0;
  const auto found = json_.number(key);
  if (!found) fail(key);
  return found.value_or(0);
}

std::int64_t RequiredMembers::integer(std::string_view key, std::string_view reportedKey) {
  if (failed()) return 0;
  const auto found = json_.integer(key);
  if (!found) fail(reportedKey);
  return found.value_or(0);
}

bool RequiredMembers::boolean(std::string_view key) {
  if (failed()) return false;
  const auto found = json_.boolean(key);
  if (!found) fail(key);
  return found.value_or(false);
}

URL RequiredMembers::url(std::string_view key) {
  // There is no empty URL; what was read after a failure is not used.
  static const URL unused = *URL::parse("/");
  const auto found = text(key);
  auto url = failed() ? std::nullopt : URL::parse(found);
  if (!url) fail(key);
  return url ? *std::move(url) : unused;
}

std::optional<JSONObjects> RequiredMembers::objects(std::string_view key) {
  if (failed()) return std::nullopt;
  auto found = json_.objects(key);
  if (!found) fail(key);
  return found;
}

PagingMeta RequiredMembers::meta(std::string_view reportedDetails) {
  if (failed()) return {};
  const auto object = json_.object("meta");
  if (!object) fail("meta");
  const auto found = object ? PagingMetaParser::parse(*object) : std::nullopt;
  if (!found) fail(reportedDetails);
  return found.value_or(PagingMeta{});
}

Failure RequiredMembers::failure() const { return unableToParse(type_, failedKey_); }

}  // namespace orvo
