#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/Status.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kLive({{"code", R"("live")"}, {"label", R"("Live")"}});

TEST(StatusParser, ReadsAllMembers) {
  const Status status = StatusParser::parse(kLive.with("message", R"("Soon")")
                                                .with("ttl", "60500")
                                                .with("start_time", R"("1970-01-01T00:00:01.250Z")")
                                                .with("end_time", R"("1970-01-01T00:00:02Z")"));
  EXPECT_EQ(status.code, StatusCode::live);
  EXPECT_EQ(status.label, "Live");
  EXPECT_EQ(status.message, "Soon");
  EXPECT_EQ(status.ttl, 60.5);
  EXPECT_EQ(status.startTime, Date(1250));
  EXPECT_EQ(status.endTime, Date(2000)) << "read without milliseconds too";
}

TEST(StatusParser, FallsBackWhollyWithoutAKnownCodeOrALabel) {
  const Document full = kLive.with("ttl", "1000").with("message", R"("M")");
  for (const Document& document :
       {full.without("code"), full.with("code", R"("Live")"), full.with("code", "1"),
        full.without("label"), full.with("label", "null"), Document({})}) {
    const Status status = StatusParser::parse(document);
    EXPECT_EQ(status, Status{}) << document.text();
    EXPECT_EQ(status.label, "TBD");
    EXPECT_EQ(status.ttl, 300);
    EXPECT_EQ(status.message, std::nullopt);
  }
}

TEST(StatusParser, DropsOptionalMembersThatCannotBeRead) {
  const Status status = StatusParser::parse(kLive.with("message", "5")
                                                .with("ttl", R"("60000")")
                                                .with("start_time", R"("tomorrow")")
                                                .with("end_time", "1000"));
  EXPECT_EQ(status.code, StatusCode::live);
  EXPECT_EQ(status.message, std::nullopt);
  EXPECT_EQ(status.ttl, 300);
  EXPECT_EQ(status.startTime, std::nullopt);
  EXPECT_EQ(status.endTime, std::nullopt);
  EXPECT_EQ(StatusParser::parse(kLive.with("ttl", "true")).ttl, 300) << "a boolean is no number";
}

TEST(Status, IsEqualByCodeAndTimes) {
  const Status status{.code = StatusCode::live, .label = "a", .ttl = 1, .startTime = Date(1)};
  Status other{.code = StatusCode::live, .label = "b", .ttl = 2, .message = "m"};
  EXPECT_NE(status, other) << "one time is absent";
  other.startTime = Date(1);
  EXPECT_EQ(status, other);
  other.endTime = Date(2);
  EXPECT_NE(status, other);
  other.endTime = std::nullopt;
  other.code = StatusCode::post;
  EXPECT_NE(status, other);
}

TEST(AppActionParser, ReportsTheActionAsKind) {
  const Document play(
      {{"id", R"("a")"}, {"label", R"("Play")"}, {"action", R"("play")"}, {"icon", R"("star")"}});
  EXPECT_EQ(requirements(play, {"id", "label", "action", "icon"}, AppActionParser::parse),
            "id -> AppAction: id\n"
            "label -> AppAction: label\n"
            "action -> AppAction: kind\n"
            "icon -> ok\n");
  EXPECT_EQ(failureOf(AppActionParser::parse(play.with("action", R"("share")"))),
            "AppAction: kind");
  EXPECT_EQ(failureOf(AppActionParser::parse(Document({}))), "AppAction: id");

  const auto action = AppActionParser::parse(play).force();
  EXPECT_EQ(action.id + action.label + action.icon, "aPlaystar");
  EXPECT_EQ(action.kind, AppAction::Kind::play);
  EXPECT_EQ(AppActionParser::parse(play.without("icon")).force().icon, "space");
}

}  // namespace
}  // namespace orvo
