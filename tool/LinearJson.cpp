#include <tool/ModelJson.h>

namespace orvo::tool {

Json toJson(const LineupTemplateImage& image) { return ORVO_FIELDS(image, template_); }

Json toJson(const LineupTemplateImages& images) {
  Json json = Json::object();
  for (const auto& [key, image] : images) json.set(std::string(caseName(key)), toJson(image));
  return json;
}

Json toJson(const LineupSlots& slots) {
  return Json::list(slots, [](const LineupSlot& slot) { return toJson(slot); });
}

Json toJson(const LineupSlot& slot) {
  return ORVO_FIELDS(slot, start, end, title, imageResources, channelID, channelName, channelOrder);
}

Json toJson(const LineupHour& hour) { return ORVO_FIELDS(hour, startTime, slots_); }

Json toJson(const LineupDay& day) { return ORVO_FIELDS(day, startTime, hours); }

Json toJson(const Lineup& lineup) { return ORVO_FIELDS(lineup, slots_, days); }

Json toJson(const LinearProgram& program) {
  return ORVO_FIELDS(program, id, title, subheading, shortDescription, playbackStatus,
                     imageResources, startTime, endTime, duration);
}

Json toJson(const LinearProgramGuide& guide) {
  return ORVO_FIELDS(guide, startDate, endDate, items, meta);
}

Json toJson(const GuideDay& day) { return ORVO_FIELDS(day, title, programs); }

Json toJson(const GuideUpdate& update) { return ORVO_FIELDS(update, video, program, days); }

}  // namespace orvo::tool
