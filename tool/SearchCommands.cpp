#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>
#include <tool/Paging.h>

namespace orvo::tool {

namespace {

struct WrittenSearch {
  std::string query{};
  std::string kind{};
  WrittenPaging paging{};
  WrittenList list{};
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

int runSearch(Tool& tool, const WrittenSearch& written) {
  const ListOutput output(tool, written.list, kFoundFields);
  if (written.kind.empty()) {
    return fetchRecordsAndAnswer(
        tool, output, "searching",
        [&](const Context& context) { return context.fetchSearchResults(written.query); },
        [&](Screen& screen, const auto& results) { drawResults(screen, results, written.query); });
  }
  const auto kind = *caseNamed<SearchCollection::ResultsKind>(written.kind);
  return fetchListAndAnswer(
      tool, output, "searching", written.paging,
      [&](const Context& context) {
        return context.fetchSearchCollection(written.query, kind, written.paging.read());
      },
      [&](Screen& screen, const SearchCollection& collection) {
        drawResults(screen, {collection}, written.query);
      });
}

int runSuggest(Tool& tool, const WrittenSearch& written) {
  return fetchRecordsAndAnswer(
      tool, ListOutput(tool, written.list, kTextFields), "asking for suggestions",
      [&](const Context& context) { return context.fetchSearchSuggestions(written.query); },
      [](Screen& screen, const std::vector<std::string>& suggestions) {
        if (suggestions.empty()) screen.paragraph("no suggestions", Style::faint);
        for (const std::string& suggestion : suggestions) screen.paragraph(suggestion);
      });
}

Parameter query(WrittenSearch& written, std::string description) {
  return {.name = "QUERY",
          .description = std::move(description),
          .values = {.accepts = [](const std::string& text) { return !text.empty(); },
                     .wanted = "a text to search for",
                     .mayHoldSpaces = true},
          .target = &written.query,
          .required = true};
}

}  // namespace

void addSearchCommands(Commands& commands) {
  const auto search = std::make_shared<WrittenSearch>();
  std::vector<Parameter> options{
      {.name = "--kind",
       .description = "The category to search in",
       .values = anyOf(caseNames<SearchCollection::ResultsKind>(), "KIND"),
       .target = &search->kind}};
  for (Parameter& option : pagingOptions(search->paging)) {
    option.needs = {"--kind"};
    options.push_back(std::move(option));
  }
  addListOptions(options, search->list, kFoundFields);
  commands.push_back(
      {.name = "search",
       .description = "Search in everything, or in one category",
       .arguments = {query(*search, "The words to search for; several in quotes")},
       .options = std::move(options),
       .examples = {"orvo --demo search night", "orvo --demo search night --kind videos --limit 3"},
       .run = [search](Tool& tool) { return runSearch(tool, *search); }});

  const auto suggest = std::make_shared<WrittenSearch>();
  options.clear();
  addListOptions(options, suggest->list, kTextFields);
  commands.push_back({.name = "suggest",
                      .description = "Suggestions for the beginning of a search",
                      .arguments = {query(*suggest, "What has been typed so far")},
                      .options = std::move(options),
                      .examples = {"orvo --demo suggest nig", "orvo --demo suggest nig --json"},
                      .run = [suggest](Tool& tool) { return runSuggest(tool, *suggest); }});
}

}  // namespace orvo::tool
