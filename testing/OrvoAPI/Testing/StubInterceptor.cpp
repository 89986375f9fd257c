#include <OrvoAPI/Testing/HTTPArchive.h>
#include <OrvoAPI/Testing/StubInterceptor.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace orvo {

void StubInterceptor::answer(std::string path, std::string_view body, StubAnswerOptions options) {
  add(std::move(path), Canned{std::move(options), Data(body)});
}

void StubInterceptor::answerFromFile(std::string path, const std::string& file,
                                     StubAnswerOptions options) {
  std::ifstream stream(file, std::ios::binary);
  const std::string body{std::istreambuf_iterator<char>(stream), {}};
  if (!stream) throw std::runtime_error("cannot read " + file);
  answer(std::move(path), body, std::move(options));
}

void StubInterceptor::answerFromArchive(const std::string& file) {
  for (auto& entry : HTTPArchive::read(file).entries) {
    if (entry.method != "GET") continue;
    std::string path(entry.url.path());
    if (const auto query = entry.url.query()) path.append("?").append(*query);
    if (entry.error) {
      add(std::move(path), *entry.error);
    } else {
      add(std::move(path),
          Canned{{.statusCode = entry.statusCode, .headers = entry.headers}, entry.body});
    }
  }
}

void StubInterceptor::fail(std::string path, URLError error) {
  add(std::move(path), std::move(error));
}

void StubInterceptor::answerOthers(std::string_view body, StubAnswerOptions options) {
  state_.with([&](State& state) { state.others = Canned{std::move(options), Data(body)}; });
}

std::vector<URLRequest> StubInterceptor::requests() const {
  return state_.with([](const State& state) { return state.requests; });
}

bool StubInterceptor::intercept(const URLRequest& request,
                                const std::shared_ptr<InterceptedRequest>& intercepted) {
  const auto answer = state_.with([&](State& state) {
    state.requests.push_back(request);
    return state.take(request.url);
  });
  if (!answer) return false;
  if (const auto* error = std::get_if<URLError>(&*answer)) {
    intercepted->fail(*error);
  } else {
    const auto& canned = std::get<Canned>(*answer);
    intercepted->respond({.url = request.url,
                          .statusCode = canned.options.statusCode,
                          .headers = canned.options.headers},
                         canned.body);
  }
  return true;
}

void StubInterceptor::add(std::string path, Answer answer) {
  state_.with([&](State& state) { state.answers[std::move(path)].push_back(std::move(answer)); });
}

std::optional<StubInterceptor::Answer> StubInterceptor::State::take(const URL& url) {
  const std::string path(url.path());
  auto found = url.query() ? answers.find(path + "?" + std::string(*url.query())) : answers.end();
  if (found == answers.end()) found = answers.find(path);
  if (found == answers.end()) return others;
  auto& inTurn = found->second;
  if (inTurn.size() == 1) return inTurn.front();
  Answer next = std::move(inTurn.front());
  inTurn.pop_front();
  return next;
}

}  // namespace orvo
