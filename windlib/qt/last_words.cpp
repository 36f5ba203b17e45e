#include "windlib/qt/last_words.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "shared/libcxxutil/report.h"
#include "windlib/qt/platform.h"

const char* const last_BoxOption = "--message-box";

namespace {

char programFile[4096];
bool boxes = false;

[[noreturn]] void endSilently(int) {
    std::_Exit(1);
}

void endAtNextFault() {
    struct sigaction action = {};
    action.sa_handler = endSilently;
    ::sigemptyset(&action.sa_mask);
    for (const int number : {SIGILL, SIGFPE, SIGSEGV, SIGBUS, SIGABRT}) ::sigaction(number, &action, nullptr);
}

void showBox(const char* text) {
    char option[32], line[256];
    std::snprintf(option, sizeof option, "%s", last_BoxOption);
    std::snprintf(line, sizeof line, "%s", text);
    char* const arguments[] = {programFile, option, line, nullptr};
    pid_t child = 0;
    if (::posix_spawn(&child, programFile, nullptr, nullptr, arguments, environ) != 0) return;
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

void last_Prepare() {
    const QByteArray file = QCoreApplication::applicationFilePath().toLocal8Bit();
    if (file.size() >= static_cast<qsizetype>(sizeof programFile)) return;
    std::copy(file.begin(), file.end(), programFile);
    boxes = !platform_IsAutomatic();
}

void last_Words(const char* text) {
    endAtNextFault();
    if (boxes) showBox(text);
    char line[256];
    std::snprintf(line, sizeof line, "%s\n", text);
    gen_warning_in_handler(line);
    std::_Exit(1);
}

int last_ShowBox(const char* program, const char* text) {
    const auto application = platform_Start(program);
    platform_MessageBox(nullptr, text);
    return 0;
}
