#pragma once

#include <OrvoAPI/Base/Date.h>
#include <tool/Screen.h>

#include <chrono>
#include <cstddef>
#include <span>
#include <string>

namespace orvo::tool {

/// A stretch of time along the columns of a line.
class TimeAxis {
 public:
  TimeAxis(Date start, std::chrono::milliseconds span, std::size_t columns);

  [[nodiscard]] Date start() const { return start_; }
  [[nodiscard]] Date end() const { return start_ + span_; }
  [[nodiscard]] std::size_t columns() const { return columns_; }
  /// The column of an instant; instants beyond an end are at that end.
  [[nodiscard]] std::size_t column(Date date) const;

  /// Times of the day at round distances, or days, as many as fit.
  [[nodiscard]] std::string labels() const;

 private:
  Date start_;
  std::chrono::milliseconds span_;
  std::size_t columns_;
};

/// Something that lasts for a while.
struct TimeBox {
  Date start;
  Date end;
  std::string title;
  Style style = Style::plain;
};

/// The boxes along the axis, in the order of their starts. A box that overlaps the one before it
/// begins where that ends.
[[nodiscard]] std::string boxLine(const Screen& screen, const TimeAxis& axis,
                                  std::span<const TimeBox> boxes);

/// The shortest round time, of at least `least`, as the distance between labels that stay apart.
[[nodiscard]] std::chrono::milliseconds roundStep(std::chrono::milliseconds least);

}  // namespace orvo::tool
