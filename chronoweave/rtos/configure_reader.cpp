#include "chronoweave/rtos/configure_reader.h"

#include <algorithm>
#include <cstdio>

#include "chronoweave/rtos/configure_messages.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/config/config_dirs.h"

namespace messages = configure_messages;

namespace {

// Far beyond any file written by hand or by the program.
constexpr uintmax_t mostFileBytes = 256u << 20;

void error_to_standard_error(const std::string& path, const std::string& text) {
    static bool headed = false;
    std::string all = headed ? std::string{} : configure_Fill(messages::ErrorHeader, {path});
    headed = true;
    all += text;
    std::fwrite(all.data(), 1, all.size(), stderr);
}

void error_to_console(const std::string& path, const std::string& text) {
    // Once in the life of the program: the console stays open from file to file.
    static bool headed = false;
    if (!headed) gen_console_raw(configure_Fill(messages::ErrorHeader, {path}));
    headed = true;
    gen_console_raw(text);
}

ConfigureCallbacks with_defaults(ConfigureCallbacks callbacks) {
    if (!callbacks.message)
        callbacks.message = [](const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); };
    if (!callbacks.syntaxError) callbacks.syntaxError = error_to_standard_error;
    if (!callbacks.lineStyle) callbacks.lineStyle = [](std::string_view) { return 0; };
    if (!callbacks.attention) callbacks.attention = [] {};
    if (!callbacks.errorDialog)
        callbacks.errorDialog = [](const std::string& text) { gen_error("%s", text.c_str()); };
    return callbacks;
}

}  // namespace

std::string configure_Fill(std::string_view text, std::initializer_list<std::string_view> values) {
    std::string filled;
    auto value = values.begin();
    for (size_t at = 0; at < text.size(); ++at) {
        const bool place = text[at] == '%' && at + 1 < text.size() && value != values.end();
        if (place)
            filled.append(*value++);
        else
            filled.push_back(text[at]);
        if (place) ++at;
    }
    return filled;
}

ConfigureCallbacks configure_ConsoleCallbacks() {
    ConfigureCallbacks callbacks;
    callbacks.syntaxError = error_to_console;
    callbacks.lineStyle = legend_LineStyle;
    return callbacks;
}

ConfigureReader::ConfigureReader(const ConfigureCallbacks& callbacks, int largestThickness,
                                 const LegendMisc& present)
    : callbacks_(with_defaults(callbacks)), largestThickness_(largestThickness), misc_(present) {
    // These start anew with every file; the others stay as they are until a file says otherwise.
    const LegendMisc fresh;
    misc_.centerStatus = fresh.centerStatus;
    misc_.tickPattern = fresh.tickPattern;
    misc_.showHiddenAgent = fresh.showHiddenAgent;
    misc_.allForIntervalSearch = fresh.allForIntervalSearch;
    misc_.overlapIcon = fresh.overlapIcon;
}

int ConfigureReader::GiveUp(const char* text, const std::string& name) {
    callbacks_.attention();
    callbacks_.message(configure_Fill(text, {name}));
    return -1;
}

int ConfigureReader::Read(const std::string& name) {
    // Names come from targets of other platforms as well, so that all three end a directory here.
    const size_t directory = name.find_last_of("/\\:");
    const std::string_view file = directory == std::string::npos
                                      ? std::string_view(name)
                                      : std::string_view(name).substr(directory + 1);
    const size_t point = file.find_last_of('.');
    if (point != std::string_view::npos && file.substr(point + 1, 2) != "tc")
        return GiveUp(messages::BadFileName, name);
    const std::string full = point == std::string_view::npos ? name + ".tc" : name;
    if (directory != std::string::npos) return ReadFile(full);
    // Stores name their system in any case ("KORVANTIS"), and file names here are told apart by case.
    const std::string found =
        config_FindFile(path_join("chrono_weave", full), ConfigAccess::Read, ConfigNames::AnyCase);
    return found.empty() ? GiveUp(messages::CantFind, full) : ReadFile(found);
}

int ConfigureReader::ReadFile(const std::string& path) {
    if (path.find('\0') != std::string::npos || !path_is_readable_file(path))
        return GiveUp(messages::CantFind, path);
    std::string text;
    if (!file_read_whole(path, text, mostFileBytes) || text.empty()) return GiveUp(messages::CantRead, path);
    return ReadText(text, path);
}

