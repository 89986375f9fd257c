#include <tool/Arguments.h>
#include <tool/Present.h>
#include <tool/WrittenDate.h>

#include <charconv>
#include <cmath>
#include <utility>

namespace orvo::tool {

namespace {

/// Those that `read` can read.
template <class Read>
Values readBy(Read read, std::string name, std::string wanted) {
  return {.name = std::move(name),
          .accepts = [read](const std::string& text) { return read(text).has_value(); },
          .wanted = std::move(wanted)};
}

std::optional<double> pixels(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  // Beyond this the library stops the process rather than make an address.
  constexpr double kLimit = 9.2e18;
  if (!std::isfinite(value) || std::abs(value) >= kLimit) return std::nullopt;
  return value;
}

}  // namespace

std::optional<Environment> environmentNamed(std::string_view text) {
  return caseNamed<Environment>(text);
}

std::optional<URL> absoluteURL(std::string_view text) {
  auto url = URL::parse(text);
  if (!url || (url->scheme() != "http" && url->scheme() != "https") || url->host().empty()) {
    return std::nullopt;
  }
  return url;
}

std::optional<URL> baseURL(std::string_view text) {
  const auto url = absoluteURL(text);
  if (!url || url->query() || url->fragment()) return std::nullopt;
  return url->path().ends_with('/') ? url : URL::parse(url->text() + "/");
}

std::optional<Date> date(std::string_view text) { return writtenDate(text, present()); }

std::optional<ImageSize> imageSize(std::string_view text) {
  const std::size_t cross = text.find('x');
  if (cross == std::string_view::npos) return std::nullopt;
  const auto width = pixels(text.substr(0, cross));
  const auto height = pixels(text.substr(cross + 1));
  if (!width || !height) return std::nullopt;
  return ImageSize{.width = *width, .height = *height};
}

Parameter identifier(std::string& target, std::string description, Listed listed) {
  return {.name = "ID",
          .description = std::move(description),
          .values = {.accepts = [](const std::string& text) { return !text.empty(); },
                     .wanted = "an identifier",
                     .identifiers = listed},
          .target = &target,
          .required = true};
}

Values baseURLs() {
  return readBy(baseURL, "URL", "an absolute http or https URL without a query");
}

Values absoluteURLs() { return readBy(absoluteURL, "URL", "an absolute http or https URL"); }

Values dates() {
  return readBy(date, "DATE", std::string("a date, like one of these: ") + kDateForms);
}

Values files(std::string name) {
  std::string wanted = name == "FILE" ? "the name of a file" : "the name of a folder";
  return {.name = std::move(name),
          .accepts = [](const std::string& text) { return !text.empty(); },
          .wanted = std::move(wanted),
          .isFile = true};
}

Values imageSizes() { return readBy(imageSize, "WxH", "a size like 600x400"); }

}  // namespace orvo::tool
