#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

namespace orvo {
namespace {

std::optional<Date> time(const JSONObject& json, std::string_view key) {
  const auto text = json.string(key);
  return text ? resourceTime(*text) : std::nullopt;
}

}  // namespace

Status StatusParser::parse(const JSONObject& json) {
  const auto codeText = json.string("code");
  const auto code = codeText ? fromRawValue<StatusCode>(*codeText) : std::nullopt;
  const auto label = code ? json.string("label") : std::nullopt;
  if (!label) return {};

  Status status{.code = *code, .label = std::string(*label)};
  status.message = json.string("message");
  if (const auto milliseconds = json.number("ttl")) status.ttl = *milliseconds / 1000.0;
  status.startTime = time(json, "start_time");
  status.endTime = time(json, "end_time");
  return status;
}

}  // namespace orvo
