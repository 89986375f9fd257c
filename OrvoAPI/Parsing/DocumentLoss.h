#pragma once

#include <OrvoAPI/Base/RawValue.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// Something of a document that a parser left out, or why it could not read any of it. It holds
/// names and counts, never a value of the document. A value.
struct DocumentLoss {
  /// Why something was left out.
  enum class Reason {
    /// A member that its record requires is not there.
    missing,
    /// It is null.
    null,
    /// It is of another type than it should be.
    wrongType,
    /// It is of the right type, but cannot be used: a name that is not known, an address or a date
    /// that is none, a number that is not whole.
    badValue,
    /// Stands for the losses beyond `LossWatch::kMost`.
    further
  };

  /// The type of the document, such as "ItemCollection".
  std::string document = {};
  /// What was asked for when it was fetched, as in a `RequestReport`.
  std::string identifier = {};
  /// Where the fault is: `items[3].title`. Empty for `further`.
  std::string path = {};
  /// What was left out for it: `items[3]`, or the faulty member itself; empty for the whole
  /// document, which failed or of which a stand-in was made.
  std::string lost = {};
  Reason reason = Reason::missing;
  /// How many there are: one, or the number of the further ones.
  std::size_t count = 1;

  friend bool operator==(const DocumentLoss&, const DocumentLoss&) = default;
};

template <>
inline constexpr EnumCase enumCases<DocumentLoss::Reason>[] = {
    {"missing"}, {"null"}, {"wrongType"}, {"badValue"}, {"further"}};

/// While it exists, records what the library's parsers leave out of the document that was last read
/// (with `JSONDataParser`) on the thread that made it. It must be destroyed on that thread. If
/// there are several, only the latest records anything.
class LossWatch {
 public:
  /// How many losses are told one by one.
  static constexpr std::size_t kMost = 100;

  /// If memory is refused, nothing is recorded.
  LossWatch() noexcept;
  ~LossWatch();
  LossWatch(const LossWatch&) = delete;
  LossWatch& operator=(const LossWatch&) = delete;

  /// What was left out of the document, which it calls `document`, in the order of the objects and
  /// arrays whose members and elements they are; or, when it failed, the member that it failed for.
  [[nodiscard]] std::vector<DocumentLoss> losses(std::string_view document) const;

 private:
  class Notes;
  std::unique_ptr<Notes> notes_;
};

}  // namespace orvo
