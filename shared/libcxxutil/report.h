// The messages of the program: six levels, each with its own operation, and the message console.
//
// A line as written is: the program's short name and ": " (not at level plain), the level's word and ": " if
// it has one, the text, and a line end if the text has none. Where it goes is replaceable, so that the window
// program can show it in its console window, a test can read it, and the command line program can send it to
// standard error. One thread; nothing here takes a lock.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

#if defined(__GNUC__)
#define CW_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define CW_PRINTF(fmt, args)
#endif

enum class ReportLevel { Exit = 0, Disaster = 1, Fatal = 2, Error = 3, Warning = 4, Info = 5, Plain = 6 };

// Messages so far by level, and those of levels below Warning.
extern std::array<unsigned, 7> gen_error_count;
extern unsigned gen_error_total;

// Formats like printf into a string of any length.
std::string gen_format(const char* format, ...) CW_PRINTF(1, 2);

// One operation per level. Formats are literals of the program; user text is only ever an argument.
void gen_disaster(const char* format, ...) CW_PRINTF(1, 2);
void gen_fatal(const char* format, ...) CW_PRINTF(1, 2);
void gen_error(const char* format, ...) CW_PRINTF(1, 2);
void gen_warning(const char* format, ...) CW_PRINTF(1, 2);
void gen_info(const char* format, ...) CW_PRINTF(1, 2);
void gen_plain(const char* format, ...) CW_PRINTF(1, 2);

// The same at warning level for signal handlers and what follows a fault: no memory is taken, no sink is
// called; the line goes to the standard error stream as it is. text ends its line itself.
void gen_warning_in_handler(const char* text);

// Reports at level 2 when status is not 0 and at level 0 otherwise, and ends the process through the exit
// operation.
[[noreturn]] void gen_exit(int status, const char* format, ...) CW_PRINTF(2, 3);

// Prints "Chronoweave: " and the text to the message console as it is: no level, no counting, no line end
// added.
void gen_console(const char* format, ...) CW_PRINTF(1, 2);
// The same without the prefix.
void gen_console_raw(std::string_view text);

// The name put before each message: the name the program was started by, without its directory and less one
// leading "-".
void gen_set_short_name(std::string_view argv0);
const std::string& gen_short_name();

// Chooses the second column of prefix words ("ERROR: FATAL", "WARNING", ...) in place of the first. Off by
// default.
void gen_use_alternative_prefixes(bool on);

// The line that a report of this level and text makes, line end included. Levels above 6 have no prefix.
std::string gen_compose(int level, std::string_view text);

// Where composed report lines and console texts go. The default for both is the standard error stream.
// Passing an empty function restores the default.
// For sinks: writes to the standard error stream with nothing in it that a terminal could take for a control
// but line ends and tabs.
void gen_standard_error(std::string_view text);
using ReportSink = std::function<void(int level, const std::string& line)>;
using ConsoleSink = std::function<void(std::string_view text)>;
using ExitFunction = std::function<void(int status)>;
void gen_set_report_sink(ReportSink sink);
void gen_set_console_sink(ConsoleSink sink);
void gen_set_exit(ExitFunction exit_function);

// A failed assertion: writes it with file, line and short name to the standard error stream and exits with
// status 1.
[[noreturn]] void gen_assertion_failed(const char* expression, const char* file, int line);
#define GEN_ASSERT(expression) \
    ((expression) ? static_cast<void>(0) : gen_assertion_failed(#expression, __FILE__, __LINE__))
