// Reads a configure file, the text that says what the statuses and events of an operating system mean, and
// makes the legend of a canvas or a command from it. A line that can't be taken gives a message with its
// number and is passed over; nothing stops the reading.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "chronoweave/rtos/configure_tokens.h"
#include "chronoweave/rtos/legend.h"

// Whom a reading tells. An empty function stands for its default.
struct ConfigureCallbacks {
    // A line for the user. Default: standard output.
    std::function<void(const std::string& text)> message;
    // A message about a line of a file, with its line end. Default: standard error, ahead of the first one of
    // the process a header with the path.
    std::function<void(const std::string& path, const std::string& text)> syntaxError;
    // The line style of a name. Default: 0.
    std::function<int(std::string_view name)> lineStyle;
    // Something wants attention. Default: nothing.
    std::function<void()> attention;
    // The reading failed. Default: an error report.
    std::function<void(const std::string& text)> errorDialog;
};

// The callbacks of a window's or a command's reading: names of styles by the style table, syntax errors to
// the message console. The rest is left empty.
ConfigureCallbacks configure_ConsoleCallbacks();

// Reads the configure file of an operating system, or the file of that name, and makes the legend. The name's
// extension must be "tc"; without one it is added. A name with a directory is used as it stands, any other is
// looked for as "chrono_weave/NAME" in the configuration directories. largestThickness cuts the line
// thickness of statuses, in pixels; below 1 there is no limit. The legend comes with the misc values of the
// moment, and those that the file doesn't mention stay. On failure, which the callbacks tell, its rows are
// gone and its misc values are as they were.
bool configure_Read(Legend& legend, const std::string& osNameOrFile, const ConfigureCallbacks& callbacks,
                    int largestThickness);
// The same for the file at a path, as it stands, read for an operating system of that name.
bool configure_ReadFile(Legend& legend, const std::string& path, const std::string& osName,
                        const ConfigureCallbacks& callbacks, int largestThickness);
// The same for the text of a file; the path is only told in messages. Any bytes will do.
bool configure_ReadText(Legend& legend, std::string_view text, const std::string& path,
                        const std::string& osName, const ConfigureCallbacks& callbacks, int largestThickness);

// What a configure file holds, as it stands, and what is wrong with it.
struct ConfigureCheck {
    struct Message {
        int line = 0;      // from 1; 0 when it is about the whole file
        std::string text;  // with its line end, if it has one
        bool isError = false;
    };
    size_t statuses = 0, events = 0, categories = 0;
    int errors = 0;       // lines that were not taken whole; -1 when the file can't be read
    bool usable = false;  // there are statuses and events, so that a legend can be made
    std::vector<Message> messages;
};
// Reads the file at a path. Icons that don't exist are messages, and no errors.
ConfigureCheck configure_Check(const std::string& path);

// The records of a reading become the rows of the legend as they are.
using ConfigureStatus = LegendStatus;
using ConfigureEvent = LegendEvent;

// One reading. Use the functions above unless the records of a file are wanted before a legend is made of
// them.
class ConfigureReader {
  public:
    // present gives the misc values that stay when the file doesn't mention them.
    ConfigureReader(const ConfigureCallbacks& callbacks, int largestThickness, const LegendMisc& present);

    // Each gives the number of lines with an error, or -1 when there is nothing to read.
    int Read(const std::string& name);
    int ReadFile(const std::string& path);
    int ReadText(std::string_view text, const std::string& path);

    // Makes the legend of what was read, errors being the result of the reading. The records move away.
    bool Finish(Legend& legend, const std::string& osName, int errors);
    // Tells about icons that don't exist; with apply their events take "help". Finish does this by itself.
    void CheckIcons(bool apply);

    const std::vector<ConfigureStatus>& statuses() const { return statuses_; }
    const std::vector<ConfigureEvent>& events() const { return events_; }
    const LegendMisc& misc() const { return misc_; }
    const std::string& path() const { return path_; }  // empty when no file could be read
    // Of the line in hand, or that the icon message in hand is about.
    int line() const { return line_; }

  private:
    // The events of one name (no regard to case). A visibility given on a line goes to all of them; that is
    // noted here and carried out after the last line, or a large file would cost its square.
    struct Namesakes {
        size_t last = 0;         // row
        size_t count = 0;        // events so far
        size_t spreadCount = 0;  // the first so many take spreadVisibility
        uint32_t spreadVisibility = 0;
        size_t seen = 0;
    };

    int GiveUp(const char* text, const std::string& name);
    bool Line(std::string_view line);
    bool ObjectLine(std::string_view rest);
    bool StatusLine(FieldCursor fields);
    bool StatusName(std::string_view field, ConfigureStatus& status);
    bool StatusOptions(FieldCursor& fields, ConfigureStatus& status);
    bool LinkLine(FieldCursor fields);
    bool CategoryLine(FieldCursor fields);
    bool EventLine(FieldCursor fields);
    bool ImportantLine(FieldCursor fields);
    bool EventName(FieldCursor& fields, ConfigureEvent& event);
    bool EventOptions(FieldCursor& fields, ConfigureEvent& event);
    bool ExtraFormat(std::string_view field, ConfigureEvent& event);
    void AddStatus(ConfigureStatus status);
    void AddEvent(ConfigureEvent event, bool spreadVisibility);
    void SpreadVisibility();
    bool MiscLine(FieldCursor fields);

    // Says what is wrong with the line; false, for the caller to pass on.
    bool Fail(const char* text, std::string_view value = {});
    // True when nothing is left of the line.
    bool Clean(const FieldCursor& fields);
    void Say(const std::string& text);

    void AddMissingRows();
    void LinkExecution(int32_t contextSwitch);
    void MissingIcon(ConfigureEvent& event, bool apply);

    ConfigureCallbacks callbacks_;
    int largestThickness_;
    std::vector<ConfigureStatus> statuses_;
    std::vector<ConfigureEvent> events_;
    std::vector<int> eventLines_;  // of the events, for messages about their icons
    std::vector<Namesakes*> eventNames_;
    std::unordered_map<std::string, Namesakes> names_;
    std::unordered_map<uint16_t, int32_t> statusRows_;  // first row of each code
    uint32_t categoryVisibility_ = 1;                   // of the last category line
    LegendMisc misc_;
    int overlapLine_ = 0;
    std::string path_;
    int line_ = 0;
};
