#include "shared/libcxxutil/report.h"

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "shared/libcxxutil/text.h"

std::array<unsigned, 7> gen_error_count{};
unsigned gen_error_total = 0;

namespace {

struct Prefixes {
    const char* usual;
    const char* alternative;
};

constexpr std::array<Prefixes, 7> prefixes{{{"", "ERROR"},
                                            {"disaster", "ERROR: DISASTER"},
                                            {"fatal", "ERROR: FATAL"},
                                            {"error", "ERROR"},
                                            {"warning", "WARNING"},
                                            {"info", "INFO"},
                                            {"", ""}}};
constexpr int plain_level = static_cast<int>(ReportLevel::Plain);

// What the reporting keeps for the process.
struct Reporting {
    std::string short_name = "chronoweave";
    bool alternative = false;
    ReportSink report;
    ConsoleSink console;
    ExitFunction exit_function;
};

Reporting& reporting() {
    static Reporting state;
    return state;
}

// Names of files and traces stand in messages: of all controls only line ends and tabs get to a terminal.
std::string safe_for_terminal(std::string_view text) {
    std::string safe;
    while (true) {
        const size_t at = text.find_first_of("\n\t");
        safe += text_printable(text.substr(0, at));
        if (at == std::string_view::npos) return safe;
        safe += text[at];
        text.remove_prefix(at + 1);
    }
}

std::string format_list(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

void count(int level) {
    if (level < 0 || level > plain_level) return;
    ++gen_error_count[static_cast<size_t>(level)];
    if (level < static_cast<int>(ReportLevel::Warning)) ++gen_error_total;
}

void report(int level, const std::string& text) {
    if (level >= 100) level -= 100;
    count(level);
    const std::string line = gen_compose(level, text);
    if (reporting().report)
        reporting().report(level, line);
    else
        gen_standard_error(line);
}

void write_raw(std::string_view text) {
    while (!text.empty()) {
        const auto wrote = ::write(STDERR_FILENO, text.data(), text.size());
        if (wrote <= 0) return;
        text.remove_prefix(static_cast<size_t>(wrote));
    }
}

}  // namespace

void gen_standard_error(std::string_view message) {
    const std::string text = safe_for_terminal(message);
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

void gen_warning_in_handler(const char* text) {
    constexpr auto level = static_cast<size_t>(ReportLevel::Warning);
    const Prefixes& words = prefixes[level];
    count(static_cast<int>(level));
    write_raw(reporting().short_name);
    write_raw(": ");
    write_raw(reporting().alternative ? words.alternative : words.usual);
    write_raw(": ");
    write_raw(text);
}

std::string gen_compose(int level, std::string_view text) {
    std::string line;
    if (level != plain_level) line = reporting().short_name + ": ";
    if (level >= 0 && level < plain_level) {
        const Prefixes& words = prefixes[static_cast<size_t>(level)];
        const char* word = reporting().alternative ? words.alternative : words.usual;
        if (*word) line.append(word).append(": ");
    }
    line.append(text);
    if (line.empty() || line.back() != '\n') line.push_back('\n');
    return line;
}

std::string gen_format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = format_list(format, args);
    va_end(args);
    return text;
}

#define CW_REPORT_AT(level)                                     \
    va_list args;                                               \
    va_start(args, format);                                     \
    report(static_cast<int>(level), format_list(format, args)); \
    va_end(args)

void gen_disaster(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Disaster);
}
void gen_fatal(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Fatal);
}
void gen_error(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Error);
}
void gen_warning(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Warning);
}
void gen_info(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Info);
}
void gen_plain(const char* format, ...) {
    CW_REPORT_AT(ReportLevel::Plain);
}

void gen_exit(int status, const char* format, ...) {
    CW_REPORT_AT(status != 0 ? ReportLevel::Fatal : ReportLevel::Exit);
    if (reporting().exit_function) reporting().exit_function(status);
    std::exit(status);
}

void gen_console(const char* format, ...) {
    va_list args;
    va_start(args, format);
    gen_console_raw("Chronoweave: " + format_list(format, args));
    va_end(args);
}

void gen_console_raw(std::string_view text) {
    if (reporting().console)
        reporting().console(text);
    else
        gen_standard_error(text);
}

void gen_set_short_name(std::string_view argv0) {
    const size_t slash = argv0.find_last_of("/\\");
    if (slash != std::string_view::npos) argv0.remove_prefix(slash + 1);
    if (!argv0.empty() && argv0.front() == '-') argv0.remove_prefix(1);
    reporting().short_name = std::string(argv0);
}

const std::string& gen_short_name() {
    return reporting().short_name;
}
void gen_use_alternative_prefixes(bool on) {
    reporting().alternative = on;
}
void gen_set_report_sink(ReportSink sink) {
    reporting().report = std::move(sink);
}
void gen_set_console_sink(ConsoleSink sink) {
    reporting().console = std::move(sink);
}
void gen_set_exit(ExitFunction exit_function) {
    reporting().exit_function = std::move(exit_function);
}

void gen_assertion_failed(const char* expression, const char* file, int line) {
    gen_standard_error(gen_format("Assertion %s failed in '%s' on line %d [%s]\n", expression, file, line,
                                  reporting().short_name.c_str()));
    std::exit(1);
}