int ConfigureReader::ReadText(std::string_view text, const std::string& path) {
    path_ = path;
    ConfigureLines lines(text);
    std::string_view line;
    int errors = 0;
    while (lines.Next(line)) {
        line_ = lines.Number();
        if (!Line(line)) ++errors;
    }
    SpreadVisibility();
    return errors;
}

bool ConfigureReader::Line(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    // The first that fits wins: "Event" must come behind "EventCategory".
    for (const char* keyword : {"Task", "TRV_Object"})
        if (configure_TakeKeyword(line, keyword)) return ObjectLine(line);
    for (const char* keyword : {"EventCategory", "Event_Category", "TRV_Event_Category"})
        if (configure_TakeKeyword(line, keyword)) return CategoryLine(FieldCursor(line));
    for (const char* keyword : {"Event", "TRV_Event"})
        if (configure_TakeKeyword(line, keyword)) return EventLine(FieldCursor(line));
    if (configure_TakeKeyword(line, "TRV_Important_Event")) return ImportantLine(FieldCursor(line));
    for (const char* keyword : {"misc", "TRV_Misc"})
        if (configure_TakeKeyword(line, keyword)) return MiscLine(FieldCursor(line));
    return true;  // a comment, as is any other text
}

bool ConfigureReader::ObjectLine(std::string_view rest) {
    const size_t colon = rest.find(':');
    if (colon == std::string_view::npos) return true;
    rest.remove_prefix(colon + 1);
    for (const char* keyword : {"Status", "TRV_Status"})
        if (configure_TakeKeyword(rest, keyword)) return StatusLine(FieldCursor(rest));
    if (configure_TakeKeyword(rest, "TRV_Context_Switch_Link")) return LinkLine(FieldCursor(rest));
    return true;
}

bool ConfigureReader::Fail(const char* text, std::string_view value) {
    Say(configure_Fill(text, {std::to_string(line_), value}));
    return false;
}

bool ConfigureReader::Clean(const FieldCursor& fields) {
    return fields.Rest().empty() || Fail(messages::UnknownItem, fields.Rest());
}

void ConfigureReader::Say(const std::string& text) {
    callbacks_.syntaxError(path_, text);
}

namespace {

bool finish(Legend& legend, ConfigureReader& reader, const std::string& osName, int errors) {
    // The older legend goes first, so that a failure leaves none; its misc values are with the reader.
    legend.statuses.clear();
    legend.events.clear();
    legend.path.clear();
    legend.osName.clear();
    legend.BuildLookups();
    return reader.Finish(legend, osName, errors);
}

}  // namespace

bool configure_Read(Legend& legend, const std::string& osNameOrFile, const ConfigureCallbacks& callbacks,
                    int largestThickness) {
    ConfigureReader reader(callbacks, largestThickness, legend.misc);
    const int errors = reader.Read(osNameOrFile);
    return finish(legend, reader, osNameOrFile, errors);
}

bool configure_ReadFile(Legend& legend, const std::string& path, const std::string& osName,
                        const ConfigureCallbacks& callbacks, int largestThickness) {
    ConfigureReader reader(callbacks, largestThickness, legend.misc);
    const int errors = reader.ReadFile(path);
    return finish(legend, reader, osName, errors);
}

bool configure_ReadText(Legend& legend, std::string_view text, const std::string& path,
                        const std::string& osName, const ConfigureCallbacks& callbacks,
                        int largestThickness) {
    ConfigureReader reader(callbacks, largestThickness, legend.misc);
    const int errors = reader.ReadText(text, path);
    return finish(legend, reader, osName, errors);
}

ConfigureCheck configure_Check(const std::string& path) {
    ConfigureCheck check;
    const ConfigureReader* reading = nullptr;
    bool isError = true;
    const auto keep = [&](const std::string& text, int line) {
        // Of the lines' own messages only the one about a link is a warning.
        const bool warning = !isError || text.find(" - Syntax Warning: ") != std::string::npos;
        check.messages.push_back({line, text, !warning});
    };
    ConfigureCallbacks callbacks;
    callbacks.message = [&](const std::string& text) { keep(text, 0); };
    callbacks.syntaxError = [&](const std::string&, const std::string& text) { keep(text, reading->line()); };
    callbacks.lineStyle = legend_LineStyle;
    ConfigureReader reader(callbacks, 0, {});
    reading = &reader;
    check.errors = reader.ReadFile(path);
    for (const ConfigureEvent& event : reader.events())
        ++(event.IsCategory() ? check.categories : check.events);
    check.statuses = reader.statuses().size();
    check.usable = check.statuses > 0 && !reader.events().empty();
    isError = false;
    reader.CheckIcons(false);
    return check;
}
