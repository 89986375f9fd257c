#pragma once

#include <tool/ModelJson.h>

#include <chrono>
#include <string>

namespace orvo::tool {

/// What one step of a checkup found out.
struct Finding {
  enum class Outcome { good, bad, skipped };

  std::string name;
  Outcome outcome = Outcome::good;
  std::chrono::nanoseconds time{0};
  /// What there is, or what went wrong.
  std::string detail{};
  /// What to do about it; may be empty.
  std::string advice{};
  /// For programs: what the detail says in words.
  Json facts{};
};

[[nodiscard]] inline Finding bad(std::string name, std::string detail, std::string advice) {
  return {.name = std::move(name),
          .outcome = Finding::Outcome::bad,
          .detail = std::move(detail),
          .advice = std::move(advice)};
}

/// `because`: what there is not, without which it makes no sense.
[[nodiscard]] inline Finding skipped(std::string name, const std::string& because) {
  return {.name = std::move(name), .outcome = Finding::Outcome::skipped, .detail = because};
}

/// The finding, with the time since `start`.
[[nodiscard]] inline Finding since(std::chrono::steady_clock::time_point start, Finding finding) {
  finding.time = std::chrono::steady_clock::now() - start;
  return finding;
}

}  // namespace orvo::tool

template <>
inline constexpr orvo::EnumCase orvo::enumCases<orvo::tool::Finding::Outcome>[] = {
    {"good"}, {"bad"}, {"skipped"}};
