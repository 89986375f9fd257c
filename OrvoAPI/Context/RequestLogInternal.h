#pragma once

#include <OrvoAPI/Context/RequestReport.h>

#include <string>

namespace orvo::detail {

/// The report in one line for a log.
[[nodiscard]] std::string requestLine(const RequestReport& report);

}  // namespace orvo::detail
