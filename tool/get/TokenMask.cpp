#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/get/TokenMask.h>

#include <algorithm>
#include <optional>

namespace orvo::tool {

namespace {

constexpr std::string_view kHidden = "***";

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// The text with an escape for each character that is neither a letter, nor a digit, nor `plain`.
std::string percentEncoded(std::string_view text, std::string_view plain, std::string_view digits) {
  std::string out;
  for (const char letter : text) {
    const auto code = static_cast<unsigned char>(letter);
    const bool isPlain = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                         (letter >= '0' && letter <= '9') ||
                         plain.find(letter) != std::string_view::npos;
    isPlain ? out += letter : ((out += '%') += digits[code / 16]) += digits[code % 16];
  }
  return out;
}

std::optional<std::string> tokenOf(std::string_view body) {
  const auto json = JSONDataParser::object(Data(std::string(body)));
  if (json.failed()) return std::nullopt;
  const auto session = SessionParser::parse(*json.value());
  return session.failed() ? std::nullopt : std::optional(session.value()->token);
}

bool isSpace(char letter) {
  return letter == ' ' || letter == '\t' || letter == '\n' || letter == '\r';
}

/// Where the JSON string ends that begins at `begin`, or the text.
std::size_t stringEnd(std::string_view text, std::size_t begin) {
  std::size_t end = begin;
  while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
  return std::min(end, text.size());
}

/// Hides what follows each `"token":` as a string.
std::string withoutTokenMembers(std::string_view text) {
  constexpr std::string_view kKey = "\"token\"";
  std::string out;
  std::size_t done = 0;
  for (std::size_t key; (key = text.find(kKey, done)) != std::string_view::npos;) {
    std::size_t at = key + kKey.size();
    const auto skip = [&](auto passes) {
      while (at < text.size() && passes(text[at])) ++at;
    };
    skip([](char letter) { return isSpace(letter) || letter == ':'; });
    const bool isString = at < text.size() && text[at] == '"';
    const std::size_t value = isString ? at + 1 : at;
    out.append(text.substr(done, value - done));
    if (isString) out.append(kHidden);
    done = isString ? stringEnd(text, value) : value;
  }
  return out.append(text.substr(done));
}

std::string lowered(std::string_view text) {
  std::string out(text);
  for (char& letter : out) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return out;
}

}  // namespace

void TokenMask::add(const std::string& token) {
  if (token.empty() || token == kHidden) return;
  forms_.insert(forms_.end(), {token, replaced(token, "/", "\\/")});
  for (const std::string_view digits : {"0123456789ABCDEF", "0123456789abcdef"}) {
    for (const std::string_view plain : {"-._~", "-._~/", "-._~/+=", "-._~+="}) {
      forms_.push_back(percentEncoded(token, plain, digits));
    }
  }
  std::ranges::sort(forms_);
  forms_.erase(std::unique(forms_.begin(), forms_.end()), forms_.end());
}

void TokenMask::learnFrom(std::string_view body) {
  if (const auto token = tokenOf(body)) add(*token);
}

std::string TokenMask::text(std::string text) const {
  for (const std::string& form : forms_) text = replaced(std::move(text), form, kHidden);
  return text;
}

std::string TokenMask::body(std::string_view body) const {
  std::string shown = withoutTokenMembers(text(std::string(body)));
  // The key, or the token, may be written in escapes.
  const auto left = tokenOf(shown);
  return !left || *left == kHidden ? shown : R"({"token":"***"})";
}

std::string TokenMask::headerValue(std::string_view name, std::string_view value) const {
  const std::string known = lowered(name);
  if (known.find("token") != std::string::npos || known.find("auth") != std::string::npos) {
    return std::string(kHidden);
  }
  if (known != "set-cookie") return text(std::string(value));
  const std::size_t begin = std::min(value.find('='), value.size());
  const std::size_t end = std::min(value.find(';', begin), value.size());
  return text(std::string(value.substr(0, begin)).append("=***").append(value.substr(end)));
}

}  // namespace orvo::tool
