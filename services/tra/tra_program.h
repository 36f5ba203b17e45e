// What the service TRA needs of the program that offers it: its windows, each of which shows a file.
#pragma once

#include <cstdint>
#include <string>

class TRA_Server;

// A window of the program; only the program looks into it.
struct TraWindow;

class TraProgram {
  public:
    virtual ~TraProgram() = default;
    // A new window, which shows nothing; null on failure.
    virtual TraWindow* open() = 0;
    // The first window that shows the file; null when none does.
    virtual TraWindow* find(const std::string& file) = 0;
    // The window that the user works in; null when there is none.
    virtual TraWindow* focused() = 0;
    // Shows the file in the window. That takes its time and serves the user meanwhile: the window may be gone
    // afterwards. What can't be shown the window says.
    virtual void load(TraWindow& window, const std::string& file) = 0;
    virtual bool lives(const TraWindow* window) = 0;
    virtual void raise(TraWindow& window) = 0;
    virtual void setTitle(TraWindow& window, const std::string& title) = 0;
    // The server is who the window asks about its file from now on.
    virtual void setOwner(TraWindow& window, TRA_Server& server) = 0;
    // The number that stands for the window.
    virtual uint32_t number(const TraWindow& window) = 0;
    // Brings a time, as text, and an object's row into view. 0 is no object.
    virtual void scroll(TraWindow& window, uint32_t objectId, const std::string& time) = 0;
    // Closes every window that shows the file; none for an empty name.
    virtual void close(const std::string& file) = 0;
    // The server is going: no window has it as its owner any more.
    virtual void forget(const TRA_Server& server) = 0;
};
