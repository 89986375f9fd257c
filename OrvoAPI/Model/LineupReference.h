#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>

namespace orvo {

/// How a lineup is to be drawn: channel by time, or as one running list.
enum class LineupDisplayKind { grid, lineup };

template <>
inline constexpr EnumCase enumCases<LineupDisplayKind>[] = {{"grid"}, {"lineup"}};

/// Where the lineup of a video or page lies, and how it is to be drawn.
struct LineupReference {
  URL url;
  LineupDisplayKind displayKind = LineupDisplayKind::grid;

  friend bool operator==(const LineupReference&, const LineupReference&) = default;
};

}  // namespace orvo
