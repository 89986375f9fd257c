#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

#include <string_view>

namespace orvo {
namespace {

Date time(RequiredMembers& required, std::string_view key) {
  const auto date = iso8601Formatter().date(required.text(key));
  if (!date) required.fail(key);
  return date.value_or(Date());
}

}  // namespace

Result<LinearProgram> LinearProgramParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "LinearProgram");
  const auto id = required.text("id");
  const auto title = required.text("title");
  const auto startTime = time(required, "start_time");
  const auto endTime = time(required, "end_time");
  if (required.failed()) return required.failure();

  LinearProgram program{.id = std::string(id), .title = std::string(title)};
  program.subheading = json.string("subheading");
  program.shortDescription = json.string("short_description");
  if (json.boolean("playable") == true) {
    program.playbackStatus = LinearProgram::PlaybackStatus::available;
  }
  if (const auto resources = json.strings("resources")) {
    program.imageResources = ImageResourceParser::parse(*resources, id);
  }
  program.startTime = startTime;
  program.endTime = endTime;
  program.duration = json.number("duration");
  return program;
}

}  // namespace orvo
