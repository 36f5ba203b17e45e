#include "chronoweave/traxfunc/input/commands.h"

#include <string>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "shared/libcxxutil/report.h"

namespace {

bool is_nobodys(const laCommand& command) {
    return command.run == nullptr && command.missing == nullptr;
}

bool carry_out(_LaCanvasData& canvas, const laCommand& command, const laArgument& argument) {
    if (command.allowed && !command.allowed(canvas)) return false;
    const auto above = canvas.calls.upper.commands.find(std::string_view(command.name));
    if (above != canvas.calls.upper.commands.end() && above->second) {
        const auto work = above->second;  // it may close the canvas
        return work(std::string(argument.rest));
    }
    if (!command.run) {
        laCanvas_Refuse(canvas, gen_format("%s is not there yet.", command.missing));
        return false;
    }
    if (!canvas.calls.upper.draw) return command.run(canvas, argument);
    bool did = false;
    canvas.calls.upper.draw([&] { did = command.run(canvas, argument); });
    return did;
}

bool unknown(const _LaCanvasData& canvas, const std::string& text) {
    if (canvas.calls.upper.manual && canvas.calls.upper.manual(text)) return true;
    gen_console("Unknown item <%s> is selected.\n", text.c_str());
    return false;
}

}  // namespace

bool laCanvas_HasCommand(std::string_view text) {
    const laCommand* command = laCommands_Find(text);
    return text.empty() || (command != nullptr && !is_nobodys(*command));
}

std::string laCanvas_NotThere(const _LaCanvasData& canvas, std::string_view text) {
    const laCommand* command = laCommands_Find(text);
    const auto& above = canvas.calls.upper.commands;
    if (command == nullptr || command->run != nullptr || above.empty()) return {};
    if (above.contains(std::string_view(command->name))) return {};
    return gen_format("%s is not there yet.",
                      command->missing ? command->missing : laCommand_Title(*command).c_str());
}

bool laCanvas_CanDo(const _LaCanvasData& canvas, std::string_view text) {
    const laCommand* command = laCommands_Find(text);
    if (command != nullptr && !laCanvas_NotThere(canvas, text).empty()) return false;
    return command == nullptr || command->can == nullptr || command->can(canvas);
}

bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text) {
    laCanvas_UpdateFields(canvas, 0, "");
    if (text.empty()) return true;
    const std::string asked(text);  // its owner may go in the middle of the work
    laArgument argument;
    const laCommand* command = laCommands_Find(asked, &argument);
    return command != nullptr && !is_nobodys(*command) ? carry_out(canvas, *command, argument)
                                                       : unknown(canvas, asked);
}
