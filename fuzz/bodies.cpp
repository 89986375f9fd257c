// A path of the API, on the first line, a session's token on the second, and a body that may tell
// it: what the tool gets lies beneath the API's base, and what it prints does not tell the token.

#include <demo/Json.h>
#include <fuzz/FuzzTarget.h>
#include <tool/ValueCheck.h>
#include <tool/get/ApiPath.h>
#include <tool/get/TokenMask.h>

#include <algorithm>
#include <filesystem>
#include <string>

using namespace orvo;

namespace {

/// Where a server that decodes once arrives, and takes "\" for "/".
std::string arrival(std::string_view path) {
  std::string plain;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const bool isEscape = path[i] == '%';  // of a valid address
    plain += isEscape
                 ? static_cast<char>(std::stoi(std::string(path.substr(i + 1, 2)), nullptr, 16))
                 : path[i];
    if (isEscape) i += 2;
    if (plain.back() == '\\') plain.back() = '/';
  }
  return std::filesystem::path("/" + plain).lexically_normal().string();
}

void requireBeneath(const std::string& path) {
  try {
    const auto url = tool::apiAddress(path, *URL::parse("http://host/a/v3/"));
    fuzz::require(url.host() == "host", "it is the API's host");
    fuzz::require((std::string(url.path()) + "/").starts_with("/a/v3/"), "it is the base's path");
    fuzz::require((arrival(url.path()) + "/").starts_with("/a/v3/"), "the server stays there");
  } catch (const tool::WrongUsage&) {
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto text = fuzz::text(bytes, size);
  requireBeneath(std::string(fuzz::takePiece(text)));
  const std::string token(fuzz::takePiece(text));
  // What is put in its place may be a part of it.
  if (token.size() < 8 || token.find('*') != std::string::npos) return 0;
  tool::TokenMask mask;
  mask.add(token);
  const std::string said(text);
  fuzz::require(mask.text(said).find(token) == std::string::npos, "no text tells the token");
  fuzz::require(mask.headerValue("Name", said + token).find(token) == std::string::npos,
                "no header field does");
  const auto isASCII = [](char letter) { return static_cast<unsigned char>(letter) < 0x80; };
  if (std::ranges::all_of(token, isASCII)) {
    fuzz::require(mask.text(demo::Json(token).text()) == "\"***\"", "a token in JSON is hidden");
  }
  fuzz::require(mask.text(percentEncodedQueryValue(token)) == "***", "one in an address, too");
  const auto session = tool::TokenMask().body("{\"token\":\"" + said + "\"}");
  fuzz::require(session.starts_with("{\"token\":\"***"), "and that of a session document");
  return 0;
}
