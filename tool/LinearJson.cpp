#include <tool/ModelJson.h>

namespace orvo::tool {

namespace {

Json imagesJson(const LineupTemplateImages& images) {
  Json json = Json::object();
  for (const auto& [key, image] : images) {
    json.set(std::string(caseName(key)), Json::object({{"template", image.template_}}));
  }
  return json;
}

Json slotsJson(const LineupSlots& slots) {
  return Json::list(slots, [](const LineupSlot& slot) { return toJson(slot); });
}

}  // namespace

Json toJson(const LineupSlot& slot) {
  return Json::object({{"start", toJson(slot.start)},
                       {"end", toJson(slot.end)},
                       {"title", slot.title},
                       {"imageResources", imagesJson(slot.imageResources)},
                       {"channelID", slot.channelID},
                       {"channelName", slot.channelName},
                       {"channelOrder", slot.channelOrder}});
}

Json toJson(const LineupHour& hour) {
  return Json::object({{"startTime", toJson(hour.startTime)}, {"slots", slotsJson(hour.slots_)}});
}

Json toJson(const LineupDay& day) {
  return Json::object({{"startTime", toJson(day.startTime)}, {"hours", toJson(day.hours)}});
}

Json toJson(const Lineup& lineup) {
  return Json::object({{"slots", slotsJson(lineup.slots_)}, {"days", toJson(lineup.days)}});
}

Json toJson(const LinearProgram& program) {
  return Json::object({{"id", program.id},
                       {"title", program.title},
                       {"subheading", program.subheading},
                       {"shortDescription", program.shortDescription},
                       {"playbackStatus", caseName(program.playbackStatus)},
                       {"imageResources", toJson(program.imageResources)},
                       {"startTime", toJson(program.startTime)},
                       {"endTime", toJson(program.endTime)},
                       {"duration", program.duration}});
}

Json toJson(const LinearProgramGuide& guide) {
  return Json::object({{"startDate", toJson(guide.startDate)},
                       {"endDate", toJson(guide.endDate)},
                       {"items", toJson(guide.items)},
                       {"meta", toJson(guide.meta)}});
}

Json toJson(const GuideDay& day) {
  return Json::object({{"title", day.title}, {"programs", toJson(day.programs)}});
}

Json toJson(const GuideUpdate& update) {
  return Json::object({{"video", toJson(*update.video)},
                       {"program", toJson(update.program)},
                       {"days", toJson(update.days)}});
}

}  // namespace orvo::tool
