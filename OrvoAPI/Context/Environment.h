#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>

#include <array>
#include <string_view>

namespace orvo {

/// A deployment of the service. A value; everything here may be called from any thread.
enum class Environment { production, qa, staging };

template <>
inline constexpr EnumCase enumCases<Environment>[] = {
    {"production", ""}, {"qa", ""}, {"staging", ""}};

/// All deployments, in the order in which they are offered for choice.
inline constexpr std::array allEnvironments{Environment::production, Environment::qa,
                                            Environment::staging};

/// The name for people: "Production", "QA" or "Staging".
[[nodiscard]] std::string_view name(Environment environment);

/// The base URL of the deployment's API, compiled in; it ends with "/". Lives as long as the
/// process.
[[nodiscard]] const URL& url(Environment environment);

/// The base URL of images, one for all deployments, compiled in; it ends with "/". Lives as long as
/// the process.
[[nodiscard]] const URL& resourceURL(Environment environment);

}  // namespace orvo
