#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <tool/CommandTable.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// The texts of the command line as the values that they stand for, and which of them an
/// option takes.

[[nodiscard]] std::optional<Environment> environmentNamed(std::string_view text);

/// An absolute http or https URL without a query, with the "/" that a base must end in.
[[nodiscard]] std::optional<URL> baseURL(std::string_view text);
[[nodiscard]] Values baseURLs();

[[nodiscard]] std::optional<URL> absoluteURL(std::string_view text);
[[nodiscard]] Values absoluteURLs();

/// In one of the forms of `kDateForms`, read now.
[[nodiscard]] std::optional<Date> date(std::string_view text);
[[nodiscard]] Values dates();

/// `600x400`, in display points; numbers that cannot be a number of pixels are refused.
[[nodiscard]] std::optional<ImageSize> imageSize(std::string_view text);
[[nodiscard]] Values imageSizes();

/// The name of a file or folder, which is not empty: that would mean none, or the root.
[[nodiscard]] Values files(std::string name = "FILE");

/// The required argument `ID`.
[[nodiscard]] Parameter identifier(std::string& target, std::string description,
                                   Listed listed = Listed::items);

/// The names of an enumeration's cases.
template <NamedEnum E>
[[nodiscard]] std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  for (const EnumCase& entry : enumCases<E>) names.emplace_back(entry.name);
  return names;
}

template <NamedEnum E>
[[nodiscard]] std::optional<E> caseNamed(std::string_view text) {
  for (std::size_t index = 0; index < std::size(enumCases<E>); ++index) {
    if (enumCases<E>[index].name == text) return static_cast<E>(index);
  }
  return std::nullopt;
}

}  // namespace orvo::tool
