// The readers and writers of dates, one per line, against those of a large Unicode library.

#include <OrvoAPI/Parsing/DateFormatter.h>
#include <fuzz/FuzzTarget.h>

#include <support/DateOracle.h>

using namespace orvo;

namespace {

/// A zone can lead out of the years that the patterns can hold.
bool hasFourDigits(Date date) {
  return date >= Date(-62'135'596'800'000) && date < Date(253'402'300'800'000);
}

void compare(const DateFormatter& formatter, const DateOracle& oracle, std::string_view text) {
  const auto ours = formatter.date(text);
  const auto theirs = oracle.date(text);
  if (ours) {
    fuzz::require(ours == theirs, "a date that is read is the oracle's");
    fuzz::require(formatter.string(*ours) == oracle.string(*ours), "it is written as it is there");
    fuzz::require(!hasFourDigits(*ours) || formatter.date(formatter.string(*ours)) == ours,
                  "and reads back");
  } else if (theirs) {
    // The oracle also takes what it would never write: single digits, other zones.
    fuzz::require(!hasFourDigits(*theirs) || oracle.string(*theirs) != text,
                  "a date is read in the form in which it is written");
  }
}

void check(std::string_view text) {
  static const DateFormatter formatters[] = {iso8601Formatter(), startResourceDateFormatter(),
                                             epgFromDateFormatter()};
  static const DateOracle oracles[] = {DateOracle(formatters[0]), DateOracle(formatters[1]),
                                       DateOracle(formatters[2])};
  for (std::size_t index = 0; index < std::size(formatters); ++index) {
    compare(formatters[index], oracles[index], text);
  }
  fuzz::require(resourceTime(text) == (formatters[1].date(text) ? formatters[1].date(text)
                                                                : formatters[0].date(text)),
                "a resource's date has milliseconds, or else none");
  if (const auto event = fromEventDate(text); const auto* const date = event.value()) {
    fuzz::require(text.find(':') != std::string_view::npos && text.size() >= 3 &&
                      formatters[1].string(*date).size() >= 24,
                  "an event's date has a time");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto rest = fuzz::text(bytes, size);
  do {
    check(fuzz::takePiece(rest));
  } while (!rest.empty());
  return 0;
}
