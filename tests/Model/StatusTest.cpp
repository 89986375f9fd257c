#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/Status.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kLive{{"code", R"("live")"},
                     {"label", R"("Live")"},
                     {"message", R"("Soon")"},
                     {"ttl", "60500"},
                     {"start_time", R"("1970-01-01T00:00:01.250Z")"},
                     {"end_time", R"("1970-01-01T00:00:02Z")"}};

TEST(StatusParser, FallsBackWhollyWithoutAKnownCodeOrALabel) {
  for (const Document& document :
       {kLive.without("code"), kLive.with("code", R"("Live")"), kLive.with("code", "1"),
        kLive.without("label"), kLive.with("label", "null")}) {
    const Status status = StatusParser::parse(document);
    EXPECT_EQ(status, Status{}) << document.text();
    EXPECT_TRUE(status.label == "TBD" && status.ttl == 300 && !status.message);
  }
}

TEST(StatusParser, DropsOptionalMembersThatCannotBeRead) {
  Status status = StatusParser::parse(kLive);
  EXPECT_EQ(status.label + *status.message, "LiveSoon");
  EXPECT_EQ(status.ttl, 60.5);
  EXPECT_EQ(status.startTime, Date(1250));
  EXPECT_EQ(status.endTime, Date(2000)) << "read without milliseconds too";
  status = StatusParser::parse(kLive.with("message", "5")
                                   .with("ttl", R"("60000")")
                                   .with("start_time", R"("tomorrow")")
                                   .with("end_time", "1000"));
  EXPECT_EQ(status.code, StatusCode::live);
  EXPECT_EQ(status.ttl, 300);
  EXPECT_FALSE(status.message || status.startTime || status.endTime);
  EXPECT_EQ(StatusParser::parse(kLive.with("ttl", "true")).ttl, 300) << "a boolean is no number";
}

TEST(Status, IsEqualByCodeAndTimes) {
  const Status status = StatusParser::parse(kLive);
  EXPECT_EQ(status,
            StatusParser::parse(kLive.with("label", R"("b")").without("message").without("ttl")));
  for (const char* key : {"code", "start_time", "end_time"}) {
    EXPECT_NE(status, StatusParser::parse(kLive.without(key))) << key;
  }
}

TEST(AppActionParser, ReportsTheActionAsKind) {
  const Document play{{"id", R"("a")"}, {"label", R"("Play")"}, {"action", R"("playlist")"}};
  expectRequired("AppAction", play, {"id", "label", "action=kind"}, AppActionParser::parse);
  EXPECT_EQ(failureOf(AppActionParser::parse(play.with("action", R"("share")"))),
            "AppAction: kind");
  const auto action = AppActionParser::parse(play.with("icon", R"("star")")).force();
  EXPECT_EQ(action.id + action.label + action.icon, "aPlaystar");
  EXPECT_EQ(AppActionParser::parse(play.with("icon", "1")).force().icon, "space");
}

}  // namespace
}  // namespace orvo
