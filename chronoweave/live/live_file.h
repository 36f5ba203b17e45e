// The raw event file that another process writes, as live reading looks at it before each read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shared/libcxxutil/file_descriptor.h"

// What a file has for a reader that waits for it.
enum class LiveLook {
    Records,      // a header, and behind it something to read
    NotYet,       // nothing, or a part of that
    BadFormat,    // no stream of records: an image, a core file, or neither
    Unsupported,  // of another system
    Absent        // it can't be opened
};
LiveLook live_Look(const std::string& path);

class LiveFile {
  public:
    enum class State {
        Nothing,  // nothing new, or a byte that says that nothing more is meant to be read
        More,
        Vanished,
        Shrunk,
        Replaced  // by another file, or with other contents
    };
    // The file under this name is the one from now on.
    void Open(const std::string& path);
    void Close() { *this = LiveFile(); }
    bool IsOpen() const { return file_.IsOpen(); }
    const std::string& path() const { return path_; }
    // read: bytes that were read of it.
    State Look(uint64_t read);
    // It was read up to here.
    void Note(uint64_t read);
    // Up to where; 0 before.
    uint64_t seen() const { return seen_; }

  private:
    std::vector<uint8_t> Before(uint64_t offset) const;

    std::string path_;
    FileDescriptor file_;
    uint64_t device_ = 0, number_ = 0;  // which file it is
    uint64_t seen_ = 0;                 // bytes read when it was noted
    std::vector<uint8_t> tail_;         // the last bytes before that
};
