#include <OrvoAPI/HTTP/URLError.h>
#include <fmt/format.h>
#include <tool/Text.h>
#include <tool/Wording.h>
#include <tool/trace/Waterfall.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace orvo::tool {

namespace {

using std::chrono::nanoseconds;

/// What people tell apart; several phases of a report may be one of these.
enum class Part { earlier, waiting, name, connect, secure, server, transfer, reading, underWay };

struct Mark {
  std::string_view sign;
  std::string_view name;
  Style style;
};

constexpr std::array<Mark, 9> kPartMarks{{{"≈", "earlier attempts", Style::warning},
                                          {"·", "waiting", Style::faint},
                                          {"░", "name", Style::accent},
                                          {"▒", "connect", Style::accent},
                                          {"▓", "TLS", Style::accent},
                                          {"━", "server", Style::plain},
                                          {"█", "transfer", Style::good},
                                          {"▫", "reading", Style::faint},
                                          {"┄", "under way", Style::bad}}};

constexpr std::array<Part, RequestReport::kPhases> kParts{
    Part::waiting, Part::earlier, Part::earlier, Part::waiting,  Part::name,    Part::connect,
    Part::secure,  Part::waiting, Part::server,  Part::transfer, Part::waiting, Part::reading};

const Mark& markOf(std::size_t phase) {
  return kPartMarks[static_cast<std::size_t>(kParts[phase])];
}

std::string sizeText(std::uint64_t bytes) {
  const auto size = static_cast<double>(bytes);
  if (bytes < 1000) return fmt::format("{} B", bytes);
  return bytes < 1'000'000 ? fmt::format("{:.1f} kB", size / 1e3)
                           : fmt::format("{:.1f} MB", size / 1e6);
}

bool isUnderWay(const RequestReport& report) { return report.operation.empty(); }

std::string labelOf(const RequestReport& report) {
  if (isUnderWay(report)) return printable(report.method + " " + report.path);
  return printable(std::string(report.operation) +
                   (report.identifier.empty() ? "" : " " + report.identifier));
}

std::string statusOf(const RequestReport& report) {
  if (report.status != 0) return std::to_string(report.status);
  const auto* transport = report.error ? report.error->as<URLError>() : nullptr;
  if (transport != nullptr) return std::to_string(transport->code);
  return report.error ? "failed" : "";
}

std::string sizeOf(const RequestReport& report) {
  const std::uint64_t bytes =
      report.bytesReceived != 0 ? report.bytesReceived : report.bytesDecoded;
  const bool isUnknown = report.source == RequestReport::Source::cache || isUnderWay(report);
  return isUnknown ? "" : sizeText(bytes);
}

/// How it came about.
std::string wayOf(const RequestReport& report) {
  using Source = RequestReport::Source;
  if (isUnderWay(report)) return "under way";
  if (report.source == Source::cache) return "from cache";
  if (report.source == Source::none) return "not sent";
  return joined({report.source == Source::interceptor ? "interceptor" : "",
                 report.protocol.empty() ? "" : "HTTP/" + std::string(report.protocol),
                 report.isConnectionReused ? "reused" : "", report.retries != 0 ? "retried" : "",
                 report.redirects.empty()
                     ? ""
                     : countText(static_cast<std::int64_t>(report.redirects.size()), "redirect")});
}

/// What the longest parts took, `server 12 ms, name 3 ms`.
std::string partsText(const RequestReport& report) {
  if (isUnderWay(report)) return "still under way";
  std::array<nanoseconds, kPartMarks.size()> times{};
  for (std::size_t phase = 0; phase < kParts.size(); ++phase) {
    times[static_cast<std::size_t>(kParts[phase])] += report.phases[phase];
  }
  std::vector<std::string> texts;
  for (int count = 0; count < 3; ++count) {
    auto* const longest = std::ranges::max_element(times);
    if (*longest * 20 < report.total) break;
    const auto& mark = kPartMarks[static_cast<std::size_t>(longest - times.begin())];
    texts.push_back(std::string(mark.name) + " " + spanText(*longest));
    *longest = nanoseconds(0);
  }
  return joined(texts);
}

void indented(Screen& screen, const std::string& text, Style style = Style::plain) {
  for (const std::string& line : wrapped(text, screen.columns() - 2)) {
    screen.line("  " + screen.in(style, line));
  }
}

/// The cells of one row; the bar is drawn when its room is known.
struct Row {
  const RequestReport* report;
  std::string label;
  std::array<std::string, 4> facts;  // how long, status, size, how it came about
};

class Waterfall {
 public:
  Waterfall(Screen& screen, const std::vector<RequestReport>& reports) : screen_(screen) {
    begun_ = reports.front().begun;
    for (const RequestReport& report : reports) {
      rows_.push_back({&report,
                       labelOf(report),
                       {spanText(report.total), statusOf(report), sizeOf(report), wayOf(report)}});
      span_ = std::max(span_, report.begun + report.total - begun_);
      labels_ = std::max(labels_, displayWidth(rows_.back().label));
      for (std::size_t i = 0; i < widths_.size(); ++i) {
        widths_[i] = std::max(widths_[i], displayWidth(rows_.back().facts[i]));
      }
    }
  }

