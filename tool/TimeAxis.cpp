#include <OrvoAPI/Platform/Calendar.h>
#include <tool/Text.h>
#include <tool/TimeAxis.h>
#include <tool/Wording.h>

#include <algorithm>
#include <array>

namespace orvo::tool {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kLabelDistance = 10;
constexpr std::chrono::hours kDay(24);

std::string labelText(Date date, milliseconds step) {
  if (step < std::chrono::minutes(1)) return preciseClockText(date);
  // Where clocks have changed since the first label, a day's begins an hour beside it.
  return step < kDay ? clockText(date) : dayText(date + kDay / 2);
}

}  // namespace

TimeAxis::TimeAxis(Date start, milliseconds span, std::size_t columns)
    : start_(start), span_(std::max(span, milliseconds(1))), columns_(columns) {}

std::size_t TimeAxis::column(Date date) const {
  const auto elapsed = std::clamp(date, start(), end()) - start_;
  const double share = static_cast<double>(elapsed.count()) / static_cast<double>(span_.count());
  return static_cast<std::size_t>(share * static_cast<double>(columns_));
}

std::string TimeAxis::labels() const {
  const auto least = milliseconds(span_.count() * static_cast<std::int64_t>(kLabelDistance) /
                                  static_cast<std::int64_t>(columns_));
  const milliseconds step = roundStep(least);
  const Date midnight = Calendar().startOfDay(start_);
  const auto stepsBefore = (start_ - midnight + step - milliseconds(1)) / step;
  std::string line;
  std::size_t width = 0;
  for (Date date = midnight + step * stepsBefore; date < end(); date = date + step) {
    const std::string label = labelText(date, step);
    const std::size_t position = column(date);
    if ((width > 0 && position <= width) || position + label.size() > columns_) continue;
    line.append(position - width, ' ').append(label);
    width = position + label.size();
  }
  return line;
}

milliseconds roundStep(milliseconds least) {
  static constexpr std::array<std::chrono::seconds, 16> kSteps{
      std::chrono::seconds(1),  std::chrono::seconds(5),  std::chrono::seconds(10),
      std::chrono::seconds(15), std::chrono::seconds(30), std::chrono::minutes(1),
      std::chrono::minutes(2),  std::chrono::minutes(5),  std::chrono::minutes(10),
      std::chrono::minutes(15), std::chrono::minutes(30), std::chrono::hours(1),
      std::chrono::hours(2),    std::chrono::hours(3),    std::chrono::hours(6),
      std::chrono::hours(12)};
  const auto step = std::find_if(kSteps.begin(), kSteps.end(),
                                 [&](std::chrono::seconds value) { return value >= least; });
  if (step != kSteps.end()) return *step;
  return kDay * ((least + kDay - milliseconds(1)) / kDay);
}

std::string boxLine(const Screen& screen, const TimeAxis& axis, std::span<const TimeBox> boxes) {
  std::string line;
  std::size_t position = 0;
  for (const TimeBox& box : boxes) {
    const std::size_t first = std::max(axis.column(box.start), position);
    const std::size_t last = axis.column(box.end);
    // A box needs a column for its edge and one for its title.
    if (last < first + 2 || box.end <= axis.start() || box.start >= axis.end()) continue;
    line.append(first - position, ' ');
    line += screen.in(Style::faint, "│");
    line += screen.in(box.style, padded(printable(box.title), last - first - 1));
    position = last;
  }
  return line;
}

}  // namespace orvo::tool
