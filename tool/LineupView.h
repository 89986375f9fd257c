#pragma once

#include <OrvoAPI/Linear/Lineup.h>
#include <tool/Screen.h>

#include <optional>

namespace orvo::tool {

/// How people see a lineup: hour by hour with a line for each channel, or as one list. Without a
/// display kind (the document holds none) by the number of its channels. A grid shows no more days
/// and channels than anyone reads, and says how many it leaves out.
void drawLineup(Screen& screen, const Lineup& lineup, std::optional<LineupDisplayKind> display,
                Date now);

}  // namespace orvo::tool
