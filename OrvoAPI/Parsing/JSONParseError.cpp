#include <OrvoAPI/Parsing/JSONParseError.h>

namespace orvo {

bool operator==(const JSONParseError::unableToParse& lhs,
                const JSONParseError::unableToParse& rhs) {
  if (lhs.type != rhs.type || lhs.value.index() != rhs.value.index()) return false;
  if (const auto* key = lhs.key()) return *key == *rhs.key();
  return std::get<JSONValue>(lhs.value).text() == std::get<JSONValue>(rhs.value).text();
}

std::string JSONParseError::description() const {
  const auto* failed = as<unableToParse>();
  if (!failed) return "unexpectedType";
  const auto* key = failed->key();
  return "unableToParse: " + failed->type + (key ? ", \"" + *key + "\"" : std::string());
}

Failure unableToParse(std::string_view type, std::string_view key) {
  return Failure{JSONParseError::unableToParse{std::string(type), std::string(key)}};
}

}  // namespace orvo
