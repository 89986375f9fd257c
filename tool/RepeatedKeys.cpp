#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/RepeatedKeys.h>

#include <algorithm>
#include <set>

namespace orvo::tool {

namespace {

/// Goes through the text once; that it is valid is known.
class Search {
 public:
  Search(std::string_view json, std::size_t most) : rest_(json), most_(most) {}

  std::vector<std::string> made() {
    value();
    return std::move(found_);
  }

 private:
  bool take(char letter) {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
    if (!rest_.starts_with(letter)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void value() {
    if (take('{')) {
      object();
    } else if (take('[')) {
      array();
    } else if (take('"')) {
      (void)string();
    } else {
      rest_.remove_prefix(std::min(rest_.find_first_of(",]} \t\r\n"), rest_.size()));
    }
  }
  void object() {
    std::set<std::string> keys;
    const std::size_t length = path_.size();
    while (take('"') && found_.size() < most_) {
      const std::string key = string();
      path_ += (length > 0 ? "." : "") + key;
      if (!keys.insert(key).second) found_.push_back(path_);
      take(':');
      value();
      path_.resize(length);
      take(',');
    }
    take('}');
  }
  void array() {
    const std::size_t length = path_.size();
    for (std::size_t index = 0; !take(']') && !rest_.empty() && found_.size() < most_; ++index) {
      path_ += "[" + std::to_string(index) + "]";
      value();
      path_.resize(length);
      take(',');
    }
  }
  /// What follows the quotation mark, to the next.
  std::string string() {
    std::size_t end = 0;
    while (end < rest_.size() && rest_[end] != '"') end += rest_[end] == '\\' ? 2 : 1;
    end = std::min(end, rest_.size());
    const std::string text(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (text.find('\\') == std::string::npos) return text;
    const auto decoded = JSONDataParser::value(Data("\"" + text + "\""));
    const auto plain = decoded.failed() ? std::nullopt : decoded.value()->string();
    return plain ? std::string(*plain) : text;
  }

  std::string_view rest_;
  const std::size_t most_;
  std::string path_;
  std::vector<std::string> found_;
};

}  // namespace

std::vector<std::string> repeatedKeys(std::string_view json, std::size_t most) {
  if (json.starts_with("\xEF\xBB\xBF")) json.remove_prefix(3);
  return Search(json, most).made();
}

}  // namespace orvo::tool
