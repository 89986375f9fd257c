#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <tests/support/Test.h>

namespace orvo {

inline JSONObject object(std::string_view text) {
  return JSONDataParser::object(Data(text)).force();
}

/// Collects the console's lines while it lives.
class CapturedConsole {
 public:
  CapturedConsole() {
    setConsoleSink([this](std::string_view line) {
      lines += line;
      std::fwrite(line.data(), 1, line.size(), stdout);  // for ctest to look at
    });
  }
  CapturedConsole(const CapturedConsole&) = delete;
  CapturedConsole& operator=(const CapturedConsole&) = delete;
  ~CapturedConsole() { setConsoleSink({}); }

  std::string lines;
};

}  // namespace orvo
