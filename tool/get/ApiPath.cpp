#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <tool/get/ApiPath.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

namespace orvo::tool {

namespace {

/// What each escape of the text stands for.
std::string withoutEscapes(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char letter = 0;
    const bool isEscape =
        text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(&text[i] + 1, &text[i] + 3, letter, 16).ptr == &text[i] + 3;
    plain += isEscape ? static_cast<char>(letter) : text[i];
    if (isEscape) i += 2;
  }
  return plain;
}

/// Whether slashes that follow each other are taken for one, or for names without letters.
enum class Slashes { collapsed, kept };

/// The names that lead to the place, with all that leads back taken out; nothing when the way leads
/// out of the root.
std::optional<std::vector<std::string>> way(std::string_view path, Slashes slashes) {
  std::vector<std::string> names;
  path.remove_prefix(path.starts_with('/') ? 1 : 0);
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
    const std::string_view segment = path.substr(0, end);
    // Some servers take off what stands behind a semicolon.
    const std::string_view name = segment.substr(0, segment.find(';'));
    path.remove_prefix(std::min(end + 1, path.size()));
    if (name == "..") {
      if (names.empty()) return std::nullopt;
      names.pop_back();
    } else if (name != "." && (!name.empty() || slashes == Slashes::kept)) {
      names.emplace_back(segment);
    }
  }
  return names;
}

bool isBeneath(std::string_view path, std::string_view base) {
  return std::ranges::all_of(std::array{Slashes::collapsed, Slashes::kept}, [&](Slashes slashes) {
    const auto names = way(path, slashes);
    const auto first = way(base, slashes);
    return names && first && names->size() >= first->size() &&
           std::equal(first->begin(), first->end(), names->begin());
  });
}

/// Whether the reference stays beneath the base, however often it is decoded on its way.
bool staysBeneath(const std::string& reference, const URL& base) {
  constexpr int kMostEncodings = 8;
  std::string way(base.path());
  way.append(reference, 0, reference.find('?'));
  std::string first(base.path());
  for (int encodings = 0; encodings < kMostEncodings; ++encodings) {
    if (!isBeneath(way, first)) return false;
    std::string plain = withoutEscapes(way);
    if (plain == way) return true;
    way = std::move(plain);
    first = withoutEscapes(first);
  }
  return false;
}

}  // namespace

URL apiAddress(const std::string& path, const URL& base) {
  const std::string name = "\"" + path + "\"";
  const auto written = URL::parse(path);
  if (path.starts_with('/') || path.starts_with('\\')) {
    throw WrongUsage(name + " is not relative to the API's base: leave out the slash in front");
  }
  if (written && written->isAbsolute()) {
    throw WrongUsage(name + " is an address: write what follows the API's base");
  }
  if (path.find('#') != std::string::npos) {
    throw WrongUsage(name + " has a fragment, which is never sent: write %23 for a \"#\"");
  }
  const auto url = URL::parse(path, base);
  if (!written || !url) {
    throw WrongUsage(name +
                     " cannot be a part of an address: percent-encode what it must not hold");
  }
  const bool isSameHost =
      url->scheme() == base.scheme() && url->host() == base.host() && url->port() == base.port();
  if (!isSameHost || !isBeneath(url->path(), base.path()) || !staysBeneath(path, base)) {
    throw WrongUsage(name + " leads out of the API's base");
  }
  return *url;
}

}  // namespace orvo::tool
