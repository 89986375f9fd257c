#include <OrvoAPI/Context/Environment.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(Environment, ListsItsDeploymentsWithTheirHosts) {
  std::vector<std::string_view> names;
  for (const auto environment : allEnvironments) {
    names.push_back(name(environment));
    EXPECT_EQ(url(environment).scheme(), "https");
    EXPECT_EQ(url(environment).path(), "/v3/");
    EXPECT_EQ(resourceURL(environment), resourceURL(Environment::production));
  }
  EXPECT_THAT(names, testing::ElementsAre("Production", "QA", "Staging"));
  EXPECT_NE(url(Environment::production), url(Environment::qa));
  EXPECT_NE(url(Environment::production), url(Environment::staging));
  EXPECT_NE(url(Environment::qa), url(Environment::staging));
  EXPECT_EQ(resourceURL(Environment::qa).path(), "/");
}

}  // namespace
}  // namespace orvo
