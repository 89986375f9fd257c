#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

namespace orvo {

Result<Session> SessionParser::parse(const JSONObject& json) {
  const auto token = json.string("token");
  if (!token) return Failure{JSONParseError::unableToParse{"Session", json.asValue()}};
  return Session{.token = std::string(*token)};
}

}  // namespace orvo
