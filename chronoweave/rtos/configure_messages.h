// The texts that the reading of a configure file can say. "%d", "%s" and "%x" are places for configure_Fill,
// in their order; the texts never reach printf. Their wording is kept as it is known.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// The text with its places filled in. A place without a value stays as it stands; "%" in a value means
// nothing.
std::string configure_Fill(std::string_view text, std::initializer_list<std::string_view> values);

namespace configure_messages {

constexpr const char* BadFileName = "Bad VOREL Chronoweave configure file name \"%s\".";
constexpr const char* CantFind = "Can't find configure file \"%s\".";
constexpr const char* CantRead = "Can't read configure file \"%s\".";
constexpr const char* CantReadForRtos = "Can't read configure file for RTOS \"%s\".";
constexpr const char* ErrorHeader = "\nSyntax Errors in Configure File \"%s\"\n\n";
constexpr const char* OneErrorIgnored = "Warning: %d syntax error in \"%s\" is ignored.";
constexpr const char* ErrorsIgnored = "Warning: %d syntax errors in \"%s\" are ignored.";
constexpr const char* NoOverlapIcon =
    "Line %d - Warning: the icon name(for overlapped stuff) \"%s\" does not exist.\n";
constexpr const char* NoIcon =
    "Can't find icon <%s> required by the legend event <%s>, \nuse <help> icon instead!\n";

constexpr const char* UnknownItem = "Line %d - Syntax Error: Unknown item \"%s\".\n";

constexpr const char* StatusInformation = "Line %d - Syntax Error: Expect status informatin.\n";
constexpr const char* StatusCode = "Line %d - Syntax Error: Expect status's internal code.\n";
constexpr const char* StatusName = "Line %d - Syntax Error: Expect status's name.\n";
constexpr const char* StatusColor = "Line %d - Syntax Error: Expect status's line color in RGB.\n";
constexpr const char* StatusStyle = "Line %d - Syntax Error: Expect status's line style.\n";
constexpr const char* StatusThickness = "Line %d - Syntax Error: Expect status's line thickness.\n";
constexpr const char* StatusVisibility =
    "Line %d - Syntax Error: Expect status's visible/invisible information.\n";

constexpr const char* LinkStatus = "Line %d - Syntax Error: Expect internal code for status.\n";
constexpr const char* LinkSwitch = "Line %d - Syntax Error: Expect internal code for context switch.\n";
constexpr const char* LinkNoStatus = "Line %d - Syntax Error: status with code %d is not defined.\n";
constexpr const char* LinkNoSwitch = "Line %d - Syntax Error: context switch with code %d is not defined.\n";
constexpr const char* LinkPlainStatus =
    "Line %d - Syntax Warning: status with code %d is not context switch.\n";

constexpr const char* CategoryName = "Line %d - Syntax Error: Expect event category's name.\n";
constexpr const char* CategoryVisibility = "Line %d - Syntax Error: Expect visible/invisible information.\n";

constexpr const char* EventInformation = "Line %d - Syntax Error: Expect event information.\n";
constexpr const char* EventType = "Line %d - Syntax Error: Expect event's type.\n";
constexpr const char* EventSubtype = "Line %d - Syntax Error: Expect event's subtype.\n";
constexpr const char* EventNameMissing = "Line %d - Syntax Error: Expect event name.\n";
constexpr const char* EventNameEmpty = "Line %d - Syntax Error: Expect event's name.\n";
constexpr const char* EventIcon = "Line %d - Syntax Error: Expect event icon name or visible information.\n";
constexpr const char* EventExtraQuote = "Line %d - Syntax Error: Expect \" for extra data format.\n";
constexpr const char* EventMore = "Line %d - Syntax Error: Expect more information.\n";

constexpr const char* MiscName = "Line %d - Syntax Error: Expect mics item's name.\n";
constexpr const char* MiscNotSupported = "Line %d - Syntax Error: Not supported.\n";
constexpr const char* RefreshInterval = "Line %d - Syntax Error: Expect value for refresh interval.\n";
constexpr const char* MaxRefreshedEvents =
    "Line %d - Syntax Error: Expect value for max number of refershed events.\n";
constexpr const char* Overlap = "Line %d - Syntax Error: Expect icon name for overlapped stuff.\n";
constexpr const char* ObjectTerm = "Line %d - Syntax Error: Expect value for task prefix.\n";
constexpr const char* UnusedWarning = "Line %d - Syntax Error: Expect value for unused extra data warning.\n";
constexpr const char* UnusedWarningBool =
    "Line %d - Syntax Error: Expect bool value for unused extra data warning.\n";
constexpr const char* ExtraWarning = "Line %d - Syntax Error: Expect value for extra data warning.\n";
constexpr const char* ExtraWarningBool =
    "Line %d - Syntax Error: Expect bool value for extra data warning.\n";
constexpr const char* CenterStatus =
    "Line %d - Syntax Error: Expect bool value about how to draw status line.\n";
constexpr const char* TickPattern =
    "Line %d - Syntax Error: Expect bool value about if to use tick pattern.\n";
constexpr const char* HiddenAgent =
    "Line %d - Syntax Error: Expect bool value about if to show an agent for the hidden objects.\n";
constexpr const char* TargetTimeout = "Line %d - Syntax Error: Expect value for target connection timeout.\n";
constexpr const char* SortField = "Line %d - Syntax Error: Expect value for sorting field.\n";
constexpr const char* SortFieldBad = "Line %d - Syntax Error: Invalid sorting field value \"%s\".\n";
constexpr const char* SortOrder = "Line %d - Syntax Error: Expect value for sorting order.\n";
constexpr const char* SortOrderBad = "Line %d - Syntax Error: Invalid bool value for sorting order \"%s\".\n";
constexpr const char* AllForInterval = "Line %d - Syntax Error: Expect value for events' interval search.\n";
constexpr const char* AllForIntervalBad =
    "Line %d - Syntax Error: Invalid bool value for events' interval search \"%s\".\n";
constexpr const char* ImportantUnknown =
    "Line %d - Syntax Error: The important event is not defined before this line.\n";
constexpr const char* Separator = "Line %d - Syntax Error: Expect value for hierarchy separator.\n";
constexpr const char* SeparatorEmpty = "Line %d - Syntax Error: Invalid value for hierarchy separator.\n";
constexpr const char* SeparatorLong =
    "Line %d - Syntax Error: Hierarchy separator has exactly one character.\n";

}  // namespace configure_messages
