#include <OrvoAPI/Context/RequestLogInternal.h>
#include <OrvoAPI/Context/SubjectInternal.h>

#include <algorithm>

namespace orvo::detail {
namespace {

/// Identifiers and errors hold what others wrote; a line of a log stays one.
void keepToOneLine(std::string& line) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
  std::replace_if(line.begin(), line.end(), isControl, ' ');
  // U+0080 to U+009F, and the separators of lines and paragraphs.
  for (std::size_t at = 0; (at = line.find_first_of("\xC2\xE2", at)) != std::string::npos; ++at) {
    const auto rest = std::string_view(line).substr(at);
    const bool isC1 = rest.size() > 1 && rest[0] == '\xC2' &&
                      static_cast<unsigned char>(rest[1]) < 0xA0;  // all of UTF-8 begins at 0x80
    if (isC1) line.replace(at, 2, 1, ' ');
    const bool isSeparator = rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9");
    if (isSeparator) line.replace(at, 3, 1, ' ');
  }
}

}  // namespace

std::string requestLine(const RequestReport& report, const Redaction& redaction) {
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
  if (report.error) line.append(": ").append(descriptionAlone(*report.error));
  redaction.words(line);
  keepToOneLine(line);
  return line;
}

}  // namespace orvo::detail
