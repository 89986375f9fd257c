#include <OrvoAPI/Base/CharactersInternal.h>
#include <OrvoAPI/Context/RedactionInternal.h>
#include <OrvoAPI/Context/SubjectInternal.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace orvo::detail {
namespace {

std::string percentDecoded(std::string_view text) {
  const auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape =
        text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
    plain += isEscape ? static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
    if (isEscape) i += 2;
  }
  return plain;
}

/// A document that a parser refused, and its error shares, may be a session's.
bool sharesDocument(const AnyError& error) {
  if (const auto* const general = error.as<GeneralError>()) {
    const auto* const underlying = general->as<GeneralError::underlying>();
    return underlying != nullptr && sharesDocument(underlying->error);
  }
  const auto* const parsing = error.as<JSONParseError>();
  const auto* const failure =
      parsing != nullptr ? parsing->as<JSONParseError::unableToParse>() : nullptr;
  return failure != nullptr && failure->key() == nullptr;
}

/// What stands for an error that cannot be shown.
struct RedactedError {
  std::string text;
  [[nodiscard]] std::string description() const { return text; }
};

}  // namespace

bool Redaction::finds(std::string_view text) const {
  const auto holdsOne = [this](std::string_view plain) {
    return std::any_of(tokens_.begin(), tokens_.end(), [plain](std::string_view token) {
      return !token.empty() && plain.find(token) != std::string_view::npos;
    });
  };
  if (isEmpty()) return false;
  if (holdsOne(text)) return true;
  if (text.find('%') == std::string_view::npos) return false;
  std::string plain(text);
  while (plain.find('%') != std::string::npos) {
    auto decoded = percentDecoded(plain);
    if (decoded.size() == plain.size()) break;
    plain = std::move(decoded);
    if (holdsOne(plain)) return true;
  }
  return false;
}

void Redaction::text(std::string& text) const {
  if (finds(text)) text = kHidden;
}

void Redaction::words(std::string& text) const {
  for (const auto token : tokens_) {
    if (token.empty()) continue;
    for (auto at = text.find(token); at != std::string::npos;
         at = text.find(token, at + kHidden.size())) {
      text.replace(at, token.size(), kHidden);
    }
  }
  if (finds(text)) text = kHidden;
}

void Redaction::path(std::string& path) const {
  if (isStreamPath(path)) path = kHidden;
  if (!finds(path)) return;
  std::string shown;
  for (std::size_t begin = 0; begin <= path.size();) {
    const auto end = std::min(path.find('/', begin), path.size());
    auto segment = path.substr(begin, end - begin);
    text(segment);
    if (begin > 0) shown += '/';
    shown += segment;
    begin = end + 1;
  }
  path = finds(shown) || shown == path ? kHidden : shown;
}

AnyError Redaction::error(const AnyError& error) const {
  std::optional<ErrorContext> context;
  if (error.context() != nullptr) {
    context = *error.context();
    text(context->identifier);
    text(context->note);
  }
  const auto inContext = [&context](const AnyError& shown) {
    return context ? shown.withContext(*context) : shown;
  };
  if (const auto* const transport = error.as<URLError>()) {
    auto shown = *transport;
    shown.timeline = nullptr;
    return inContext(shown);
  }
  auto description = descriptionAlone(error);
  if (!sharesDocument(error) && !finds(description)) return inContext(error);
  words(description);
  return inContext(RedactedError{std::move(description)});
}

}  // namespace orvo::detail