  [[nodiscard]] nanoseconds span() const { return span_; }

  void draw() {
    std::size_t facts = 0;
    for (const std::size_t width : widths_) facts += width == 0 ? 0 : width + kGap;
    constexpr std::size_t kWidestLabel = 40;
    constexpr std::size_t kNarrowestBar = 24;
    const std::size_t label =
        screen_.terminal().isFitted() ? std::min(labels_, kWidestLabel) : labels_;
    const bool isWide = screen_.columns() >= kGap + label + kGap + kNarrowestBar + facts;
    for (const Row& row : rows_) {
      isWide ? drawWide(row, label, screen_.columns() - 2 * kGap - label - facts) : drawTall(row);
    }
    legend();
  }

 private:
  static constexpr std::size_t kGap = 2;

  void drawWide(const Row& row, std::size_t label, std::size_t bar) {
    std::string line = std::string(kGap, ' ') + padded(row.label, label) + std::string(kGap, ' ') +
                       this->bar(*row.report, bar);
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      if (widths_[i] == 0) continue;
      const std::string& text = row.facts[i];
      const std::string fill(widths_[i] - displayWidth(text), ' ');
      const bool isRight = i + 1 < widths_.size();
      line += std::string(kGap, ' ') + (isRight ? fill : "") + styledFact(row, i);
      if (!isRight && !text.empty()) line += fill;
    }
    screen_.line(line.substr(0, line.find_last_not_of(' ') + 1));
  }
  void drawTall(const Row& row) {
    const std::size_t room = screen_.columns() - kGap;
    screen_.line(std::string(kGap, ' ') +
                 (screen_.terminal().isFitted() ? cut(row.label, room) : row.label));
    const std::string bar = this->bar(*row.report, room);
    screen_.line(std::string(kGap, ' ') + bar.substr(0, bar.find_last_not_of(' ') + 1));
    const std::string facts = joined({row.facts.begin(), row.facts.end()});
    const Style style = row.report->error ? Style::bad : Style::plain;
    for (const std::string& part : wrapped(facts, room - kGap)) {
      screen_.line(std::string(2 * kGap, ' ') + screen_.in(style, part));
    }
  }
  [[nodiscard]] std::string styledFact(const Row& row, std::size_t fact) const {
    constexpr std::size_t kStatus = 1;
    const bool isBad = fact == kStatus && row.report->error;
    return screen_.in(isBad ? Style::bad : Style::plain, row.facts[fact]);
  }

