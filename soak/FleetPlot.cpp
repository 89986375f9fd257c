#include <soak/FleetPlot.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace orvo::soak {
namespace {

constexpr int kWidth = 775, kHeight = 340;
constexpr int kLeft = 90, kRight = 745, kTop = 58, kBottom = 290;
constexpr std::size_t kMostPoints = 330;
/// What is less than that is drawn at the bottom.
constexpr double kLeast = 100, kMost = 10'000'000;
/// Seen on white and on black.
constexpr const char* kColors[] = {"#d9622b", "#2f86d6", "#2e9e5b"};
constexpr const char* kText = "#808890";

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

double heightOf(double value) {
  const double share =
      std::log10(std::clamp(value, kLeast, kMost) / kLeast) / std::log10(kMost / kLeast);
  return kBottom - share * (kBottom - kTop);
}

std::string text(double x, double y, const char* anchor, const std::string& what,
                 const char* color = kText) {
  return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor +
         "\" fill=\"" + color + "\">" + what + "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2) {
  return "<path d=\"M" + number(x1) + " " + number(y1) + "L" + number(x2) + " " + number(y2) +
         "\" stroke=\"" + kText + "\" stroke-opacity=\".35\"/>\n";
}

std::string timeOfDay(int seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d", seconds / 3600 % 24, seconds / 60 % 60);
  return text;
}

std::string scale(const FleetPlot& plot) {
  std::string all;
  for (const auto& [value, name] : {std::pair{100.0, "100 or less"},
                                    {1'000.0, "1,000"},
                                    {10'000.0, "10,000"},
                                    {100'000.0, "100,000"},
                                    {1'000'000.0, "1 million"},
                                    {10'000'000.0, "10 million"}}) {
    all += line(kLeft, heightOf(value), kRight, heightOf(value));
    all += text(kLeft - 6, heightOf(value) + 4, "end", name);
  }
  const auto seconds = static_cast<int>(plot.curves.front().perSecond.size());
  for (int at = 0; at <= seconds; at += plot.secondsBetweenMarks) {
    const double x = kLeft + static_cast<double>(at) / seconds * (kRight - kLeft);
    all += line(x, kBottom, x, kBottom + 5);
    all += text(x, kBottom + 19, "middle", timeOfDay(plot.beginsAt + at));
  }
  return all + text((kLeft + kRight) / 2.0, kBottom + 40, "middle", "time of day");
}

std::string drawn(const FleetCurve& curve, const char* color) {
  const auto count = curve.perSecond.size();
  const auto step = (count + kMostPoints - 1) / kMostPoints;
  std::string points;
  for (std::size_t at = 0; at < count; at += step) {
    const auto begin = curve.perSecond.begin() + static_cast<std::ptrdiff_t>(at);
    const auto width = static_cast<std::ptrdiff_t>(std::min(step, count - at));
    const double x =
        kLeft + static_cast<double>(at) / static_cast<double>(count) * (kRight - kLeft);
    points += (points.empty() ? "M" : "L") + number(x) + " " +
              number(heightOf(*std::max_element(begin, begin + width)));
  }
  return "<path d=\"" + points + "\" fill=\"none\" stroke=\"" + color +
         "\" stroke-width=\"1.6\" stroke-linejoin=\"round\"/>\n";
}

}  // namespace

bool write(const FleetPlot& plot, const std::filesystem::path& file) {
  std::ofstream svg(file);
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' ' << kHeight
      << "\" width=\"" << kWidth << "\" height=\"" << kHeight
      << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
      << "<title>" << plot.title << "</title>\n"
      << text(kLeft, 18, "start", plot.title) << text(kLeft, 36, "start", plot.unit) << scale(plot);
  double x = kRight;
  for (std::size_t index = plot.curves.size(); index-- > 0;) {
    const auto& curve = plot.curves[index];
    svg << drawn(curve, kColors[index % std::size(kColors)])
        << text(x, 36, "end", curve.name, kColors[index % std::size(kColors)]);
    x -= 7.0 * static_cast<double>(curve.name.size()) + 14;
  }
  svg << "</svg>\n";
  svg.close();
  return !svg.fail();
}

}  // namespace orvo::soak
