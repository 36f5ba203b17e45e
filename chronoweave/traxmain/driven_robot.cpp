#include "chronoweave/traxmain/driven_robot.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QWidget>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "chronoweave/qt/canvas_window.h"

namespace {

constexpr auto patience = std::chrono::seconds(60);  // for a machine that has other things to do
constexpr int attempts = 3;

// Starts a program whose output nobody wants; its process, -1 when it is not there.
int start(const std::vector<std::string>& command, int keptOpen = -1) {
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int process = ::fork();
    if (process != 0) return process;
    const int nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, 1);
    ::dup2(nowhere, 2);
    if (keptOpen >= 0) ::fcntl(keptOpen, F_SETFD, 0);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

bool installed(const char* program) {
    std::string path = std::getenv("PATH") ? std::getenv("PATH") : "";
    for (size_t at = 0; at <= path.size();) {
        const size_t end = std::min(path.find(':', at), path.size());
        if (::access((path.substr(at, end - at) + "/" + program).c_str(), X_OK) == 0) return true;
        at = end + 1;
    }
    return false;
}

void stop(int process) {
    if (process <= 0) return;
    ::kill(process, SIGTERM);
    ::waitpid(process, nullptr, 0);
}

bool succeeds(const std::vector<std::string>& command) {
    int status = 0;
    ::waitpid(start(command), &status, 0);
    return status == 0;
}

// Carries out a command of xdotool.
void tool(std::vector<std::string> words) {
    words.insert(words.begin(), "xdotool");
    if (!succeeds(words)) throw Robot::Fault{"xdotool " + words[1] + " failed"};
}

// Of the window in front where it has one of that name.
QWidget* visible(const char* objectName) {
    QWidgetList windows = QApplication::topLevelWidgets();
    if (QWidget* front = QApplication::activeWindow()) windows.prepend(front);
    for (QWidget* window : windows) {
        if (!window->isVisible()) continue;
        if (window->objectName() == QLatin1String(objectName)) return window;
        for (QWidget* widget : window->findChildren<QWidget*>(QLatin1String(objectName)))
            if (widget->isVisible()) return widget;
    }
    return nullptr;
}

}  // namespace

DrivenScreen::DrivenScreen() {
    for (const char* program : {"Xvfb", "openbox", "xdotool"})
        if (!installed(program)) missing_ += std::string(missing_.empty() ? "" : ", ") + program;
    if (!missing_.empty()) return;
    // Either can end while it begins, on a machine where others begin and end, too.
    for (int attempt = 1; !beginScreen(); ++attempt) {
        endScreen();
        if (attempt == attempts) throw std::runtime_error("Xvfb or openbox did not start");
    }
}

bool DrivenScreen::beginScreen() {
    int tell[2];
    if (::pipe2(tell, O_CLOEXEC) != 0) return false;
    server_ = start(
        {"Xvfb", "-displayfd", std::to_string(tell[1]), "-screen", "0", "1400x900x24", "-nolisten", "tcp"},
        tell[1]);
    ::close(tell[1]);
    std::string number;
    for (char c = 0; ::read(tell[0], &c, 1) == 1 && c != '\n';) number += c;
    ::close(tell[0]);
    if (number.empty()) return false;
    ::setenv("DISPLAY", (":" + number).c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    manager_ = start({"openbox"});
    // A window that comes before the manager would stay without one. Only a manager tells the desktop.
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!succeeds({"xdotool", "get_desktop"})) {
        const bool gone = ::waitpid(manager_, nullptr, WNOHANG) != 0;
        if (gone) manager_ = -1;
        if (gone || std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

void DrivenScreen::endScreen() {
    stop(manager_);
    stop(server_);
    manager_ = server_ = -1;
}

DrivenScreen::~DrivenScreen() {
    endScreen();
}

void Robot::waitForTitle(const char* title) {
    const auto end = std::chrono::steady_clock::now() + patience;
    const std::string whole = '^' + std::string(title) + '$';
    while (!succeeds({"xdotool", "search", "--onlyvisible", "--name", whole})) {
        if (std::chrono::steady_clock::now() > end) throw Fault{"no window \"" + std::string(title) + '"'};
        pause(50);
    }
}

void Robot::look(const std::function<void()>& work) {
    QMetaObject::invokeMethod(qApp, work, Qt::BlockingQueuedConnection);
}

void Robot::waitFor(const char* what, const std::function<bool()>& question) {
    const auto end = std::chrono::steady_clock::now() + patience;
    for (bool yes = false; std::chrono::steady_clock::now() < end; pause(30)) {
        if (QCoreApplication::instance() == nullptr) continue;
        look([&] { yes = question(); });
        if (yes) return;
    }
    throw Fault{std::string("waited in vain for ") + what};
}

void Robot::expect(bool fact, const std::string& what) {
    if (!fact) throw Fault{what};
}

CanvasWindow* Robot::canvas() {
    return CanvasWindow::all().empty() ? nullptr : CanvasWindow::all().front();
}

QRect Robot::placeOf(const char* objectName) {
    QRect place;
    waitFor(objectName, [&] {
        const QWidget* widget = visible(objectName);
        if (widget) place = QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size());
        return widget != nullptr;
    });
    return place;
}

QPoint Robot::middleOf(const char* objectName) {
    return placeOf(objectName).center();
}

// xdotool waits long for a pointer that is there already to move.
void Robot::moveTo(QPoint at) {
    if (std::exchange(pointer_, at) == at) return;
    tool({"mousemove", "--sync", std::to_string(at.x()), std::to_string(at.y())});
}
void Robot::click(QPoint at, int button, int times) {
    moveTo(at);
    pause(60);
    tool({"click", "--repeat", std::to_string(times), "--delay", "40", std::to_string(button)});
    pause(80);
}
void Robot::press(QPoint at) {
    moveTo(at);
    tool({"mousedown", "1"});
}
void Robot::release() {
    tool({"mouseup", "1"});
}
void Robot::wheel(QPoint at, int notches, const char* withKey) {
    moveTo(at);
    if (withKey) tool({"keydown", withKey});
    tool({"click", "--repeat", std::to_string(std::abs(notches)), "--delay", "30", notches > 0 ? "4" : "5"});
    if (withKey) tool({"keyup", withKey});
    pause(80);
}
void Robot::key(const char* chord) {
    tool({"key", "--clearmodifiers", chord});
    pause(80);
}
void Robot::type(const std::string& text) {
    tool({"type", "--delay", "8", text});
    pause(80);
}
void Robot::pause(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void Robot::choose(const char* text) {
    QPoint at;
    waitFor(text, [&] {
        const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu) return false;
        for (QAction* action : menu->actions()) {
            const QString shown = action->text().remove(QLatin1Char('&'));
            if (!shown.startsWith(QLatin1String(text)) || !action->isEnabled()) continue;
            at = menu->mapToGlobal(menu->actionGeometry(action).center());
            return true;
        }
        return false;
    });
    click(at);
}

void Robot::picture(const char* name) {
    pause(150);
    look([&] {
        const QPixmap screen = QApplication::primaryScreen()->grabWindow(0);
        std::filesystem::create_directories(pictures_);
        screen.save(QString::fromStdString(pictures_ + "/" + name + ".png"));
    });
}
