#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/LinearReadersInternal.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <algorithm>
#include <utility>

namespace orvo {
namespace {

std::vector<LinearProgram> programs(const detail::JSONMember& items) {
  using Reader = detail::LinearProgramReader;
  const auto objects = items.objects();
  if (!objects) return {};
  return detail::parsedItems<Reader>(*objects, [silent = isConsoleSilent()](const Reader& reader) {
    if (silent) return;
    printToConsole("BAILED ON Linearprogram " + reader.failure().error.description());
  });
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
  static constexpr detail::TextIndex kKeys({"meta", "items"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("LinearProgramGuide");
  const auto meta = required.meta(members["meta"], "meta details");
  if (required.failed()) return required.failure();
  return LinearProgramGuide(programs(members["items"]), meta, start, end);
}

}  // namespace orvo
