#include <tool/Commands.h>
#include <tool/ListOutput.h>
#include <tool/Profiles.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>

#include <algorithm>

namespace orvo::tool {

static constexpr const char* kProfileFields[] = {"name", "api", "resources", "client", "used"};

static Records recordsOf(const Profiles& profiles) {
  Records records;
  for (const Profile& profile : profiles.all) {
    const auto text = [](const std::string& value) { return value.empty() ? Json() : Json(value); };
    Record record{
        {profile.name, withoutUserInfo(profile.api), text(withoutUserInfo(profile.resources)),
         text(profile.client), profile.name == profiles.used},
        {}};
    record.model = [values = record.values] {
      Json object = Json::object();
      for (std::size_t i = 0; i < values.size(); ++i) object.set(kProfileFields[i], values[i]);
      return object;
    };
    records.push_back(std::move(record));
  }
  return records;
}

static Json toJson(const Profiles& profiles) {
  return Json::list(recordsOf(profiles), [](const Record& record) { return record.model(); });
}

namespace {

struct WrittenProfile {
  std::string action{};
  std::string name{};
  WrittenList list{};
};

/// What the command line says is kept under the name.
Profile newProfile(const WrittenProfile& written, const WrittenService& service) {
  if (service.api.empty()) throw WrongUsage("a profile needs --api URL");
  const std::string wrong = complaint(profileNames(), written.name);
  if (!wrong.empty()) throw WrongUsage("NAME: " + wrong);
  for (const std::string& url : {service.api, service.resources}) {
    if (withoutUserInfo(url) != url) {
      throw WrongUsage("a profile keeps no name of a user and no password");
    }
  }
  return {.name = written.name,
          .api = service.api,
          .resources = service.resources,
          .client = service.client.value_or("")};
}

Profiles change(const WrittenProfile& written, const WrittenService& service) {
  const auto isMeant = [&](const Profile& known) { return known.name == written.name; };
  if (written.action == "add") {
    return changeProfiles([&, profile = newProfile(written, service)](Profiles& profiles) {
      std::erase_if(profiles.all, isMeant);
      profiles.all.push_back(profile);
    });
  }
  if (written.action == "use") {
    return changeProfiles([&](Profiles& profiles) {
      profiles.used = written.name == "none" ? "" : profiles.named(written.name).name;
    });
  }
  return changeProfiles([&](Profiles& profiles) {
    if (profiles.named(written.name).name == profiles.used) profiles.used.clear();
    std::erase_if(profiles.all, isMeant);
  });
}

void drawProfiles(Screen& screen, const Profiles& profiles) {
  if (profiles.all.empty()) {
    screen.paragraph("There are no profiles. This adds one:");
    screen.line("  orvo profile add NAME --api URL --resources URL");
    return;
  }
  Table table{.columns = {{},
                          {.title = "Profile"},
                          {.title = "API", .least = 16},
                          {.title = "Resources", .least = 16, .optional = 1},
                          {.title = "Client", .optional = 2}}};
  for (const Profile& profile : profiles.all) {
    const bool used = profile.name == profiles.used;
    table.rows.push_back({{used ? "*" : " "},
                          {profile.name, Style::strong},
                          {withoutUserInfo(profile.api)},
                          {withoutUserInfo(profile.resources)},
                          {profile.client}});
  }
  screen.table(table);
}

int runProfile(Tool& tool, const WrittenProfile& written, const WrittenService& service) {
  const bool lists = written.action == "list";
  if (lists != written.name.empty()) {
    throw WrongUsage("profile " + written.action + (lists ? " takes no NAME" : " needs a NAME"));
  }
  const Profiles profiles = lists ? readProfiles() : change(written, service);
  const ListOutput output(tool, written.list, kProfileFields);
  return output.answer(profiles, [&](Screen& screen) { drawProfiles(screen, profiles); });
}

}  // namespace

void addProfileCommand(Commands& commands, const WrittenService& service) {
  const auto written = std::make_shared<WrittenProfile>();
  std::vector<Parameter> options;
  addListOptions(options, written->list, kProfileFields);
  commands.push_back(
      {.name = "profile",
       .description = "Services under names of your own, to be typed once",
       .details = "They are kept in orvo/profiles below $XDG_CONFIG_HOME, or else ~/.config: lines "
                  "\"use = NAME\", and for each profile \"[NAME]\", \"api = URL\", \"resources = "
                  "URL\" and \"client = NAME\". No token is ever kept. --api, then --profile, then "
                  "ORVO_API come before the profile in use.",
       .arguments = {{.name = "ACTION",
                      .description = "add keeps --api, --resources and --client under NAME, use "
                                     "lets NAME count from now on (\"none\": no profile), remove "
                                     "forgets NAME, list shows all",
                      .values = anyOf({"add", "list", "use", "remove"}),
                      .target = &written->action,
                      .required = true},
                     {.name = "NAME",
                      .description = "The name of the profile",
                      .values = {.suggestions = knownProfiles},
                      .target = &written->name}},
       .options = std::move(options),
       .examples = {"orvo profile add staging --api https://HOST/v3/ --resources https://HOST/",
                    "orvo profile list"},
       .usesService = false,
       .run = [written, &service](Tool& tool) { return runProfile(tool, *written, service); }});
}

}  // namespace orvo::tool
