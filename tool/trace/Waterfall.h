#pragma once

#include <OrvoAPI/Context/RequestReport.h>
#include <tool/Screen.h>

#include <cstddef>
#include <vector>

namespace orvo::tool {

/// Draws a bar for each request along one axis of time, as wide as the screen: what the request
/// spent its time on is told by different marks, which a line explains. `leftOut`: how many
/// further ones are not among the reports.
void drawWaterfall(Screen& screen, std::vector<RequestReport> reports, std::size_t leftOut);

/// Lists what was asked of a recording, in which there are no times to draw.
void drawReplayed(Screen& screen, const std::vector<RequestReport>& reports, std::size_t leftOut);

}  // namespace orvo::tool
