// A dialog or window as data: its items in order and the lines that lay them out. The same description is
// driven by tests through DialogModel and made visible by the platform layer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "placer/run_time/layout.h"

enum class DialogKind {
    Label,  // also the text beside a field; a '\n' breaks its lines
    Button,
    CheckBox,
    TextField,   // one line
    List,        // a table of rows with columns
    PullDown,    // one of its choices, shown
    ButtonSet,   // one of its choices, all shown
    Graph,       // drawing area with name column, divider, scroll bars and corner
    Strip,       // a drawing area without bars
    StatusText,  // the message line; a text too long for it is cut with an ellipsis
    ProgressBar,
    MenuLine,  // stands in the window's top reserve; not laid out
    ToolBar,
    Frame,  // a line around other items
    Divider,
};

enum DialogFlag : unsigned {
    Dialog_Default = 1,  // the button that Enter presses
    Dialog_Cancel = 2,   // the button that Escape presses
    Dialog_ReadOnly = 4,
    Dialog_Disabled = 8,     // at first
    Dialog_Hidden = 16,      // at first; keeps its place
    Dialog_Multiple = 32,    // a list of which several rows may be selected
    Dialog_Horizontal = 64,  // a ButtonSet side by side
    Dialog_PullsDown = 128,  // a TextField that offers texts: see DialogModel::onPullDown
};

struct DialogItem {
    std::string name = {};  // letters, digits, '_'; unique in its description
    DialogKind kind = DialogKind::Label;
    std::string text = {};  // '&' before the letter of the keyboard shortcut, "&&" for one '&'; in Label,
                            // Button, CheckBox and choices only
    std::string accessible = {};         // spoken name; empty: the text without '&'
    unsigned flags = 0;                  // DialogFlag
    std::vector<std::string> list = {};  // titles of a List's columns, choices of a PullDown or ButtonSet
    std::string room = {};   // the item is never smaller than this text needs: for texts that change
    std::string buddy = {};  // of a Label: name of the item that its shortcut leads to
    std::string part = {};   // name of the item inside which it lives, which lays it out; empty: the window
    std::string hint = {};   // shown in a TextField while it is empty
    std::vector<std::string> choiceNames = {};  // object names of a ButtonSet's choices; empty: NAME_0 and on
    std::string tip = {};  // shown while the pointer rests on it, and in a TextField that is empty
};

struct DialogDescription {
    std::string name = {};  // also the object name of the window
    std::string title = {};
    std::string helpKey = {};
    bool framed = true;  // 4 pixels of inset
    bool menu = false;   // a top-level window with a menu line
    int offset = -1;     // where a window opens at first: so far right of and below its parent's corner;
                         // negative: where the window system puts it
    std::string positionKey = {};  // under which a window's place is kept; empty: one made of the name
    std::vector<DialogItem> items = {};
    // Lines of the placer, except that an item may also be written as '@' and its name; see LayoutBuilder.
    // Item 0 is the window.
    std::vector<std::string> layout = {};
};

// Number of the item in layout lines, 1 and up; 0 when there is none of this name.
int dialog_Number(const DialogDescription& description, std::string_view name);
// The layout with names replaced by numbers, read. Fails as placer_Parse, and at the name of no item.
Result dialog_Layout(const DialogDescription& description, PlacerLayout& layout);
// A text as it is seen: '&' marks taken out, "&&" as one '&'.
std::string dialog_PlainText(std::string_view text);
// The letter behind the '&' mark in lower case; 0 when there is none.
char dialog_Shortcut(std::string_view text);
// The spoken name of an item.
std::string dialog_AccessibleName(const DialogItem& item);
