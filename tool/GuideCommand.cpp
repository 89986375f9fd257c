#include <OrvoAPI/Platform/Calendar.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/GuideView.h>
#include <tool/Paging.h>
#include <tool/Present.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>
#include <tool/WrittenDate.h>

namespace orvo::tool {

namespace {

struct WrittenGuide {
  std::string start{};
  std::string end{};
  std::int64_t days = 1;
  WrittenList list{};
};

int runGuide(Tool& tool, const WrittenGuide& written) {
  const Date today = Calendar().startOfDay(present());
  const Date start = written.start.empty() ? today : *date(written.start);
  const Date end = written.end.empty()
                       ? Calendar().addingDays(start, static_cast<int>(written.days))
                       : *date(written.end);
  if (end <= start) {
    throw WrongUsage("the range ends (" + dateText(end) + ") before it has begun (" +
                     dateText(start) + ")");
  }
  LinearStream stream;
  return fetchListAndAnswer(
      tool, ListOutput(tool, written.list, kProgramFields), "fetching the guide", {.all = true},
      [&](const Context& context) {
        stream = context.linearStream();
        const ListPartRequest first{.offset = 0, .limit = WrittenPaging::kWholeListLimit};
        return context.fetchLinearProgramGuide(context.constants().linearStreamID, start, end,
                                               {.page = first});
      },
      [&](Screen& screen, const LinearProgramGuide& guide) {
        drawGuide(screen, guide, stream, present());
      });
}

}  // namespace

void addGuideCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenGuide>();
  std::vector<Parameter> options{
      {.name = "--start",
       .description = std::string("The start of the range, like one of these: ") + kDateForms,
       .values = dates(),
       .target = &written->start},
      {.name = "--end",
       .description = "The end of the range, written like its start",
       .values = dates(),
       .target = &written->end},
      {.name = "--days",
       .description = "The length of the range in days",
       .values = number(1, 366),
       .target = &written->days,
       .excludes = {"--end"}}};
  addListOptions(options, written->list, kProgramFields);
  commands.push_back(
      {.name = "guide",
       .description = "What is on the linear channel now, tonight or on any day",
       .details = "Without a range it is today's. On a terminal it is a timeline, on which now is "
                  "marked. \"orvo monitor\" goes on to say what is on.",
       .options = std::move(options),
       .examples =
           {"orvo --demo guide                                           # today",
            "orvo --demo guide --start now --end +1m                     # what is on now",
            "orvo --demo guide --start tonight --end 'tomorrow 02:00'    # from 20:00",
            "orvo --demo guide --days 7                                  # the next 7 days"},
       .synonyms = {"now", "tonight", "today", "live", "tv", "epg", "schedule", "programme",
                    "program"},
       .run = [written](Tool& tool) { return runGuide(tool, *written); }});
}

}  // namespace orvo::tool
