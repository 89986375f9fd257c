#pragma once

#include <OrvoAPI/Context/ContextOptions.h>
#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <tool/ModelJson.h>
#include <tool/SentLists.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvo::tool {

/// What was left out of the documents that a command has read, and what a service itself did not
/// send: `--report`.
class LossReport : public std::enable_shared_from_this<LossReport> {
 public:
  /// Has the context that is made with the options tell of it, on the queue that they name.
  void listen(ContextOptions& options);
  /// Adds what was read without a context. From any thread.
  void add(const std::vector<DocumentLoss>& losses);

  /// Looks at what a service has sent for lists without elements. From any thread.
  void addSent(const std::string& path, const Data& body);

  /// Says on standard error what is known by now, the first time; `isDone`: also that it is
  /// nothing. From any thread.
  void print(bool json, bool isDone);

 private:
  /// A list, with the path of the document's address.
  struct Sent {
    std::string document;
    ShortList list;
  };
  [[nodiscard]] static Json sentJson(const Sent& sent);
  [[nodiscard]] static std::string sentText(const Sent& sent);
  [[nodiscard]] std::vector<DocumentLoss> taken();

  std::shared_ptr<DispatchQueue> queue_;
  std::mutex lock_;
  std::vector<DocumentLoss> losses_;
  std::vector<Sent> sent_;
  bool hasRead_ = false;
  bool isPrinted_ = false;
};

}  // namespace orvo::tool
