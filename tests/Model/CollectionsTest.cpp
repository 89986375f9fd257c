#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const PagingMeta kPaging{.total = 9, .limit = 2, .offset = 4};
const Document kCollection{{"id", R"("c")"},
                           {"type", R"("featured")"},
                           {"item_type", R"("pages")"},
                           {"label", R"("L")"},
                           {"short_label", R"("S")"},
                           {"meta", R"({"total": 9, "limit": 2.0, "offset": 4})"},
                           {"items", R"([
    {"type": "video", "id": "1", "title": "T", "short_description": "S"},
    {"type": "video", "id": "2"}, {"id": "3", "title": "T"}, {},
    {"type": "page", "id": "4", "title": "T"}])"}};
const Document kSearch = kCollection.with("collection_type", R"("top_results")");
const Document kPlaylist =
    kCollection.with("items", R"([{"id": "1", "title": "T", "short_description": "S"}, {"id": "2"},
                                  {"id": "3", "title": "T", "short_description": "S"}])");

Result<SearchCollection> parseSearch(const JSONObject& json) {
  return SearchCollectionParser::parse(json, "q");
}
Result<Playlist> parsePlaylist(const JSONObject& json) { return PlaylistParser::parse(json); }

TEST(ItemCollectionParser, ReportsRequiredMembersAndDropsItemsThatItCannotRead) {
  const auto parse = ItemCollectionParser::parse;
  expectRequired("ItemCollection", kCollection,
                 {"id", "type", "label", "short_label", "meta", "items"}, parse);
  EXPECT_EQ(failureOf(parse(kCollection.with("type", R"("clips")"))), "ItemCollection: type");
  EXPECT_EQ(failureOf(parse(kCollection.with("items", "[{}, 1]"))), "ItemCollection: items");
  EXPECT_EQ(parse(kCollection.with("item_type", R"("clips")")).force().contentsKind,
            ItemCollection::ContentsKind::mixed);
  const auto collection = parse(kCollection).force();
  EXPECT_EQ(collection.id + collection.label + collection.shortLabel, "cLS");
  EXPECT_EQ(collection.kind, ItemCollection::Kind::featured);
  EXPECT_EQ(collection.contentsKind, ItemCollection::ContentsKind::pages);
  EXPECT_EQ(collection.meta, kPaging);
  ASSERT_EQ(collection.items.size(), 2U);
  EXPECT_EQ(collection.items[0].video()->playlistID, "c");
  EXPECT_EQ(collection.items[1].page()->id, "4");
}

TEST(PagingMeta, IsReportedByEachDocumentInItsOwnWay) {
  for (const char* meta :
       {R"({"total": 9, "limit": 2})", R"({"total": "9", "limit": 2, "offset": 4})",
        R"({"total": 9, "limit": 2.5, "offset": 4})"}) {
    EXPECT_EQ(failureOf(ItemCollectionParser::parse(kCollection.with("meta", meta))),
              "ItemCollection: products/meta details");
    EXPECT_EQ(failureOf(parseSearch(kSearch.with("meta", meta))), "SearchCollection: meta");
    EXPECT_EQ(failureOf(parsePlaylist(kPlaylist.with("meta", meta))), "Playlist: meta details");
  }
}

TEST(SearchCollectionParser, ReportsEachRequiredMember) {
  expectRequired("SearchCollection", kSearch,
                 {"type", "collection_type", "label", "short_label", "meta", "items"}, parseSearch);
  const auto found = parseSearch(kSearch.without("contains")).force();
  EXPECT_EQ(found.query + found.label + found.shortLabel, "qLS");
  EXPECT_EQ(found.contentsKind, SearchCollection::ContentsKind::mixed);
  EXPECT_EQ(found.resultsKind, SearchCollection::ResultsKind::top);
  ASSERT_EQ(found.items.size(), 2U);
  EXPECT_EQ(found.items[0].video()->playlistID, std::nullopt);
}

TEST(SearchResultsParser, DropsTheCollectionsThatItCannotRead) {
  const Document results{{"collections", "[" + kSearch.text() + "," +
                                             kSearch.without("label").text() + ",{}," +
                                             kSearch.with("label", R"("M")").text() + "]"}};
  const auto found = SearchResultsParser::parse(results, "q").force();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].label + found[1].label + found[1].query, "LMq");
  EXPECT_EQ(failureOf(SearchResultsParser::parse(object(R"({"collections": [1]})"), "q")),
            "SearchCollection: collections");
}

TEST(SearchCollection, MadeLocallyIsLabelledByItsKind) {
  const auto none = SearchCollection::empty("q", SearchCollection::ResultsKind::top);
  EXPECT_EQ(none.query + none.label + none.shortLabel, "qtop_resultstop_results");
  EXPECT_TRUE(none.meta == PagingMeta{} && none.items.empty());
}

TEST(PlaylistParser, ReportsEachRequiredMemberAndIgnoresTheKind) {
  expectRequired("Playlist", kPlaylist, {"id", "label", "short_label", "meta", "items"},
                 parsePlaylist);
  EXPECT_EQ(parsePlaylist(kPlaylist).force().kind, ItemCollection::Kind::generic);
}

TEST(PlaylistParser, PutsAMissingIncludedVideoInFront) {
  const CapturedConsole console;
  Video video{.id = "3", .title = "T", .shortDescription = "S"};
  EXPECT_EQ(PlaylistParser::parse(kPlaylist, &video).force().items.size(), 2U);
  EXPECT_EQ(console.lines, "");
  video.duration = 1;
  const auto playlist = PlaylistParser::parse(kPlaylist, &video).force();
  ASSERT_EQ(playlist.items.size(), 3U);
  EXPECT_EQ(playlist.items[0], video);
  EXPECT_EQ(playlist.items[2].playlistID, "c");
  EXPECT_EQ(playlist.meta, kPaging);
  EXPECT_EQ(console.lines, "Prepending video to playlist\n");
}

}  // namespace
}  // namespace orvo
