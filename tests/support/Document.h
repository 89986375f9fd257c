#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

inline JSONObject object(std::string_view text) {
  return JSONDataParser::object(Data(text)).force();
}

/// A JSON object written down member by member, so that a test can change one of them.
class Document {
 public:
  using Members = std::vector<std::pair<std::string, std::string>>;

  Document(std::initializer_list<Members::value_type> members) : members_(members) {}

  [[nodiscard]] Document without(std::string_view key) const {
    Document changed = *this;
    std::erase_if(changed.members_, [key](const auto& member) { return member.first == key; });
    return changed;
  }
  [[nodiscard]] Document with(std::string_view key, std::string_view json) const {
    Document changed = without(key);
    changed.members_.emplace_back(key, json);
    return changed;
  }
  [[nodiscard]] std::string text() const {
    std::string text = "{";
    for (const auto& [key, json] : members_) {
      text += (text.size() > 1 ? ",\"" : "\"") + key + "\":" + json;
    }
    return text + "}";
  }
  operator JSONObject() const { return object(text()); }

 private:
  Members members_;
};

/// "Video: title" for a parser's failure that names a key, "" for a success.
inline std::string failureOf(const AnyError& error) {
  const auto* parsing = error.as<JSONParseError>();
  const auto* details = parsing ? parsing->as<JSONParseError::unableToParse>() : nullptr;
  return details && details->key() ? details->type + ": " + *details->key() : error.description();
}
template <class T>
std::string failureOf(const Result<T>& result) {
  return result.failed() ? failureOf(*result.error()) : "";
}

/// The failures of `parse` when each of the members is missing, and, if they differ, when it is of
/// another kind: "Video: id, Video: title"; "ok" where a member is not required. They are taken
/// away from the last one on for good, so that the order of reading shows too.
template <class Parse>
std::string requirements(Document document, std::vector<std::string> keys, Parse parse) {
  std::string text;
  for (; !keys.empty(); keys.pop_back()) {
    const auto mistyped = failureOf(parse(document.with(keys.back(), "[7]")));
    document = document.without(keys.back());
    const auto missing = failureOf(parse(document));
    const auto both = missing == mistyped ? missing : missing + " / " + mistyped;
    text.insert(0, (keys.size() > 1 ? ", " : "") + (both.empty() ? "ok" : both));
  }
  return text;
}

/// Collects the console's lines while it lives.
class CapturedConsole {
 public:
  CapturedConsole() {
    setConsoleSink([this](std::string_view line) { lines += line; });
  }
  CapturedConsole(const CapturedConsole&) = delete;
  CapturedConsole& operator=(const CapturedConsole&) = delete;
  ~CapturedConsole() { setConsoleSink({}); }

  std::string lines;
};

}  // namespace orvo
