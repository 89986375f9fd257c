#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <algorithm>
#include <utility>

namespace orvo {
namespace {

std::vector<LinearProgram> programs(const JSONObject& json) {
  std::vector<LinearProgram> programs;
  const auto items = json.objects("items");
  if (!items) return programs;
  if (isConsoleSilent()) return detail::parsedItems<LinearProgramParser, LinearProgram>(*items);
  detail::reserve(programs, items->size());
  for (const JSONObject& item : *items) {
    auto parsed = LinearProgramParser::parse(item);
    if (LinearProgram* program = parsed.value()) {
      programs.push_back(std::move(*program));
    } else {
      printToConsole("BAILED ON Linearprogram " + parsed.error()->description());
    }
  }
  return programs;
}

}  // namespace

LinearProgramGuide::LinearProgramGuide(std::vector<LinearProgram> programs, PagingMeta paging,
                                       Date start, Date end)
    : startDate(start), endDate(end), items(std::move(programs)), meta(paging) {
  // A service sends its schedule in order; then nothing has to be moved.
  if (!std::ranges::is_sorted(items, {}, &LinearProgram::startTime)) {
    std::ranges::stable_sort(items, {}, &LinearProgram::startTime);
  }
}

Result<LinearProgramGuide> LinearProgramGuideParser::parse(const JSONObject& json, Date start,
                                                           Date end) {
  RequiredMembers required(json, "LinearProgramGuide");
  const auto meta = required.meta("meta details");
  if (required.failed()) return required.failure();
  return LinearProgramGuide(programs(json), meta, start, end);
}

}  // namespace orvo
