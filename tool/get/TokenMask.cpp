#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/get/TokenMask.h>

#include <algorithm>
#include <array>
#include <optional>

namespace orvo::tool {

namespace {

constexpr std::string_view kMasked = "***";

std::optional<std::string> tokenOf(std::string_view body) {
  const auto json = JSONDataParser::object(Data(std::string(body)));
  if (json.failed()) return std::nullopt;
  const auto session = SessionParser::parse(*json.value());
  return session.failed() ? std::nullopt : std::optional(session.value()->token);
}

}  // namespace

void TokenMask::add(const std::string& token) { tokens_.add(token, std::string(kMasked)); }

void TokenMask::learnFrom(std::string_view body) {
  if (const auto token = tokenOf(body)) add(*token);
}

std::string TokenMask::text(std::string_view text) const { return tokens_.hiddenIn(text); }

std::string TokenMask::body(std::string_view body) const {
  const std::string shown =
      withSecretMembers(text(body), [](std::string_view) { return std::string(kMasked); });
  // The key, or the token, may be written in escapes.
  const auto left = tokenOf(shown);
  return !left || *left == kMasked ? shown : R"({"token":"***"})";
}

std::string TokenMask::headerValue(std::string_view name, std::string_view value) const {
  const std::string known = inLowerCase(name);
  const bool isSecret =
      std::ranges::any_of(std::array{"auth", "api-key", "apikey"},
                          [&](auto part) { return known.find(part) != std::string::npos; });
  if (isSecret || namesSecret(name)) return std::string(kMasked);
  if (known != "set-cookie") return text(value);
  const std::size_t begin = std::min(value.find('='), value.size());
  const std::size_t end = std::min(value.find(';', begin), value.size());
  return text(std::string(value.substr(0, begin)).append("=***").append(value.substr(end)));
}

}  // namespace orvo::tool
