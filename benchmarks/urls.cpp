// The URL of a fetch, from its identifier and its query items to the absolute text: as the
// library's fetches make it, and with uriparser alone; both keep the base. A reference with a dot
// segment is one for which the library needs the parser itself.

#include <OrvoAPI/HTTP/URL.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>
#include <uriparser/Uri.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace orvo;
using namespace orvo::benchmarks;

struct Fetch {
  std::string path;
  std::vector<std::pair<std::string, std::string>> items;
};

constexpr const char* kBase = "https://api.example/v3/";
const std::vector<Fetch> kFetches{
    {"products/3f2b6f0e-5d0c-4c7e-9b52-6a1de9d0b7aa", {}},
    {"collections/7d2e9a40-featured", {{"offset", "200"}, {"limit", "100"}}},
    {"search", {{"q", "caf\xC3\xA9 & bar"}, {"collection_type", "top_results"}}}};
const std::vector<Fetch> kWithDots{{"products/../collections/7d2e9a40", {{"limit", "100"}}}};

std::string ours(const Fetch& fetch, const URL& base) {
  std::string text = fetch.path;
  char mark = '?';
  for (const auto& [name, value] : fetch.items) {
    text += std::exchange(mark, '&');
    text.append(name).append(1, '=').append(percentEncodedQueryValue(value));
  }
  const auto url = URL::parse(text, base);
  if (!url) std::abort();
  return url->text();
}

/// A reference and how it is freed.
struct Parsed {
  UriUriA uri{};
  Parsed() = default;
  explicit Parsed(const std::string& text) {
    if (uriParseSingleUriA(&uri, text.c_str(), nullptr) != URI_SUCCESS) std::abort();
  }
  Parsed(const Parsed&) = delete;
  Parsed& operator=(const Parsed&) = delete;
  ~Parsed() { uriFreeUriMembersA(&uri); }
};

std::string escaped(const std::string& text) {
  std::string out(3 * text.size(), '\0');
  const char* const end =
      uriEscapeExA(text.data(), text.data() + text.size(), out.data(), URI_FALSE, URI_FALSE);
  out.resize(static_cast<std::size_t>(end - out.data()));
  return out;
}

std::string theirs(const Fetch& fetch, const Parsed& base) {
  std::string text = fetch.path;
  char mark = '?';
  for (const auto& [name, value] : fetch.items) {
    text += std::exchange(mark, '&');
    text.append(name).append(1, '=').append(escaped(value));
  }
  const Parsed reference(text);
  Parsed resolved;
  int length = 0;
  if (uriAddBaseUriA(&resolved.uri, &reference.uri, &base.uri) != URI_SUCCESS ||
      uriToStringCharsRequiredA(&resolved.uri, &length) != URI_SUCCESS) {
    std::abort();
  }
  std::string result(static_cast<std::size_t>(length), '\0');
  uriToStringA(result.data(), &resolved.uri, length + 1, nullptr);
  return result;
}

void measure(const std::string& name, const std::vector<Fetch>& fetches, double bound) {
  const URL base = *URL::parse(kBase);
  const std::string baseText = kBase;
  const Parsed theirBase(baseText);
  for (const auto& fetch : fetches) {
    if (ours(fetch, base) != theirs(fetch, theirBase)) std::abort();
  }
  const auto oursOnce = [&] {
    for (const auto& fetch : fetches) keep(ours(fetch, base));
  };
  const auto theirsOnce = [&] {
    for (const auto& fetch : fetches) keep(theirs(fetch, theirBase));
  };
  const auto count = static_cast<double>(fetches.size());
  if (!underCallgrind()) {
    auto times = compare(oursOnce, theirsOnce);
    times.ours /= count;
    times.theirs /= count;
    return print(name, "ns", "uriparser alone", times, bound);
  }
  const auto instructions = [count](auto&& once) {
    constexpr int kTimes = 100;
    once();
    return instructionsOf([&] {
             for (int i = 0; i < kTimes; ++i) once();
           }) /
           (kTimes * count);
  };
  const double first = instructions(oursOnce), second = instructions(theirsOnce);
  printCounts(name, "instructions", first, "uriparser alone", second, bound);
}

void measureAll() {
  measure("URL of a fetch", kFetches, 1.5);
  measure("URL of a fetch, with a dot segment", kWithDots, 1.5);
}

}  // namespace

int main(int, char** argv) {
  measureAll();
  runUnderCallgrind(argv);
}
