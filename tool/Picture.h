#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <tool/CommandTable.h>
#include <tool/Tool.h>

#include <string>
#include <vector>

namespace orvo::tool {

/// Images on terminals. What decodes and draws them is a program of its own, which has nothing of
/// the tool's but the image, and little memory and time; it need not be installed.

/// How the command line wants images to be shown.
struct WrittenPictures {
  std::string images = "auto";
  bool none = false;
};
/// Adds `--images` and `--no-images`.
void addPictureOptions(std::vector<Parameter>& options, WrittenPictures& written);

/// Why an image is not shown.
struct PictureError {
  std::string text;
  [[nodiscard]] std::string description() const { return text; }
};

/// The style in which to draw on standard output, or "none"; it fails when the command line wants
/// one that cannot be had.
[[nodiscard]] Result<std::string> pictureStyle(const Tool& tool, const WrittenPictures& written);

/// A picture for a terminal.
struct Picture {
  std::string style;
  std::string text;
};

/// Fetches the image, without a token and without cookies, and draws it so large that so many lines
/// fit below it, if that is large enough to be seen.
[[nodiscard]] Result<Picture> fetchPicture(Tool& tool, const URL& image, const std::string& style,
                                           std::size_t linesBelow);

/// Prints it and ends the line. When a signal ends the tool meanwhile, the terminal is left in
/// order.
void print(const Picture& picture);

}  // namespace orvo::tool
