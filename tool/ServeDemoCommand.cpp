#include <fmt/format.h>
#include <tool/Commands.h>

#include <csignal>

namespace orvo::tool {

namespace {

struct WrittenServeDemo {
  std::int64_t port = 0;
  std::int64_t expireAfter = 0;
  std::int64_t programSeconds = 0;
  bool log = false;
};

void drawAddresses(Screen& screen, const demo::DemoService& service) {
  screen.title("The demo service is running", "end it with Ctrl-C");
  screen.field("API", service.baseURL());
  screen.field("resources", service.resourceURL());
  screen.field("lineups", service.lineupURL("grid"));
  screen.field("", service.lineupURL("list"));
  screen.field("", service.lineupURL("clock-change"));
  screen.blank();
  screen.line(fmt::format("  orvo --api {} --resources {} views", service.baseURL(),
                          service.resourceURL()));
}

int runServeDemo(Tool& tool, const WrittenServeDemo& written) {
  // Waited for below; blocked before there is another thread that might receive one.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  demo::DemoServiceOptions options{.port = static_cast<int>(written.port),
                                   .tokenLifetime = static_cast<int>(written.expireAfter),
                                   .programLength = std::chrono::seconds(written.programSeconds)};
  if (written.log) {
    // With --json standard output is for the document alone.
    const bool aside = tool.options().json;
    options.requestLog = [aside](const std::string& line) {
      aside ? printDiagnostic(line + "\n") : print(line + "\n");
    };
  }
  demo::DemoService service(std::move(options));
  if (!service.start()) {
    return tool.fail(URLError{URLError::unknown, fmt::format("port {} is not free", written.port)});
  }
  const Json json = Json::object(
      {{"api", service.baseURL()}, {"resources", service.resourceURL()}, {"port", service.port()}});
  tool.answer(json, [&](Screen& screen) { drawAddresses(screen, service); });
  int signal = 0;
  sigwait(&signals, &signal);
  wipeInterruption();
  service.stop();
  return 0;
}

}  // namespace

void addServeDemoCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenServeDemo>();
  commands.push_back(
      {.name = "serve-demo",
       .description = "Run the demo service by itself until interrupted",
       .options = {{.name = "--port",
                    .description = "The port to listen on; 0 takes a free one",
                    .values = number(0, 65535),
                    .target = &written->port},
                   {.name = "--expire-after",
                    .description = "Let each token expire after that many requests; 0: never",
                    .values = number(0, 1'000'000'000, "REQUESTS"),
                    .target = &written->expireAfter},
                   {.name = "--program-seconds",
                    .description = "The length of the guide's programmes; 0: as on television",
                    .values = number(0, 86'400),
                    .target = &written->programSeconds},
                   {.name = "--log",
                    .description = "Print a line for each request",
                    .target = &written->log}},
       .examples = {"orvo serve-demo", "orvo serve-demo --port 8080 --log"},
       .usesService = false,
       .run = [written](Tool& tool) { return runServeDemo(tool, *written); }});
}

}  // namespace orvo::tool
