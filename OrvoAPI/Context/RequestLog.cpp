#include <OrvoAPI/Context/RequestLogInternal.h>

#include <algorithm>

namespace orvo::detail {
namespace {

/// What went wrong, without what was asked for, which the line says anyway.
std::string outcome(const AnyError& error) {
  auto text = error.description();
  if (const auto* const context = error.context()) {
    const auto known = " (" + context->description() + ")";
    if (text.ends_with(known)) text.resize(text.size() - known.size());
  }
  return text;
}

}  // namespace

std::string requestLine(const RequestReport& report) {
  std::string line(report.operation);
  if (!report.identifier.empty()) line.append(1, ' ').append(report.identifier);
  line += ": ";
  if (!report.path.empty()) line.append(report.method).append(1, ' ').append(report.path) += ": ";
  if (report.status != 0) line.append(std::to_string(report.status)) += ", ";
  const auto time = std::chrono::round<std::chrono::milliseconds>(report.total);
  line.append(std::to_string(time.count())) += " ms, ";
  const auto bytes = report.bytesReceived != 0 ? report.bytesReceived : report.bytesDecoded;
  line.append(std::to_string(bytes)) += " bytes, ";
  line += report.source == RequestReport::Source::none ? "not sent" : caseName(report.source);
  if (report.error) line.append(": ").append(outcome(*report.error));
  // Identifiers and errors hold what others wrote; a line of a log stays one.
  const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
  std::replace_if(line.begin(), line.end(), isControl, ' ');
  return line;
}

}  // namespace orvo::detail
