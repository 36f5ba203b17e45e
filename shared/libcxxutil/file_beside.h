// A file that is written under a name of its own beside the file that it is to become, and becomes it at once
// when every byte is there: the file is the old one or the new one at any moment.
#pragma once

#include <string>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

class FileBeside {
  public:
    FileBeside() = default;
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    // Removes what was written, unless it was kept.
    ~FileBeside() { drop(); }

    // Makes an empty file beside path, under its name with "_XXXXXX". Where path is a link, it is beside the
    // file that it leads to. Refused where something else than a regular file stands.
    Result make(const std::string& path);
    // Where to write.
    const std::string& name() const { return name_; }
    const FileDescriptor& descriptor() const { return file_; }
    // Puts it in the place of path, with the mode of the file that stands there, 0644 where none does.
    // Whoever wrote sees to it that the bytes have reached the disk. After a failure nothing is left of it.
    Result keep();

  private:
    void drop();

    FileDescriptor file_;
    std::string target_, name_;
};
