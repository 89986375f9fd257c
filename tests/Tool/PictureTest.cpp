#include <tests/Tool/Fixtures.h>
#include <tests/support/Outcome.h>

namespace orvo::tool {
namespace {

using std::string_literals::operator""s;

const std::string kPng =
    "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\2\0\0\0\2\b\2\0\0\0\xfd\xd4\x9as"
    "\0\0\0\x13IDATx\x9c\x63\xf8\xcf\xc0\xc0\0\xc2\x0c\xff\x1b\x1a\x1a\0\x1c\xf4\x04~)\x80@\xd8"
    "\0\0\0\0IEND\xae\x42`\x82"s;

/// A service with one film, and the host of its images.
class Pictures : public testing::Test {
 protected:
  [[nodiscard]] std::string host() const {
    const auto port = server_.url().text().substr(server_.url().text().rfind(':'));
    return "http://127.0.0.1" + port;
  }
  /// `orvo show film` with the options, as a line, on a terminal of so many columns.
  [[nodiscard]] ToolRun show(const std::string& options, int columns = 0,
                             const std::string& before = "") const {
    return runLine(
        before + " $orvo show film --api " + host() + "v3/ --resources " + host() + "r/ " + options,
        columns);
  }

  std::string image_ = kPng;
  int status_ = 200;

 private:
  [[nodiscard]] test::ServedAnswer answer(const test::ServedRequest& request) const {
    HTTPHeaders headers;
    headers.set("Set-Cookie", "of=the-service; path=/");
    if (request.target.starts_with("/r/")) {
      headers.set("Location", "/moved");
      return {.status = 302, .headers = headers};
    }
    if (request.target == "/moved") return {.status = status_, .body = image_};
    const auto path = request.target.substr(0, request.target.find('?'));
    const auto document = documents_.value(path);
    if (!document) return {.status = 404};
    return {.body = toJson(*document).text(), .headers = headers};
  }

  const JSONObject documents_ = serviceDocuments();

