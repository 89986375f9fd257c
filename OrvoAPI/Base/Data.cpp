#include <OrvoAPI/Base/Data.h>

#include <algorithm>

namespace orvo {

Data::Data(std::string_view bytes) : size_(bytes.size()) {
  auto buffer = std::make_shared<char[]>(bytes.size() + kPadding);
  std::copy(bytes.begin(), bytes.end(), buffer.get());
  bytes_ = std::shared_ptr<const char>(buffer, buffer.get());
}

}  // namespace orvo
