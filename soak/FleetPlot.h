#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace orvo::soak {

/// A curve of a plot: what happened in each second of the span.
struct FleetCurve {
  std::string name;
  std::vector<double> perSecond;
};

/// A picture of requests a second over a span of time, on a logarithmic scale. A point is the
/// busiest second of those that it stands for.
struct FleetPlot {
  std::string title;
  std::string unit;
  /// Of the first second, since midnight.
  int beginsAt = 0;
  int secondsBetweenMarks = 60;
  std::vector<FleetCurve> curves;
};

/// Writes the picture; false when the file cannot be written.
[[nodiscard]] bool write(const FleetPlot& plot, const std::filesystem::path& file);

}  // namespace orvo::soak
