#pragma once

#include <tool/CommandTable.h>
#include <tool/Tool.h>

#include <memory>

namespace orvo::tool {

/// Each family of commands adds its own in a source of its own.
void addConfigurationCommands(Commands& commands);
void addShowCommand(Commands& commands);
void addProductCommands(Commands& commands);
void addStreamCommands(Commands& commands);
void addListCommands(Commands& commands);
void addSearchCommands(Commands& commands);
void addGuideCommand(Commands& commands);
void addMonitorCommand(Commands& commands);
void addLineupCommand(Commands& commands);
void addPlayCommand(Commands& commands);
void addImageCommand(Commands& commands);
void addGetCommand(Commands& commands);
void addDoctorCommand(Commands& commands);
void addTourCommand(Commands& commands);
void addParseCommand(Commands& commands);
void addDriftCommand(Commands& commands);
void addServeDemoCommand(Commands& commands);
/// `service` has to live as long as the commands: what it says is what a profile keeps.
void addProfileCommand(Commands& commands, const WrittenService& service);

}  // namespace orvo::tool
