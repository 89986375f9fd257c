#include <tool/Nearest.h>

#include <algorithm>
#include <cstddef>

namespace orvo::tool {

namespace {

char lowered(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// How many letters have to be put in, taken out, changed, or swapped with their neighbour; whether
/// they are capitals does not count.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = lowered(a[i - 1]) == lowered(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0U : 1U)});
      const bool swapped = i > 1 && j > 1 && lowered(a[i - 1]) == lowered(b[j - 2]) &&
                           lowered(a[i - 2]) == lowered(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::optional<std::string> nearest(std::string_view written,
                                   const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestName = 40;
  if (written.empty() || written.size() > kLongestName) return std::nullopt;
  std::optional<std::string> found;
  std::size_t fewest = std::max<std::size_t>(1, written.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t wrong = distance(written, candidate);
    if (wrong >= fewest) continue;
    fewest = wrong;
    found = candidate;
  }
  if (found) return found;
  const auto beginsSo = [&](const std::string& name) { return name.starts_with(written); };
  const auto first = std::ranges::find_if(candidates, beginsSo);
  const bool only = std::ranges::count_if(candidates, beginsSo) == 1;
  return only ? std::optional(*first) : std::nullopt;
}

}  // namespace orvo::tool
