// An HTTP Archive, and the answers that a session gets from it.

#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/HTTPArchive.h>
#include <fuzz/FuzzTarget.h>

#include <algorithm>
#include <string>

using namespace orvo;

namespace {

std::string summary(const Result<HTTPArchive>& read) {
  if (const auto* const error = read.error()) return error->description();
  std::string text;
  for (const auto& entry : read.value()->entries) {
    text += entry.method + " " + entry.url.text() + " " + std::to_string(entry.statusCode);
    for (const auto& [name, value] : entry.headers) text.append(name).append(": ").append(value);
    text.append(entry.body.view()).append(entry.error ? entry.error->description() : "");
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Data file(fuzz::text(bytes, size));
  const auto read = HTTPArchive::parse(file);
  fuzz::require(!read.failed() || !read.error()->description().empty(), "every error says what");
  fuzz::require(summary(read) == summary(HTTPArchive::parse(file)),
                "the same file gives the same archive");
  if (read.failed()) return 0;
  std::size_t bodies = 0;
  for (const auto& entry : read.value()->entries) {
    const auto& url = entry.url;
    fuzz::require(url.isAbsolute() && !url.host().empty() && !url.fragment(),
                  "every address is one that a session takes");
    fuzz::require(
        entry.error ? entry.body.empty() : entry.statusCode > 0 && entry.statusCode < 1000,
        "there is an answer or an error");
    bodies += entry.body.size();
  }
  fuzz::require(bodies <= size, "no body is longer than its text");
  return 0;
}
