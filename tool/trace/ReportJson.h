#pragma once

#include <OrvoAPI/Context/RequestReport.h>
#include <tool/ModelJson.h>

namespace orvo::tool {

/// A report as one JSON document. What OpenTelemetry's conventions for HTTP have a name for is
/// called so; times are in seconds, and null unless it `isTimed`.
[[nodiscard]] Json reportJson(const RequestReport& report, bool isTimed);

}  // namespace orvo::tool
