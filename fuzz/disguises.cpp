// A session's token, on the first line, and a text that must not tell it: as it is,
// percent-encoded, as JSON or in base64.

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/Json.h>
#include <fuzz/FuzzTarget.h>
#include <tool/Base64.h>
#include <tool/har/Disguise.h>

#include <cctype>
#include <string>

using namespace orvo;

namespace {

std::string percentEncoded(std::string_view text, bool all) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string out;
  for (const char character : text) {
    const auto c = static_cast<unsigned char>(character);
    if (!all && std::isalnum(c) != 0) {
      out += character;
    } else {
      out.append(1, '%').append(1, kDigits[c >> 4]).append(1, kDigits[c & 15]);
    }
  }
  return out;
}

/// What is said must be told again, with the secret's word where the secret was.
void requireHidden(tool::Disguise& disguise, const std::string& told) {
  const auto shown = disguise.text("\n" + told + "\n");
  fuzz::require(shown == "\ntoken-1\n", "the token is replaced in all its forms");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto text = fuzz::text(bytes, size);
  const std::string token(fuzz::takePiece(text));
  // The words that are put in, and what separates the parts of an address, may make a token of
  // others.
  const auto isAmbiguous = [&token](std::string_view part) {
    return token.find(part) != std::string::npos;
  };
  // A word of the API is not sought.
  const bool isWord =
      token.find_first_not_of("abcdefghijklmnopqrstuvwxyz_./348") == std::string::npos;
  if (token.size() < 8 || isWord || isAmbiguous("-") || isAmbiguous(":") || isAmbiguous("/")) {
    return -1;
  }
  tool::Disguise disguise;
  disguise.addToken(token);

  const auto shown = disguise.text(text);
  fuzz::require(shown.find(token) == std::string::npos, "no text tells the token");
  requireHidden(disguise, token);
  const auto encoded = percentEncoded(token, false);
  requireHidden(disguise, encoded);
  requireHidden(disguise, percentEncoded(token, true));
  requireHidden(disguise, percentEncoded(encoded, false));
  const auto json = demo::Json(token).text();
  const auto reread = JSONDataParser::value(Data(json));
  if (!reread.failed() && reread.value()->string() == token) {
    requireHidden(disguise, json.substr(1, json.size() - 2));
  }
  const auto base64 = tool::inBase64(token);
  fuzz::require(
      disguise.text(base64).find(base64.substr(0, 8 * token.size() / 6)) == std::string::npos,
      "the token is found in base64");
  (void)disguise.address(text, true);
  (void)disguise.playlist(text);
  (void)disguise.sessionDocument(Data(text));
  (void)disguise.field("Set-Cookie", text);
  return 0;
}
