#pragma once

#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Linear/LineupSlot.h>
#include <OrvoAPI/Model/RecordsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <cstdint>
#include <string_view>

/// The readers (see RecordsInternal.h) of the records that make up schedules.
namespace orvo::detail {

inline constexpr TextIndex kLinearProgramKeys({"id", "title", "start_time", "end_time",
                                               "subheading", "short_description", "playable",
                                               "resources", "duration"});

class LinearProgramReader : public RequiredMembers {
 public:
  explicit LinearProgramReader(const JSONObject& json);
  [[nodiscard]] LinearProgram record() const;

 private:
  [[nodiscard]] Date time(const JSONMember& member);

  JSONMembers<kLinearProgramKeys> members_;
  std::string_view id_;
  std::string_view title_;
  Date startTime_;
  Date endTime_;
};

inline constexpr TextIndex kLineupSlotKeys({"start", "end", "title", "channel", "images"});

class LineupSlotReader : public RequiredMembers {
 public:
  explicit LineupSlotReader(const JSONObject& json);
  [[nodiscard]] LineupSlot record() const;
  /// Also a `DateFormatError`.
  [[nodiscard]] Failure failure() const;

 private:
  [[nodiscard]] static LineupTemplateImages images(const JSONMember& member);
  [[nodiscard]] Date date(const JSONMember& member);
  void readChannel();

  JSONMembers<kLineupSlotKeys> members_;
  /// The text that made the reading fail because it is not a date; set while the dates are read.
  std::string_view badDate_;
  Date start_;
  Date end_;
  std::string_view title_;
  std::string_view channelID_;
  std::string_view channelName_;
  std::int64_t channelOrder_ = 0;
};

}  // namespace orvo::detail
