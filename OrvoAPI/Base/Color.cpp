#include <OrvoAPI/Base/CharactersInternal.h>
#include <OrvoAPI/Base/Color.h>

#include <charconv>
#include <limits>
#include <system_error>

namespace orvo {
namespace {

// The same in every locale, unlike the C library's.
std::string_view withoutHexPrefix(std::string_view text) {
  const bool prefixed = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
                        detail::isHexDigit(text[2]);
  return prefixed ? text.substr(2) : text;
}

}  // namespace

std::optional<Color> Color::fromHexString(std::string_view hexString) {
  const auto first = hexString.find_first_not_of('#');
  if (first == std::string_view::npos) return std::nullopt;
  auto text = hexString.substr(first, hexString.find_last_not_of('#') - first + 1);
  const auto start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) return std::nullopt;
  text = withoutHexPrefix(text.substr(start));

  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error == std::errc::invalid_argument) return std::nullopt;
  if (error == std::errc::result_out_of_range) value = std::numeric_limits<std::uint32_t>::max();
  return Color(value);
}

std::string Color::toHex() const {
  // An integer conversion cuts the fraction off.
  const auto digits = [](double component) { return component >= 1 ? "01" : "00"; };
  return std::string("#") + digits(red()) + digits(green()) + digits(blue());
}

}  // namespace orvo