  [[nodiscard]] std::size_t column(nanoseconds time, std::size_t columns) const {
    const auto part = static_cast<double>(time.count()) / static_cast<double>(span_.count());
    return std::min(columns,
                    static_cast<std::size_t>(std::lround(part * static_cast<double>(columns))));
  }
  /// Where a cell begins.
  [[nodiscard]] nanoseconds timeOf(std::size_t cell, std::size_t columns) const {
    const double part = static_cast<double>(cell) / static_cast<double>(columns);
    return nanoseconds(static_cast<std::int64_t>(part * static_cast<double>(span_.count())));
  }
  /// The phase that the request was in for the longest part of the cell.
  [[nodiscard]] std::size_t phaseIn(const RequestReport& report, std::size_t cell,
                                    std::size_t columns) const {
    const nanoseconds from = timeOf(cell, columns);
    const nanoseconds to = timeOf(cell + 1, columns);
    nanoseconds time = report.begun - begun_;
    nanoseconds most{-1};
    std::size_t longest = 0;
    for (std::size_t phase = 0; phase < report.phases.size(); ++phase) {
      const nanoseconds end = time + report.phases[phase];
      const nanoseconds inside = std::min(end, to) - std::max(time, from);
      if (report.phases[phase].count() > 0 && inside > most) {
        most = inside;
        longest = phase;
      }
      time = end;
    }
    return longest;
  }
  /// The phases side by side, each as long as it was; a request of no length is still seen.
  [[nodiscard]] std::string bar(const RequestReport& report, std::size_t columns) {
    const nanoseconds begun = report.begun - begun_;
    const std::size_t from = std::min(column(begun, columns), columns - 1);
    const std::size_t to = std::max(column(begun + report.total, columns), from + 1);
    std::string text(from, ' ');
    if (isUnderWay(report)) {
      const Mark& mark = kPartMarks.back();
      isUsed_.back() = true;
      std::string cells;
      for (std::size_t cell = from; cell < to; ++cell) cells += mark.sign;
      return text.append(screen_.in(mark.style, cells)).append(columns - to, ' ');
    }
    for (std::size_t cell = from; cell < to;) {
      const std::size_t phase = phaseIn(report, cell, columns);
      std::string cells;
      for (; cell < to && phaseIn(report, cell, columns) == phase; ++cell) {
        cells += markOf(phase).sign;
      }
      text += inMark(phase, cells);
    }
    return text.append(columns - to, ' ');
  }
  std::string inMark(std::size_t phase, std::string_view cells) {
    isUsed_[static_cast<std::size_t>(kParts[phase])] = true;
    return screen_.in(markOf(phase).style, cells);
  }

  /// What the marks mean that were used.
  void legend() {
    std::vector<std::string> entries;
    for (std::size_t i = 0; i < kPartMarks.size(); ++i) {
      if (!isUsed_[i]) continue;
      entries.push_back(std::string(kPartMarks[i].sign) + "\u00A0" +
                        std::string(kPartMarks[i].name));
    }
    screen_.blank();
    indented(screen_, joined(entries), Style::faint);
  }

  Screen& screen_;
  std::vector<Row> rows_;
  std::chrono::steady_clock::time_point begun_;
  nanoseconds span_{1};
  std::size_t labels_ = 0;
  std::array<std::size_t, 4> widths_{};
  std::array<bool, kPartMarks.size()> isUsed_{};
};

}  // namespace

void drawReplayed(Screen& screen, const std::vector<RequestReport>& reports, std::size_t leftOut) {
  const auto count = static_cast<std::int64_t>(reports.size() + leftOut);
  screen.title("Trace", countText(count, "request") + " to a recording");
  screen.blank();
  constexpr std::size_t kFacts = 16;
  std::size_t width = 0;
  for (const RequestReport& report : reports)
    width = std::max(width, displayWidth(labelOf(report)));
  for (const RequestReport& report : reports) {
    const std::string label = "  " + labelOf(report);
    const std::string facts = screen.in(report.error ? Style::bad : Style::plain,
                                        joined({statusOf(report), sizeOf(report)}));
    if (width + kFacts + 4 <= screen.columns()) {
      screen.line(padded(label, width + 4) + facts);
    } else {
      screen.line(label);
      screen.line("    " + facts);
    }
  }
  screen.blank();
  indented(screen,
           "No times: --record keeps them in the file, which a browser's developer tools draw",
           Style::faint);
}

void drawWaterfall(Screen& screen, std::vector<RequestReport> reports, std::size_t leftOut) {
  std::ranges::stable_sort(reports, {}, &RequestReport::begun);
  Waterfall waterfall(screen, reports);
  const auto count = static_cast<std::int64_t>(reports.size() + leftOut);
  screen.title("Trace", countText(count, "request") + ", " + spanText(waterfall.span()));
  screen.blank();
  waterfall.draw();
  const auto slowest = std::ranges::max_element(reports, {}, &RequestReport::total);
  indented(screen, "The slowest: " + labelOf(*slowest) + ", " + spanText(slowest->total) + " (" +
                       partsText(*slowest) + ")");
  if (leftOut > 0) {
    indented(screen, countText(static_cast<std::int64_t>(leftOut), "later request") + " left out");
  }
}

}  // namespace orvo::tool
