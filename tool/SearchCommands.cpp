#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>
#include <tool/Paging.h>

namespace orvo::tool {

namespace {

struct Written {
  std::string query{};
  std::string kind{};
  WrittenPaging paging{};
};

void drawCollection(Screen& screen, const SearchCollection& collection) {
  screen.heading(collection.label, extentText(collection.meta, collection.items.size()));
  drawItems(screen, collection.items, collection.meta.offset);
}

void drawResults(Screen& screen, const std::vector<SearchCollection>& results,
                 const std::string& query) {
  screen.title("“" + query + "”", results.empty() ? "nothing found" : "");
  for (const SearchCollection& collection : results) drawCollection(screen, collection);
}

int runSearch(Tool& tool, const Written& written) {
  if (written.kind.empty()) {
    return fetchAndAnswer(
        tool, "searching",
        [&](const Context& context) { return context.fetchSearchResults(written.query); },
        [&](Screen& screen, const auto& results) { drawResults(screen, results, written.query); });
  }
  const auto kind = *caseNamed<SearchCollection::ResultsKind>(written.kind);
  return fetchListAndAnswer(
      tool, "searching", written.paging.all,
      [&](const Context& context) {
        return context.fetchSearchCollection(written.query, kind, written.paging.read());
      },
      [&](Screen& screen, const SearchCollection& collection) {
        drawResults(screen, {collection}, written.query);
      });
}

}  // namespace

void addSearchCommands(Commands& commands) {
  const auto search = std::make_shared<Written>();
  CLI::App* command = commands.add("search", "Search in everything, or in one category",
                                   [search](Tool& tool) { return runSearch(tool, *search); });
  command->add_option("QUERY", search->query)->required();
  CLI::Option* kind = command->add_option("--kind", search->kind, "The category to search in")
                          ->check(CLI::IsMember(caseNames<SearchCollection::ResultsKind>()));
  addPagingOptions(*command, search->paging);
  for (const char* name : {"--limit", "--offset", "--all"}) {
    command->get_option(name)->needs(kind);
  }

  const auto query = std::make_shared<std::string>();
  commands
      .add("suggest", "Suggestions for the beginning of a search",
           [query](Tool& tool) {
             return fetchAndAnswer(
                 tool, "asking for suggestions",
                 [&](const Context& context) { return context.fetchSearchSuggestions(*query); },
                 [](Screen& screen, const std::vector<std::string>& suggestions) {
                   for (const std::string& suggestion : suggestions) screen.paragraph(suggestion);
                 });
           })
      ->add_option("QUERY", *query)
      ->required();
}

}  // namespace orvo::tool
