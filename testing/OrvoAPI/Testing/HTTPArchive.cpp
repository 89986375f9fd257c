#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Testing/HTTPArchive.h>

#include <array>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace orvo {
namespace {

using Entry = HTTPArchive::Entry;

[[noreturn]] void refuse(const std::string& place, const char* fault) {
  throw HTTPArchive::Error{place + " " + fault};
}

/// An object of the document, and where in it that stands.
struct Place {
  JSONObject json;
  std::string path;

  [[nodiscard]] std::string to(const char* key) const { return path + "." + key; }
  [[nodiscard]] Place object(const char* key) const {
    const auto found = json.object(key);
    if (!found) refuse(to(key), "is no object");
    return {*found, to(key)};
  }
  [[nodiscard]] std::string_view text(const char* key) const {
    const auto found = json.string(key);
    if (!found) refuse(to(key), "is no text");
    return *found;
  }
  /// The same for what may be left out, or null.
  [[nodiscard]] std::optional<std::string_view> optionalText(const char* key) const {
    const auto value = json.value(key);
    if (!value || value->kind() == JSONValue::Kind::null) return std::nullopt;
    return text(key);
  }
  [[nodiscard]] JSONObjects objects(const char* key) const {
    auto found = json.objects(key);
    if (!found) refuse(to(key), "is no list of objects");
    return *std::move(found);
  }
};

/// Nothing when the text is not base64.
std::optional<std::string> base64Decoded(std::string_view text) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<int, 256> values;
  values.fill(-1);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<int>(i);
  }
  for (int padding = 0; padding < 2 && text.ends_with('='); ++padding) text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  unsigned buffer = 0, bits = 0;
  for (const char c : text) {
    const int value = values[static_cast<unsigned char>(c)];
    if (value < 0) return std::nullopt;
    buffer = (buffer << 6 | static_cast<unsigned>(value)) & 0xFFFF;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(buffer >> bits & 0xFF);
  }
  return bytes;
}

HTTPHeaders headersOf(const Place& response) {
  HTTPHeaders headers;
  if (response.json.value("headers")) {
    for (const auto& field : response.objects("headers")) {
      const Place place{field, response.to("headers[]")};
      const auto name = place.text("name");
      // Browsers list HTTP/2's ":status" among them.
      if (!name.starts_with(':')) headers.add(name, place.text("value"));
    }
  }
  const auto target = response.optionalText("redirectURL");
  if (target && !target->empty() && !headers.contains("Location")) headers.add("Location", *target);
  return headers;
}

/// Nothing when the archive was saved without it.
std::optional<Data> bodyOf(const Place& content) {
  const auto text = content.optionalText("text");
  if (!text) {
    return content.json.number("size").value_or(0) > 0 ? std::nullopt : std::optional(Data());
  }
  const auto encoding = content.optionalText("encoding");
  if (!encoding || encoding->empty()) return Data(*text);
  if (*encoding != "base64") refuse(content.to("encoding"), "is not known");
  const auto bytes = base64Decoded(*text);
  if (!bytes) refuse(content.to("text"), "is no base64");
  return Data(*bytes);
}

URLError failureOf(const Place& response) {
  constexpr int kLeast = -100'000;
  const auto code = response.json.integer("_errorCode").value_or(URLError::unknown);
  const bool isCode = code < 0 && code >= kLeast;
  const auto text = response.json.string("_error").value_or("");
  return {isCode ? static_cast<int>(code) : URLError::unknown,
          text.empty() ? "the request had no answer" : std::string(text)};
}

/// Nothing for what no URL session could have sent.
std::optional<Entry> entryOf(const Place& place) {
  const auto request = place.object("request"), response = place.object("response");
  const auto url = URL::parse(request.text("url"));
  const bool isFetched = url && (url->scheme() == "http" || url->scheme() == "https");
  const auto status = response.json.integer("status");
  if (!status || *status < 0 || *status > 999) refuse(response.to("status"), "is no status");
  const auto method = request.text("method");
  if (!isFetched || url->host().empty()) return std::nullopt;

  Entry entry{.method = std::string(method), .url = url->withoutFragment()};
  if (*status == 0) {
    entry.error = failureOf(response);
    return entry;
  }
  entry.statusCode = static_cast<int>(*status);
  entry.headers = headersOf(response);
  const bool isRedirect = *status / 100 == 3 && entry.headers.contains("Location");
  const auto body = bodyOf(response.object("content"));
  if (!body && !isRedirect) entry.error = URLError{URLError::unknown, "the archive lacks its body"};
  entry.body = body.value_or(Data());
  return entry;
}

}  // namespace

Result<HTTPArchive> HTTPArchive::parse(const JSONObject& document) {
  try {
    HTTPArchive archive;
    const Place log = Place{document, "HTTP Archive"}.object("log");
    std::size_t number = 0;
    for (const auto& json : log.objects("entries")) {
      auto entry = entryOf({json, "log.entries[" + std::to_string(number++) + "]"});
      if (entry) archive.entries.push_back(*std::move(entry));
    }
    return archive;
  } catch (const Error& error) {
    return Failure{error};
  }
}

Result<HTTPArchive> HTTPArchive::parse(const Data& file) {
  if (file.size() > kMaximumSize) {
    return Failure{Error{"more than " + std::to_string(kMaximumSize) + " bytes"}};
  }
  const auto document = JSONDataParser::object(file);
  if (const auto* const error = document.error()) return Failure{*error};
  return parse(*document.value());
}

HTTPArchive HTTPArchive::read(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text;
  std::array<char, 65536> buffer;
  while (stream.read(buffer.data(), buffer.size()), stream.gcount() > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(stream.gcount()));
    if (text.size() > kMaximumSize) break;  // which `parse` refuses
  }
  if (!stream.is_open() || stream.bad()) throw std::runtime_error("cannot read " + file);
  auto archive = parse(Data(text));
  if (const auto* const error = archive.error()) {
    throw std::runtime_error(file + ": " + error->description());
  }
  return *std::move(archive.value());
}

}  // namespace orvo
