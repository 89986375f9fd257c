// What identifiers, queries and tokens become on the wire: the first line is an identifier, the
// second a query, the third a token, the rest a reference to resolve.

#include <OrvoAPI/HTTP/URL.h>
#include <fuzz/FuzzTarget.h>

#include <algorithm>
#include <string>

#include <tests/Context/StubbedContext.h>

using namespace orvo;

namespace {

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    if (text[0] == '%' && text.size() >= 3) {
      decoded += static_cast<char>(std::stoi(std::string(text.substr(1, 2)), nullptr, 16));
      text.remove_prefix(3);
    } else {
      decoded += text[0];
      text.remove_prefix(1);
    }
  }
  return decoded;
}

bool isDotSegment(std::string_view segment) { return segment == "." || segment == ".."; }

/// Whether the identifier is nothing but path, so that it must arrive as it was given.
bool isPlainPath(std::string_view id) {
  if (id.find_first_of("?#") != std::string_view::npos) return false;
  while (true) {
    const auto rest = id.find('/');
    if (isDotSegment(id.substr(0, rest))) return false;
    if (rest == std::string_view::npos) return true;
    id.remove_prefix(rest + 1);
  }
}

void checkIdentifier(std::string_view id) {
  StubbedContext stubbed;
  const auto page = stubbed.context->fetchPage(id);
  const auto list =
      stubbed.context->fetchItemCollection(id, {.page = ListPartRequest{.offset = 1, .limit = 2}});
  const auto sent = stubbed.requests();
  fuzz::require(sent == 0 || sent == 2, "an identifier makes a URL of both or of neither");
  if (sent == 0) return;
  const URL pageURL = stubbed.network->request(0).url;
  const URL listURL = stubbed.network->request(1).url;
  for (const URL& url : {pageURL, listURL}) {
    fuzz::require(url.scheme() == "https" && url.host() == "api.example" && !url.port(),
                  "an identifier never chooses the host");
    fuzz::require(!url.fragment(), "nothing ends up in a fragment");
    fuzz::require(URL::parse(url.text()) == url, "what is sent reads back");
  }
  fuzz::require(listURL.query()->ends_with("offset=1&limit=2"), "paging comes last");
  if (!isPlainPath(id)) return;
  fuzz::require(pageURL.path() == "/v3/products/" + std::string(id) && !pageURL.query(),
                "an identifier arrives as it was given");
  fuzz::require(listURL.path() == "/v3/collections/" + std::string(id) &&
                    listURL.query() == "offset=1&limit=2",
                "in front of the paging too");
}

void checkQuery(std::string_view query) {
  StubbedContext stubbed;
  const auto found =
      stubbed.context->fetchSearchCollection(query, SearchCollection::ResultsKind::top,
                                             {.page = ListPartRequest{.offset = 1, .limit = 2}});
  fuzz::require(stubbed.requests() == 1, "every text can be searched for");
  const URL url = stubbed.network->request(0).url;
  auto items = *url.query();
  const auto item = fuzz::takePiece(items, '&');
  fuzz::require(item.starts_with("q=") && percentDecoded(item.substr(2)) == query,
                "the server sees the text that was searched for");
  fuzz::require(items == "collection_type=top_results&offset=1&limit=2",
                "and nothing that the text brought along");
}

void checkStream(std::string_view id, std::string_view token) {
  StubbedContext stubbed;
  stubbed.session->setToken(std::string(token));
  const URL url = stubbed.context->videoURL(id);
  fuzz::require(url.host() == "hls.example" && url.path().starts_with("/live/") &&
                    url.path().ends_with("/playlist.m3u8") && url.query() == "q=1",
                "a stream lies beneath the streams' base URL");
  fuzz::require(URL::parse(url.text()) == url, "a stream's address reads back");
}

void checkReference(std::string_view reference) {
  const URL base = *URL::parse("https://host.example:8080/a/b/c?d#e");
  const auto url = URL::parse(reference);
  const auto resolved = URL::parse(reference, base);
  fuzz::require(url.has_value() == resolved.has_value(), "what is a reference can be resolved");
  if (!url) return;
  fuzz::require(url->text() == reference, "a URL's text is kept byte for byte");
  fuzz::require(resolved->isAbsolute() && URL::parse(resolved->text()) == resolved,
                "what was resolved reads back");
  fuzz::require(URL::parse(resolved->text(), base) == resolved, "and is resolved already");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto rest = fuzz::text(bytes, size);
  const auto id = fuzz::takePiece(rest), query = fuzz::takePiece(rest),
             token = fuzz::takePiece(rest);
  checkIdentifier(id);
  checkQuery(query);
  checkStream(id, token);
  checkReference(rest);
  return 0;
}
