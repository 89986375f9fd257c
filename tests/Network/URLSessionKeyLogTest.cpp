#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>

#include <cstdlib>
#include <filesystem>

namespace orvo::test {
namespace {

enum Outcome { nothingWritten, keysWritten, notFetched };

/// Fetches over TLS in a process whose environment names a file for the keys.
Outcome fetch(bool writesKeyLog) {
  const CertificateAuthority authority;
  const HTTPServer server([](const ServedRequest&) { return ServedAnswer(); }, authority.issue());
  const std::filesystem::path file = authority.file() + ".keys";
  setenv("SSLKEYLOGFILE", file.c_str(), 1);
  URLSession session({.certificateAuthorityFile = authority.file(), .writesKeyLog = writesKeyLog});
  if (codeOf(session.fetch({.url = server.url()})) != 200) return notFetched;
  const bool isEmpty = !exists(file) || is_empty(file);
  remove(file);
  return isEmpty ? nothingWritten : keysWritten;
}

TEST(URLSessionKeyLogDeathTest, IsWrittenOnlyIfTheAppSaysSo) {
  // libcurl looks at the environment once in a process.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(fetch(false)), testing::ExitedWithCode(nothingWritten), "");
  EXPECT_EXIT(std::_Exit(fetch(true)), testing::ExitedWithCode(keysWritten), "");
}

}  // namespace
}  // namespace orvo::test
