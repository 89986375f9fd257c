#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Documents as the service sends them: every key of their kind, keys of no interest among them,
/// texts of the usual lengths with quotes and other alphabets in them. The same at each call.
namespace orvo::benchmarks {

[[nodiscard]] std::string videoDocument(std::size_t number);
[[nodiscard]] std::string pageDocument(std::size_t number);
/// Two videos to a page.
[[nodiscard]] std::string collectionDocument(std::size_t items);
[[nodiscard]] std::string guideDocument(std::size_t programs);
[[nodiscard]] std::string lineupDocument(std::size_t slots);
[[nodiscard]] std::string configurationDocument();

enum class DocumentKind { video, page, collection, guide, lineup, configuration };

struct NamedDocument {
  std::string name;
  DocumentKind kind;
  std::string text;
};

/// One of each kind and size, from 1.5 KB to 2 MB.
[[nodiscard]] std::vector<NamedDocument> typicalDocuments();

}  // namespace orvo::benchmarks
