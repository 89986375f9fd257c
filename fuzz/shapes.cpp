// What a service's documents looked like, as a folder keeps it.

#include <fuzz/FuzzTarget.h>
#include <tool/drift/ShapeFile.h>

#include <string>

using namespace orvo;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto read = tool::shapesIn(std::string(fuzz::text(bytes, size)));
  if (!read) return 0;
  const std::string text = tool::shapesText(*read);
  const auto again = tool::shapesIn(text);
  fuzz::require(again && tool::shapesText(*again) == text, "what is written reads the same");
  tool::Shapes both = *read;
  for (const auto& [name, shape] : *again) both[name].merge(shape);
  fuzz::require(tool::shapesIn(tool::shapesText(both)).has_value(), "what is merged can be read");
  for (const bool isPartial : {false, true}) {
    fuzz::require(tool::differences(*again, *again, isPartial).empty(),
                  "nothing differs from itself");
    (void)tool::differences(both, *read, isPartial);
    (void)tool::differences(*read, {{"page", both["page"]}}, isPartial);
  }
  return 0;
}
