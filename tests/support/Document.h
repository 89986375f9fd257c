#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <gtest/gtest.h>

#include <cstdio>
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

/// Expects that `parse` requires the members: that it fails with the type and the member's name
/// when one is missing or of another kind. They are taken away from the last one on for good, so
/// that the order of reading shows too. "action=kind" is read as "action" and reported as "kind".
template <class Parse>
void expectRequired(const std::string& type, Document document,
                    const std::vector<std::string>& members, Parse parse) {
  for (auto member = members.rbegin(); member != members.rend(); ++member) {
    const auto key = member->substr(0, member->find('='));
    const auto expected = type + ": " + member->substr(member->find('=') + 1);
    EXPECT_EQ(failureOf(parse(document.with(key, "[7]"))), expected);
    document = document.without(key);
    EXPECT_EQ(failureOf(parse(document)), expected);
  }
}

/// Collects the console's lines while it lives.
class CapturedConsole {
 public:
  CapturedConsole() {
    setConsoleSink([this](std::string_view line) {
      lines += line;
      std::fwrite(line.data(), 1, line.size(), stdout);  // for ctest to look at
    });
  }
  CapturedConsole(const CapturedConsole&) = delete;
  CapturedConsole& operator=(const CapturedConsole&) = delete;
  ~CapturedConsole() { setConsoleSink({}); }

  std::string lines;
};

}  // namespace orvo
