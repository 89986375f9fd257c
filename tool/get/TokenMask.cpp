#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/get/TokenMask.h>

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
  const std::string users(std::string(kMasked) + "@");
  const std::string shown =
      withSecretMembers(text(withoutUsers(std::string(body), users)),
                        [](std::string_view) { return std::string(kMasked); });
  // The key, or the token, may be written in escapes.
  const auto left = tokenOf(shown);
  return !left || *left == kMasked ? shown : R"({"token":"***"})";
}

std::string TokenMask::headerValue(std::string_view name, std::string_view value) const {
  if (inLowerCase(name) == "set-cookie") {
    const auto cookie = cookieValue(value);
    const auto begin = static_cast<std::size_t>(cookie.data() - value.data());
    return text(std::string(value.substr(0, begin))
                    .append(kMasked)
                    .append(value.substr(begin + cookie.size())));
  }
  return namesSecretField(name)
             ? std::string(kMasked)
             : text(withoutUsers(std::string(value), std::string(kMasked) + "@"));
}

}  // namespace orvo::tool
