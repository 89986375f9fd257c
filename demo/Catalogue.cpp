#include <demo/Catalogue.h>
#include <demo/CatalogueTexts.h>

#include <algorithm>
#include <utility>

namespace orvo::demo {

namespace {

constexpr std::size_t kEpisodesPerShow = 20;

std::string withPlace(std::string_view pattern, std::string_view place) {
  std::string text(pattern);
  return text.replace(text.find("{}"), 2, place);
}

std::string twoDigits(std::size_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

template <class... Parts>
std::string join(const Parts&... parts) {
  std::string text;
  (text.append(parts), ...);
  return text;
}

const texts::Show& showAt(std::size_t index) { return texts::kShows[index % texts::kShows.size()]; }

std::int64_t lasting(int minutes) { return std::int64_t{minutes} * 60'000; }

/// Only ASCII letters have their case folded: enough for the catalogue's own texts.
std::string folded(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

}  // namespace

Catalogue::Catalogue() {
  addShelf("featured", "Today on Orvo", "Today").kind = "featured";
  addShelf("live-events", "Live Events", "Live").kind = "schedule";
  addShelf("shows", "Shows", "Shows").contents = "pages";
  addShelf("films", "Films", "Films").contents = "mixed";
  addShelf("clips", "Short and Good", "Clips");
  addShelf("channels", "Channels", "Channels").contents = "pages";
  addShelf("events", "Events", "Events").contents = "pages";
  addShelf("formats", "Formats and Years", "Formats").contents = "pages";
  addShelf("episodes", "All Episodes", "Episodes");
  addShelf("everything", "Everything", "All").contents = "mixed";
  addShelf(std::string(kUpcomingEvents), "Upcoming Live Events", "Upcoming");
  addShows();
  addFilms();
  addEvents();
  addChannels();
  addFormatsAndYears();
  addSystemViews();
}

const Product* Catalogue::add(Product product) {
  const auto [position, added] = products_.emplace(product.id, std::move(product));
  const Product* found = &position->second;
  inOrder_.push_back(found);
  return found;
}

Shelf& Catalogue::addShelf(std::string id, std::string label, std::string shortLabel) {
  Shelf shelf{.id = id, .label = std::move(label), .shortLabel = std::move(shortLabel)};
  return shelves_.emplace(std::move(id), std::move(shelf)).first->second;
}

void Catalogue::addShows() {
  for (std::size_t index = 0; index < texts::kShows.size(); ++index) {
    const texts::Show& text = showAt(index);
    addEpisodes(index);
    const Product* clip = add({.id = join("clip-", text.slug),
                               .kind = "clip",
                               .title = join(text.title, " in Two Minutes"),
                               .subheading = std::string(text.subheading),
                               .description = join("The best of the season. ", text.description),
                               .durationMilliseconds = lasting(2),
                               .shelves = {"clips"}});
    shelves_.at("clips").items.push_back(clip);
    const texts::Show& next = showAt(index + 1);
    const texts::Show& previous = showAt(index + texts::kShows.size() - 1);
    const Product* show = add({.id = join("show-", text.slug),
                               .sort = Product::Sort::page,
                               .kind = "show",
                               .title = std::string(text.title),
                               .subheading = std::string(text.subheading),
                               .description = std::string(text.description),
                               .shelves = {join("episodes-", text.slug), "clips"},
                               .siblings = {join("show-", previous.slug), join("show-", next.slug)},
                               .plays = join("episode-", text.slug, "-01")});
    shelves_.at("shows").items.push_back(show);
  }
}

void Catalogue::addEpisodes(std::size_t show) {
  const texts::Show& text = showAt(show);
  const std::string shelfID = join("episodes-", text.slug);
  Shelf& shelf = addShelf(shelfID, join(text.title, ": Episodes"), "Episodes");
  for (std::size_t number = 1; number <= kEpisodesPerShow; ++number) {
    // A different place for the same number in each show.
    const auto place = texts::kPlaces[(number * 7 + show * 3) % texts::kPlaces.size()];
    const auto halfSeconds = static_cast<std::int64_t>(number % 7);
    const Product* episode =
        add({.id = join("episode-", text.slug, "-", twoDigits(number)),
             .kind = "episode",
             .title = withPlace(text.episode, place),
             .subheading = join(text.title, " \u00b7 Episode ", std::to_string(number)),
             .description = std::string(text.description),
             .durationMilliseconds = lasting(text.minutes) + 500 * halfSeconds,
             .shelves = {shelfID, "episodes"},
             .nextPlaylist = join("episodes-", showAt(show + 1).slug)});
    shelf.items.push_back(episode);
    episodes_.push_back(episode);
    shelves_.at("episodes").items.push_back(episode);
  }
}

void Catalogue::addFilms() {
  for (const texts::Film& text : texts::kFilms) {
    const Product* film = add({.id = join("film-", text.slug),
                               .kind = "film",
                               .title = std::string(text.title),
                               .subheading = std::string(text.subheading),
                               .description = std::string(text.description),
                               .durationMilliseconds = lasting(text.minutes),
                               .shelves = {"films"}});
    const Product* page = add({.id = join("about-", text.slug),
                               .sort = Product::Sort::page,
                               .kind = "film",
                               .title = join("About \u201c", text.title, "\u201d"),
                               .subheading = std::string(text.subheading),
                               .description = std::string(text.description),
                               .shelves = {"films"},
                               .plays = film->id});
    for (const Product* item : {film, page}) shelves_.at("films").items.push_back(item);
  }
}

void Catalogue::addEvents() {
  for (const texts::Event& text : texts::kEvents) {
    const Product* live = add({.id = join("live-", text.slug),
                               .kind = "live_program",
                               .title = std::string(text.title),
                               .subheading = std::string(text.subheading),
                               .description = "Live, as it happens, and to watch again afterwards.",
                               .durationMilliseconds = lasting(text.minutes),
                               .shelves = {"live-events"},
                               .lineup = "lineup",
                               .hoursFromNow = text.hoursFromNow,
                               .code = std::string(text.code)});
    shelves_.at("live-events").items.push_back(live);
    if (text.hoursFromNow > 0) shelves_.at(std::string(kUpcomingEvents)).items.push_back(live);
  }
  std::vector<std::string> stops;
  for (std::size_t index = 0; index < texts::kHarbourStops.size(); ++index)
    stops.push_back("stop-" + std::to_string(index + 1));
  for (std::size_t index = 0; index < stops.size(); ++index) {
    add({.id = stops[index],
         .sort = Product::Sort::page,
         .kind = "stop",
         .title = std::string(texts::kHarbourStops[index]),
         .subheading = "A stop of Harbour Days",
         .shelves = {"live-events"},
         .siblings = stops,
         .hoursFromNow = texts::kEvents[index].hoursFromNow});
  }
  const Product* harbourDays = add({.id = "event-harbour-days",
                                    .sort = Product::Sort::page,
                                    .kind = "event",
                                    .title = "Harbour Days",
                                    .subheading = "Three towns, one week on the water",
                                    .description = "Ships, ropes and far too much fried fish.",
                                    .shelves = {"live-events"},
                                    .siblings = stops,
                                    .plays = "live-harbour-merrowick",
                                    .hoursFromNow = texts::kEvents[0].hoursFromNow});
  shelves_.at("events").items.push_back(harbourDays);
}

void Catalogue::addChannels() {
  const auto channel = [&](const texts::Channel& text, std::string kind, std::size_t index) {
    std::vector<std::string> shelves;
    for (const texts::Show& show : texts::kShows) {
      if (show.channel == index) shelves.push_back(join("episodes-", show.slug));
    }
    const Product* page = add({.id = join(kind, "-", text.slug),
                               .sort = Product::Sort::page,
                               .kind = kind,
                               .title = std::string(text.name),
                               .subheading = std::string(text.subheading),
                               .shelves = std::move(shelves),
                               .lineup = kind == "channel" ? "lineup" : "grid"});
    shelves_.at("channels").items.push_back(page);
  };
  for (std::size_t index = 0; index < texts::kChannels.size(); ++index) {
    channel(texts::kChannels[index], "channel", index);
  }
  for (std::size_t index = 0; index < texts::kSubchannels.size(); ++index) {
    channel(texts::kSubchannels[index], "subchannel", index);
  }
}

void Catalogue::addFormatsAndYears() {
  const auto page = [&](std::string id, std::string kind, std::string title, std::string shelf) {
    const Product* added = add({.id = std::move(id),
                                .sort = Product::Sort::page,
                                .kind = std::move(kind),
                                .title = std::move(title),
                                .shelves = {std::move(shelf)}});
    shelves_.at("formats").items.push_back(added);
  };
  page("format-documentaries", "format", "Documentaries", "films");
  page("format-short", "format", "In Two Minutes", "clips");
  for (int year = 2022; year <= 2024; ++year) {
    page(join("year-", std::to_string(year)), "year", std::to_string(year), "episodes");
  }
}

void Catalogue::addSystemViews() {
  add({.id = "welcome",
       .kind = "generic",
       .title = "Welcome to Orvo",
       .description = "What there is to see, in one minute.",
       .durationMilliseconds = lasting(1)});
  const auto view = [&](std::string id, std::string title, std::vector<std::string> shelves,
                        std::string lineup = "") {
    return add({.id = std::move(id),
                .sort = Product::Sort::page,
                .kind = "generic",
                .title = std::move(title),
                .description = "A small channel that lives inside this program.",
                .shelves = std::move(shelves),
                .lineup = std::move(lineup),
                .plays = "welcome"});
  };
  std::vector<const Product*>& everything = shelves_.at("everything").items;
  everything = inOrder_;
  view("view-discover", "Front Page",
       {"featured", "live-events", "shows", "films", "clips", "events", "formats", "everything"});
  view("view-calendar", "Schedule", {"live-events", std::string(kUpcomingEvents)}, "lineup");
  view("view-channels", "All Channels", {"channels"}, "grid");

  Shelf& featured = shelves_.at("featured");
  featured.contents = "mixed";
  for (const char* id : {"live-harbour-merrowick", "show-night-trains", "film-salt-road",
                         "episode-night-market-03", "event-harbour-days", "clip-herbarium"}) {
    featured.items.push_back(product(id));
  }
}

const Product* Catalogue::product(std::string_view id) const {
  const auto found = products_.find(id);
  return found == products_.end() ? nullptr : &found->second;
}

const Shelf* Catalogue::shelf(std::string_view id) const {
  const auto found = shelves_.find(id);
  return found == shelves_.end() ? nullptr : &found->second;
}

std::vector<const Product*> Catalogue::search(std::string_view query) const {
  const std::string wanted = folded(query);
  if (wanted.empty()) return {};
  std::vector<const Product*> inTitle;
  std::vector<const Product*> elsewhere;
  for (const Product* product : inOrder_) {
    if (folded(product->title).find(wanted) != std::string::npos) {
      inTitle.push_back(product);
    } else if (folded(product->subheading + "\n" + product->description).find(wanted) !=
               std::string::npos) {
      elsewhere.push_back(product);
    }
  }
  inTitle.insert(inTitle.end(), elsewhere.begin(), elsewhere.end());
  return inTitle;
}

}  // namespace orvo::demo
