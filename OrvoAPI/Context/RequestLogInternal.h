#pragma once

#include <OrvoAPI/Context/RedactionInternal.h>
#include <OrvoAPI/Context/RequestReport.h>

#include <string>

namespace orvo::detail {

/// The report in one line for a log, without a token.
[[nodiscard]] std::string requestLine(const RequestReport& report, const Redaction& redaction);

}  // namespace orvo::detail
