// The one table of commands: all that a command is stands in one place, and menus, tool bar, keys, context
// menus, the sheet of keys, the list of commands and the manual's tables are made from it. A new command is a
// row of this table and, where it stands in a menu, one of the menus' (menus.cpp).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

enum class CommandTakes {
    Nothing,
    Number,  // behind a blank
    Text,    // behind any one character
};

// What was asked: the whole text, and what stands behind the command's name.
struct laArgument {
    std::string_view text, rest;
    std::optional<uint64_t> number;  // of a command that takes one, when one stands there
};

struct laCommand {
    const char* name;
    const char* label = "";  // as menus show it, '&' before the mnemonic; empty: no list shows the command
    const char* keys = "";   // that work all over the window: "Ctrl+Q, Ctrl+W"
    const char* pictureKeys = "";  // that work while the picture has the keyboard
    const char* tip = "";          // what it does, in a few words
    const char* help = "";         // the same as a sentence for the message line; empty: the tip
    const char* page = "";         // of the manual
    const char* icon = "";         // by name
    bool (*can)(const _LaCanvasData&) = nullptr;  // when it can be used; null: always
    CommandTakes takes = CommandTakes::Nothing;
    // The canvas's own work; null: that of the floor above alone, which goes before in any case. False when
    // refused.
    bool (*run)(_LaCanvasData&, const laArgument&) = nullptr;
    // False, and the user was told, when it can't be done now; null: always. Asked before either is done.
    bool (*allowed)(_LaCanvasData&) = nullptr;
    // What the floor above has not got, for "... is not there yet."; null with no work of the canvas's own:
    // the command is nobody's, and what is said is what is said of an unknown one.
    const char* missing = nullptr;
};

std::span<const laCommand> laCommands_All();
// The row of a text, letters compared without regard to case, and its argument; null for none. The argument's
// views look into text.
const laCommand* laCommands_Find(std::string_view text, laArgument* argument = nullptr);

enum class KeyPlace { Window, Picture };
// The row that has a key ("Ctrl+O", "PgUp") in a place; null for none.
const laCommand* laCommands_OfKey(std::string_view key, KeyPlace place);
// All keys of a row, as they are shown.
std::string laCommand_Keys(const laCommand& command);
// The first of them, which a menu shows; empty for none.
std::string laCommand_FirstKey(const laCommand& command);
// The label with no mark and no dots: "Go To Time".
std::string laCommand_Title(const laCommand& command);

// A row of the sheet of keys: commands in the order of the table, then what the pointer does.
struct laKeyLine {
    std::string keys, what;
};
std::vector<laKeyLine> laCommands_KeySheet();
// The last part of it alone.
std::vector<laKeyLine> laCommands_Gestures();
