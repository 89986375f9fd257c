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

void StubInterceptor::fail(std::string path, URLError error) {
  add(std::move(path), std::move(error));
}

void StubInterceptor::answerOthers(std::string_view body, StubAnswerOptions options) {
  const std::lock_guard guard(lock_);
  others_ = Canned{std::move(options), Data(body)};
}

std::vector<URLRequest> StubInterceptor::requests() const {
  const std::lock_guard guard(lock_);
  return requests_;
}

bool StubInterceptor::intercept(const URLRequest& request,
                                const std::shared_ptr<InterceptedRequest>& intercepted) {
  std::unique_lock guard(lock_);
  requests_.push_back(request);
  const auto answer = take(request.url);
  guard.unlock();
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
  const std::lock_guard guard(lock_);
  answers_[std::move(path)].push_back(std::move(answer));
}

std::optional<StubInterceptor::Answer> StubInterceptor::take(const URL& url) {
  const std::string path(url.path());
  auto found = url.query() ? answers_.find(path + "?" + std::string(*url.query())) : answers_.end();
  if (found == answers_.end()) found = answers_.find(path);
  if (found == answers_.end()) return others_;
  auto& answers = found->second;
  if (answers.size() == 1) return answers.front();
  Answer next = std::move(answers.front());
  answers.pop_front();
  return next;
}

}  // namespace orvo
