// What the tool draws for people of a hostile document. The first line holds the kind of drawing,
// the columns of the terminal, and the time in milliseconds since 1970; the document follows.

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <fuzz/FuzzTarget.h>
#include <tool/ContentViews.h>
#include <tool/GuideView.h>
#include <tool/LineupView.h>
#include <tool/OnAirView.h>
#include <tool/Text.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace orvo;

namespace {

constexpr std::size_t kFewestColumns = 20;
constexpr std::size_t kMostColumns = 300;
/// From here on the drawings that are laid out in columns fit the terminal.
constexpr std::size_t kEnoughColumns = 80;
/// Devices know of no time that is 10,000 years away.
constexpr long long kFarthest = 300'000'000'000'000;
constexpr std::size_t kDrawingSize = 1U << 20;

void drawOnAir(tool::Screen& screen, const std::vector<LinearProgram>& programs, Date now) {
  const GuideUpdate update{
      .video = std::make_shared<const Video>(Video{.id = "v", .title = "Video"}),
      .program = programs.front(),
      .days = {{"TODAY", programs}}};
  screen.line(tool::onAirLine(update, now));
  tool::drawOnAir(screen, "channel", update, now);
}

/// Whether the drawing is one of columns; nothing when the document has none.
std::optional<bool> draw(tool::Screen& screen, std::string_view kind, Date now, const Data& body) {
  if (kind == "grid" || kind == "lineup") {
    const auto slots = JSONDataParser::array(body);
    if (slots.failed()) return std::nullopt;
    const auto display = kind == "grid" ? LineupDisplayKind::grid : LineupDisplayKind::lineup;
    drawLineup(screen, LineupParser::parse(*slots.value()), display, now);
    return true;
  }
  const auto object = JSONDataParser::object(body);
  if (object.failed()) return std::nullopt;
  if (kind == "guide" || kind == "on-air") {
    const auto guide = LinearProgramGuideParser::parse(*object.value(), now, now);
    if (guide.failed()) return std::nullopt;
    const auto& programs = guide.value()->items;
    if (kind == "guide") {
      drawGuide(screen, *guide.value(), LinearStream{}, now);
    } else if (programs.empty()) {
      return std::nullopt;
    } else {
      drawOnAir(screen, programs, now);
    }
    return true;
  }
  if (kind == "items") {
    const auto list = ItemCollectionParser::parse(*object.value());
    if (list.failed()) return std::nullopt;
    drawItems(screen, list.value()->items, list.value()->meta.offset);
    return true;
  }
  if (kind == "page") {
    const auto page = PageParser::parse(*object.value());
    if (page.failed()) return std::nullopt;
    draw(screen, *page.value());
    return false;
  }
  const auto video = VideoParser::parse(*object.value());
  if (video.failed()) return std::nullopt;
  draw(screen, *video.value());
  return false;
}

/// The line without the control sequences of our own colours.
std::string withoutColours(std::string_view line) {
  std::string plain;
  while (!line.empty()) {
    const auto end = line.starts_with("\x1b[") ? line.find_first_not_of("0123456789;", 2) : 0;
    if (end > 0 && end < line.size() && line[end] == 'm') {
      line.remove_prefix(end + 1);
    } else {
      plain += line.front();
      line.remove_prefix(1);
    }
  }
  return plain;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool silent = (setConsoleSink([](std::string_view) {}), true);
  (void)silent;
  auto body = fuzz::text(bytes, size);
  auto head = fuzz::takePiece(body);
  const auto kind = fuzz::takePiece(head, ' ');
  const auto columns = std::strtoull(std::string(fuzz::takePiece(head, ' ')).c_str(), nullptr, 10);
  const auto now =
      std::clamp(std::strtoll(std::string(head).c_str(), nullptr, 10), -kFarthest, kFarthest);

  tool::Screen screen({.isTerminal = true,
                       .redraws = true,
                       .colour = true,
                       .trueColour = size % 2 == 0,
                       .columns = std::clamp<std::size_t>(columns, kFewestColumns, kMostColumns)});
  const auto hasColumns = draw(screen, kind, Date(now), Data(body));
  if (!hasColumns) return -1;
  std::string_view text = screen.text();
  fuzz::require(text.size() <= kDrawingSize + 100 * size, "a drawing is bounded");
  while (!text.empty()) {
    const auto line = withoutColours(fuzz::takePiece(text));
    fuzz::require(tool::printable(line) == line, "no terminal obeys what a document says");
    fuzz::require(!*hasColumns || screen.columns() < kEnoughColumns ||
                      tool::displayWidth(line) <= screen.columns(),
                  "a drawing fits the terminal");
  }
  return 0;
}
