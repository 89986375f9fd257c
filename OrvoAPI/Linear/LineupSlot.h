#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstdint>
#include <string>

namespace orvo {

/// One show on one channel of a lineup.
struct LineupSlot {
  Date start = {};
  Date end = {};
  std::string title;
  LineupTemplateImages imageResources = {};
  std::string channelID = {};
  std::string channelName = {};
  /// The channel's position among the channels.
  std::int64_t channelOrder = 0;

  [[nodiscard]] Date startTime() const { return start; }

  friend bool operator==(const LineupSlot&, const LineupSlot&) = default;
};

/// Reads a slot. Stateless; may be called from any thread.
struct LineupSlotParser {
  /// A date of the wrong format fails with `DateFormatError`.
  [[nodiscard]] static Result<LineupSlot> parse(const JSONObject& json);
};

}  // namespace orvo
