#include <fmt/format.h>
#include <tool/Commands.h>
#include <tool/Text.h>
#include <tool/Wording.h>
#include <tool/doctor/Checkup.h>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace orvo::tool {

namespace {

using Found = Finding::Outcome;

struct WrittenDoctor {
  std::int64_t seconds = 10;
};

/// `✓ good`
std::string verdict(const Screen& screen, Found outcome) {
  constexpr std::size_t kWidth = 9;
  const auto in = [&](Style style, const char* text) {
    return screen.in(style, padded(text, kWidth));
  };
  if (outcome == Found::good) return in(Style::good, "✓ good");
  return outcome == Found::bad ? in(Style::bad, "✗ bad") : in(Style::faint, "– skipped");
}

/// A line with the outcome, what it is about and how long that took; then, behind it where there is
/// room, else below, what was found and what to do.
void draw(Screen& screen, const Finding& finding) {
  constexpr std::size_t kNameWidth = 16;
  constexpr std::size_t kHead = 39;
  constexpr std::size_t kNarrowestText = 36;
  const bool isWide = screen.columns() >= kHead + kNarrowestText;
  const std::size_t indent = isWide ? kHead : 4;
  const bool isTimed = finding.time.count() > 0 && screen.columns() >= kHead;
  std::string head = "  " + verdict(screen, finding.outcome) + " " +
                     padded(finding.name, kNameWidth) +
                     fmt::format(" {:>8}", isTimed ? spanText(finding.time) : "");
  std::vector<std::string> lines = wrapped(printable(finding.detail), screen.columns() - indent);
  const bool isShared = isWide && !lines.empty();
  screen.line(isShared ? head + "  " + lines.front()
                       : head.substr(0, head.find_last_not_of(' ') + 1));
  const std::string margin(indent, ' ');
  for (std::size_t i = isShared ? 1 : 0; i < lines.size(); ++i) screen.line(margin + lines[i]);
  if (finding.advice.empty()) return;
  const Style style = finding.outcome == Found::bad ? Style::bad : Style::warning;
  lines = wrapped(printable(finding.advice), screen.columns() - indent - 2);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    screen.line(margin + (i == 0 ? "→ " : "  ") + screen.in(style, lines[i]));
  }
}

/// Steps that were skipped for the same reason.
void drawSkipped(Screen& screen, const std::vector<std::string>& names, const std::string& why) {
  constexpr std::size_t kMargin = 12;
  const auto lines = wrapped(joined(names) + ": " + printable(why), screen.columns() - kMargin);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string head = "  " + verdict(screen, Found::skipped) + " ";
    screen.line((i == 0 ? head : std::string(kMargin, ' ')) + lines[i]);
  }
}

Json toJson(const Finding& finding) {
  Json json = Json::object({{"name", finding.name},
                            {"outcome", caseName(finding.outcome)},
                            {"seconds", std::chrono::duration<double>(finding.time).count()},
                            {"detail", finding.detail},
                            {"advice", finding.advice.empty() ? Json() : Json(finding.advice)}});
  json.set("facts", finding.facts);
  return json;
}

/// Prints what is found as soon as it is, or all of it as one document at the end.
class Report {
 public:
  Report(Tool& tool, const URL& api) : tool_(tool), service_(withoutUserInfo(api.text())) {
    Screen screen(standardOutput());
    screen.title("Doctor", service_);
    screen.blank();
    if (!tool_.options().json) print(screen.text());
  }

  void take(const Finding& finding) {
    badOnes_ += finding.outcome == Found::bad ? 1 : 0;
    {
      const std::lock_guard guard(mutex_);
      findings_.push(toJson(finding));
    }
    if (tool_.options().json) return;
    if (!skipped_.empty() && finding.detail != why_) endSkipped();
    if (finding.outcome == Found::skipped) {
      skipped_.push_back(finding.name);
      why_ = finding.detail;
      return;
    }
    Screen screen(standardOutput());
    draw(screen, finding);
    print(screen.text());
  }
  int end() {
    const bool isGood = badOnes_ == 0;
    if (tool_.options().json) {
      if (const auto whole = document(isGood)) tool_.answer(*whole);
    } else {
      if (!skipped_.empty()) endSkipped();
      Screen screen(standardOutput());
      screen.blank();
      screen.line("  " + (isGood ? screen.in(Style::good, "All is well.")
                                 : screen.in(Style::bad, badOnes_ == 1 ? "One thing is bad."
                                                                       : countText(badOnes_) +
                                                                             " things are bad.")));
      print(screen.text());
    }
    return isGood ? 0 : 1;
  }

  /// What there is when somebody does not wait for the end. From any thread.
  void interrupt() {
    if (!isJson_) return;
    auto soFar = document(false);
    if (!soFar) return;
    soFar->set("isInterrupted", true);
    print(soFar->text() + "\n");
  }

 private:
  void endSkipped() {
    Screen screen(standardOutput());
    drawSkipped(screen, skipped_, why_);
    print(screen.text());
    skipped_.clear();
  }

  /// Nothing when it has been taken.
  std::optional<Json> document(bool isGood) {
    const std::lock_guard guard(mutex_);
    if (std::exchange(isTaken_, true)) return std::nullopt;
    return Json::object({{"ok", isGood}, {"service", service_}, {"checks", std::move(findings_)}});
  }

  Tool& tool_;
  const bool isJson_ = tool_.options().json;
  const std::string service_;
  std::mutex mutex_;
  bool isTaken_ = false;
  Json findings_ = Json::array();
  std::int64_t badOnes_ = 0;
  std::vector<std::string> skipped_;
  std::string why_;
};

int runDoctor(Tool& tool, const WrittenDoctor& written) {
  const auto api = tool.apiBase();
  if (const AnyError* error = api.error()) return tool.fail(*error);
  const auto report = std::make_shared<Report>(tool, *api.value());
  const BeforeEarlyEnd telling([report] { report->interrupt(); });
  Checkup checkup(tool, *api.value(), std::chrono::seconds(written.seconds),
                  [&](const Finding& finding) { report->take(finding); });
  checkup.run();
  return report->end();
}

}  // namespace

void addDoctorCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenDoctor>();
  commands.push_back(
      {.name = "doctor",
       .description = "What is wrong on the way to the service, and what to do",
       .details =
           "Looks at the host's name, its address families, the connection, TLS, the session, the "
           "device's clock, the configuration, a page, an image and a stream's playlist, one after "
           "another.",
       .options = {{.name = "--patience",
                    .description = "How many seconds each step may take",
                    .values = number(1, 600, "SECONDS"),
                    .target = &written->seconds}},
       .examples = {"orvo --demo doctor", "orvo --demo doctor --json"},
       .synonyms = {"check", "diagnose", "ping", "status"},
       .statuses = {{"0", "All is well"},
                    {"1", "Something is bad, or the output could not be written"}},
       .needsNetwork = true,
       .tellsWhenInterrupted = true,
       .run = [written](Tool& tool) { return runDoctor(tool, *written); }});
}

}  // namespace orvo::tool
