#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Linear/LinearReadersInternal.h>
#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

namespace orvo {

namespace detail {

LinearProgramReader::LinearProgramReader(const JSONObject& json)
    : RequiredMembers("LinearProgram"),
      members_(json),
      id_(text(members_["id"])),
      title_(text(members_["title"])),
      startTime_(time(members_["start_time"])),
      endTime_(time(members_["end_time"])) {}

Date LinearProgramReader::time(const JSONMember& member) {
  const auto date = failed() ? std::nullopt : iso8601Formatter().date(text(member));
  return found(date, member, Wanted::string, member.key());
}

LinearProgram LinearProgramReader::record() const {
  using PlaybackStatus = LinearProgram::PlaybackStatus;
  return {.id = std::string(id_),
          .title = std::string(title_),
          .subheading = members_["subheading"].text(),
          .shortDescription = members_["short_description"].text(),
          .playbackStatus = members_["playable"].boolean() == true ? PlaybackStatus::available
                                                                   : PlaybackStatus::unavailable,
          .imageResources = ContentResources(members_["resources"], id_).images,
          .startTime = startTime_,
          .endTime = endTime_,
          .duration = members_["duration"].number()};
}

}  // namespace detail

Result<LinearProgram> LinearProgramParser::parse(const JSONObject& json) {
  return detail::parsed<detail::LinearProgramReader>(json);
}

}  // namespace orvo
