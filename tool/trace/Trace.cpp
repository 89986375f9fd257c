#include <tool/JsonLines.h>
#include <tool/trace/ReportJson.h>
#include <tool/trace/Trace.h>
#include <tool/trace/Waterfall.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace orvo::tool {

Trace::Trace(const Tool& tool)
    : tool_(tool), isReplayed_(!tool.options().bootstrap.session.protocolClasses.empty()) {}

void Trace::take(const RequestReport& report) {
  if (isClosed_) return;
  if (tool_.options().json) {
    printJsonLine(Json::object({{"trace", reportJson(report, !isReplayed_)}}));
  } else if (reports_.size() < kMost) {
    reports_.push_back(report);
  } else {
    ++leftOut_;
  }
}

void Trace::print() {
  if (reports_.empty()) return;
  Screen screen(standardError());
  isReplayed_ ? drawReplayed(screen, reports_, leftOut_)
              : drawWaterfall(screen, std::move(reports_), leftOut_);
  printDiagnostic(screen.text());
  reports_.clear();
  leftOut_ = 0;
}

void Trace::flush() {
  queue()->sync([this] { print(); });
}

void Trace::close(const std::vector<RequestReport>& underWay) {
  queue()->sync([&] {
    // With all that there may be, these are what somebody has waited for.
    if (!isClosed_) std::ranges::for_each(underWay, [this](const auto& report) { take(report); });
    print();
    isClosed_ = true;
  });
}

bool isTraceWanted() {
  const char* const value = std::getenv("ORVO_TRACE");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

}  // namespace orvo::tool
