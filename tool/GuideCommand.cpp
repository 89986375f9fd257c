#include <OrvoAPI/Platform/Calendar.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/GuideView.h>
#include <tool/Paging.h>

namespace orvo::tool {

namespace {

struct Written {
  std::string start{};
  std::string end{};
  int days = 1;
};

int runGuide(Tool& tool, const Written& written) {
  const Date today = Calendar().startOfDay(Clock::system()->now());
  const Date start = written.start.empty() ? today : *date(written.start);
  const Date end =
      written.end.empty() ? Calendar().addingDays(start, written.days) : *date(written.end);
  LinearStream stream;
  return fetchListAndAnswer(
      tool, "fetching the guide", true,
      [&](const Context& context) {
        stream = context.linearStream();
        const ListPartRequest first{.offset = 0, .limit = WrittenPaging::kWholeListLimit};
        return context.fetchLinearProgramGuide(context.constants().linearStreamID, start, end,
                                               {.page = first});
      },
      [&](Screen& screen, const LinearProgramGuide& guide) {
        drawGuide(screen, guide, stream, Clock::system()->now());
      });
}

}  // namespace

void addGuideCommand(Commands& commands) {
  const auto written = std::make_shared<Written>();
  CLI::App* command = commands.add("guide", "What is on the linear channel; by default, today",
                                   [written](Tool& tool) { return runGuide(tool, *written); });
  command
      ->add_option("--start", written->start,
                   "The start of the range, like 2017-05-01T00:00:00.000Z")
      ->type_name("DATE")
      ->check(isDate());
  CLI::Option* end = command->add_option("--end", written->end, "The end of the range")
                         ->type_name("DATE")
                         ->check(isDate());
  command->add_option("--days", written->days, "The length of the range in days")
      ->check(CLI::Range(1, 366))
      ->excludes(end)
      ->capture_default_str();
}

}  // namespace orvo::tool