 protected:
  const test::HTTPServer server_{[this](const auto& request) { return answer(request); }};
};

TEST_F(Pictures, AreAskedForWithoutTokenAndCookies) {
  const ToolRun run = show("--images blocks");
  EXPECT_EQ(run.status, 0) << run.error;
  std::size_t images = 0;
  for (const test::ServedRequest& request : server_.requests()) {
    const std::string cookie = request.header("Cookie");
    if (request.target.starts_with("/v3/")) continue;
    ++images;
    EXPECT_EQ(request.header("Authorization"), "(none)");
    EXPECT_EQ(cookie, request.target == "/moved" ? "of=the-service" : "(none)");
  }
  EXPECT_EQ(images, 2U) << server_.targets();
  EXPECT_NE(server_.targets().find(
                "/r/film/orvo_display_art_landscape/im:i:c_fill,w_640,f_jpg,q_65 /moved"),
            std::string::npos)
      << server_.targets();
}

TEST_F(Pictures, BeginAndEndAsTheTerminalExpects) {
  const auto parts = [&](const std::string& options) {
    const std::string text = show("--size 9x9 " + options).output;
    const std::size_t end = text.find("\n\nThe Long Thaw");
    EXPECT_NE(end, std::string::npos) << text;
    return text.substr(0, end);
  };
  const std::string kitty = parts("--images kitty");
  EXPECT_TRUE(kitty.starts_with("\x1b_Ga=T,f=32,s=192,v=192,c=24,r=12,m=1\x1b\\\x1b_Gm=1;"));
  EXPECT_TRUE(kitty.ends_with("\x1b\\\x1b_Gm=0\x1b\\"));
  const std::string sixel = parts("--images sixel");
  EXPECT_TRUE(sixel.starts_with("\x1bP0;1;0q\"1;1;192;192#"));
  EXPECT_TRUE(sixel.ends_with("\x1b\\"));
  EXPECT_EQ(std::ranges::count(sixel, '\x1b'), 2) << "one control string";
  const std::string blocks = parts("--images blocks");
  EXPECT_EQ(std::ranges::count(blocks, '\n'), 11);
  EXPECT_NE(blocks.find("\x1b[38;2;"), std::string::npos);
  EXPECT_TRUE(blocks.ends_with("\x1b[0m"));
}

TEST_F(Pictures, SuitTheTerminal) {
  const auto style = [&](const std::string& variables, int columns, const std::string& options) {
    const std::string text = show(options, columns, variables).output;
    if (text.starts_with("\x1b_G")) return "kitty"s;
    if (text.starts_with("\x1bP")) return "sixel"s;
    if (text.find("8;2;") != std::string::npos) return "blocks"s;
    return text.find("8;5;") != std::string::npos ? "256"s : "none"s;
  };
  EXPECT_EQ(style("TERM=xterm-kitty", 60, ""), "kitty");
  EXPECT_EQ(style("KITTY_WINDOW_ID=1", 60, ""), "kitty");
  EXPECT_EQ(style("TERM=foot", 60, ""), "sixel");
  EXPECT_EQ(style("TERM=xterm-256color", 60, ""), "blocks");
  EXPECT_EQ(style("TERM=xterm", 60, ""), "256");
  EXPECT_EQ(style("KITTY_WINDOW_ID=1 TERM=tmux-256color TMUX=1", 60, ""), "256");
  EXPECT_EQ(style("KITTY_WINDOW_ID=1 TERM=screen STY=1", 60, ""), "256");
  for (const char* variables : {"TERM=dumb", "TERM=linux", "TERM=xterm-kitty NO_COLOR=1"}) {
    EXPECT_EQ(style(variables, 60, ""), "none") << variables;
  }
  for (const char* options : {"--no-images", "--images none", "--color never", "--json"}) {
    EXPECT_EQ(style("TERM=xterm-kitty", 60, options), "none") << options;
  }
  EXPECT_EQ(style("TERM=xterm-kitty", 0, ""), "none") << "in a pipe";
  EXPECT_EQ(style("TERM=xterm-kitty", 0, "--color always"), "none");
  EXPECT_EQ(style("TERM=dumb", 60, "--images kitty"), "kitty");
  EXPECT_EQ(style("TERM=xterm", 60, "--images blocks"), "256");
}

TEST_F(Pictures, ThatAreHostileEndAsANotice) {
  const std::string jpeg("\xff\xd8\xff\xc0\0\x11\x08\xff\xdc\xff\xdc\3\1\x11\0\2\x11\0\3\x11\0",
                         21);
  const std::string scan("\xff\xda\0\x0c\3\1\0\2\0\3\0\0\x3f\0\xff\xd9", 16);
  std::string huge = kPng;
  huge.replace(16, 8, "\0\1\x86\xa0\0\1\x86\xa0"s).replace(29, 4, "'0\x9c\x9f");
  const std::string gif("\xf0\0\0\0\0\0\0\0\0,\0\0\0\0\xff\xff\xff\xff\0\2\2D\1\0;", 25);
  const std::string damaged = "it is damaged or incomplete";
  const std::string foreign = "it is no PNG, JPEG, GIF or WebP";
  const std::vector<std::pair<std::string, std::string>> images{
      {"", foreign},
      {"<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", foreign},
      {"II*\0\x08\0\0\0"s, foreign},
      {huge, "it claims 100000 × 100000 pixels"},
      {jpeg + scan, "it claims 65500 × 65500 pixels"},
      {"GIF89a\xff\xff\xff\xff" + gif, "it claims 65535 × 65535 pixels"},
      {"GIF89a\1\0\1\0"s + gif, damaged},
      {kPng.substr(0, 8), damaged},
      {kPng.substr(0, kPng.size() - 9), damaged},
      {std::string(kPng).replace(41, 4, "xxxx"), damaged},
      {"\xff\xd8\xff", damaged},
      {"RIFF\xff\xff\xff\xffWEBPVP8 ", ""},
      {std::string((8 << 20) + 1, 'x'), "code -1103"}};
  for (const auto& [image, notice] : images) {
    image_ = image;
    const ToolRun run = show("--images blocks");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.output.starts_with("The Long Thaw")) << run.output;
    EXPECT_TRUE(run.error.starts_with("orvo: there is no picture: ")) << run.error;
    EXPECT_NE(run.error.find(notice), std::string::npos) << run.error;
  }
  status_ = 404;
  image_.clear();
  const ToolRun run = show("", 80, "TERM=xterm-kitty");
  EXPECT_EQ(run.status, 0) << "the item is there, which is what was asked for";
  EXPECT_NE(run.output.find("there is no picture: its server answered with status 404"),
            std::string::npos)
      << run.output;
}

TEST_F(Pictures, LeaveTheTerminalInOrderWhenInterrupted) {
  const auto end = [&](const std::string& style) {
    const std::string text =
        show("--images " + style +
                 " --size 9x9 >picture & exec 3<picture; "
                 "read -ru3 -N1; kill -TERM $!; cat <&3 >rest; wait $!; echo $?; "
                 "tail -c 14 rest",
             0, "cd $(mktemp -d); mkfifo picture; ")
            .output;
    EXPECT_TRUE(text.starts_with("143\n")) << text;
    return text.substr(text.find('\n') + 1);
  };
  EXPECT_TRUE(end("kitty").ends_with("\x1b\\\x1b_Gm=0;\x1b\\\n"));
}

}  // namespace
}  // namespace orvo::tool
