#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

TEST(HTTPHeaders, FindsFieldsWithoutRegardToCase) {
  HTTPHeaders headers{{"Accept", "a"}, {"X-Id", "1"}, {"accept", "b"}};
  EXPECT_EQ(headers.value("ACCEPT"), "a");
  EXPECT_EQ(headers.values("Accept"), (std::vector<std::string_view>{"a", "b"}));
  EXPECT_FALSE(headers.contains("X-I"));
  headers.set("x-id", *headers.value("ACCEPT"));
  EXPECT_EQ(headers, (HTTPHeaders{{"Accept", "a"}, {"accept", "b"}, {"x-id", "a"}}));
  headers.set("X-Id", std::string(100, 'i'));
  headers.set("x-id", *headers.value("X-Id"));
  EXPECT_EQ(headers.value("x-id"), std::string(100, 'i')) << "set from its own value";
  headers.set("x-id", "a");
  headers.remove("Accept");
  EXPECT_EQ(headers, (HTTPHeaders{{"x-id", "a"}}));
}

}  // namespace
}  // namespace orvo
