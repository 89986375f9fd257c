#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

namespace orvo {

/// One case of an enumeration as text: its name, and the raw value that is used in documents and
/// URLs (by default the name; empty in an enumeration that is never transferred).
struct EnumCase {
  std::string_view name;
  std::string_view rawValue = name;
};

/// The cases of `E` in declaration order, which numbers them from 0. Each enumeration with a text
/// form specialises this with its table, next to its declaration:
///
///     template <>
///     inline constexpr EnumCase enumCases<Kind>[] = {{"clip"}, {"liveProgram", "live_program"}};
template <class E>
inline constexpr std::nullptr_t enumCases = nullptr;

/// An enumeration with a table of its cases.
template <class E>
concept NamedEnum = std::is_enum_v<E> && std::is_array_v<decltype(enumCases<E>)>;

/// An enumeration whose cases have raw values.
template <class E>
concept RawValueEnum = NamedEnum<E> && !enumCases<E>[0].rawValue.empty();

/// The case's name as spelled in the code.
template <NamedEnum E>
[[nodiscard]] constexpr std::string_view caseName(E value) {
  return enumCases<E>[static_cast<std::size_t>(value)].name;
}

/// The text that stands for the case in documents and URLs.
template <RawValueEnum E>
[[nodiscard]] constexpr std::string_view rawValue(E value) {
  return enumCases<E>[static_cast<std::size_t>(value)].rawValue;
}

/// The case with this raw value, exactly and case-sensitively; none for any other text.
template <RawValueEnum E>
[[nodiscard]] constexpr std::optional<E> fromRawValue(std::string_view text) {
  for (std::size_t i = 0; i < std::size(enumCases<E>); ++i) {
    const std::string_view value = enumCases<E>[i].rawValue;
    // Raw values of the same length mostly differ at the end.
    if (value.size() == text.size() && value.back() == text.back() && value == text) {
      return static_cast<E>(i);
    }
  }
  return std::nullopt;
}

}  // namespace orvo
