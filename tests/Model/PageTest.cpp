#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/Page.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kPage{{"id", R"("p")"}, {"title", R"("T")"}};

TEST(PageParser, RequiresIdAndTitleAndHasADefaultForTheRest) {
  const auto parse = [](const JSONObject& json) { return PageParser::parse(json); };
  expectRequired("Page", kPage, {"id", "title"}, parse);
  Document damaged = kPage;
  for (const char* key :
       {"content_type", "subheading", "short_description", "long_description", "icon",
        "collections", "resources", "status", "links", "lineup", "share_url"}) {
    damaged = damaged.with(key, "[{}, 7]");
  }
  for (const Document& document : {kPage, damaged}) {
    const Page page = parse(document).force();
    EXPECT_EQ(page.kind, Page::ContentKind::generic);
    EXPECT_EQ(page.iconID, "p");
    EXPECT_TRUE(page.collections.empty() && page.appActions.empty() && page.siblings.empty());
    EXPECT_TRUE(page.imageResources.empty() && page.videoPreviews.empty());
    EXPECT_EQ(page.status.label, "TBD");
    EXPECT_FALSE(page.subheading || page.shortDescription || page.longDescription ||
                 page.lineupMeta || page.shareURL);
  }
}

TEST(PageParser, ReadsWhatIsThere) {
  const Page page = PageParser::parse(object(R"({
      "id": "p", "title": "T", "subheading": "a", "short_description": "b", "icon": "i",
      "long_description": "c", "content_type": "subchannel", "resources": ["orvo_cover_art_square"],
      "status": {"code": "post", "label": "Over", "ttl": 1000}, "share_url": "https://s.example"})"))
                        .force();
  EXPECT_EQ(*page.subheading + *page.shortDescription + *page.longDescription, "abc");
  EXPECT_EQ(page.iconID + page.shareURL->text(), "ihttps://s.example");
  EXPECT_EQ(page.kind, Page::ContentKind::subchannel);
  EXPECT_EQ(page.imageResources.find(ImageResourceKey::coverSquare)->productID, "p");
  EXPECT_EQ(page.ttl(), 1);
}

TEST(PageParser, DividesLinksIntoActionsAndSiblings) {
  const Page page = PageParser::parse(kPage.with("links", R"([
      {"type": "sibling", "id": "b", "label": "B"},
      {"type": "button", "id": "c", "label": "C", "action": "view"},
      {"type": "button", "id": "e", "label": "E", "action": "share"},
      {"type": "sibling", "id": "no label"},
      {"type": "Sibling", "id": "d", "label": "D"},
      {"type": "sibling", "id": "a", "label": "A"}])"))
                        .force();
  EXPECT_EQ(page.siblings, std::vector<Page::Sibling>({{"B", "b"}, {"A", "a"}}));
  ASSERT_EQ(page.appActions.size(), 1U);
  EXPECT_EQ(page.appActions[0].kind, AppAction::Kind::view);
}

TEST(Page, DiffersByItsStatusNotByWhatDescribesIt) {
  const Page page{.id = "p", .title = "T"};
  Page other{.id = "p", .title = "T", .shortDescription = "S", .iconID = "i"};
  EXPECT_EQ(page, other);
  other.status.code = StatusCode::live;
  EXPECT_NE(page, other);
}

TEST(SystemViewParser, ReplacesTheTitle) {
  EXPECT_EQ(SystemViewParser::parse(kPage, "Browse").force().title, "Browse");
  EXPECT_EQ(SystemViewParser::parse(kPage.without("title"), "Browse").force().title, "Browse");
  EXPECT_EQ(failureOf(SystemViewParser::parse(kPage.without("id"), "Browse")), "Page: id");
}

TEST(ContentItemParser, DecidesByTypeAlone) {
  const Document both = kPage.with("short_description", R"("S")");
  const auto video = ContentItemParser::parse(both.with("type", R"("video")"), "C").force();
  EXPECT_EQ(video.video()->playlistID, "C");
  const auto page = ContentItemParser::parse(both.with("type", R"("page")"), "C").force();
  EXPECT_EQ(page.video(), nullptr);

  const auto parse = [](const JSONObject& json) { return ContentItemParser::parse(json); };
  expectRequired("ItemCollection", both, {"type"}, parse);
  EXPECT_EQ(failureOf(parse(both.with("type", R"("Video")"))), "ItemCollection: type");
  EXPECT_EQ(failureOf(parse(kPage.with("type", R"("video")"))), "Video: short_description");
}

TEST(ContentItem, LivesAsItsContentAndEqualsNoOtherKind) {
  Video video{.id = "a", .title = "T", .status = {.ttl = 7}};
  const ContentItem item(video);
  EXPECT_EQ(item.ttl(), 300) << "nobody knows an unknown state's end";
  video.status.code = StatusCode::live;
  EXPECT_EQ(ContentItem(video).ttl(), 7);
  EXPECT_NE(item, ContentItem(Page{.id = "a", .title = "T"}));
}

}  // namespace
}  // namespace orvo
