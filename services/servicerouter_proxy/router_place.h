// Where a user's shared router waits: a file that each router of a zone keeps, by which programs find it and
// a second one of the same zone is kept from starting.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

// The file of a zone, in the directory for what a user's programs keep while they run. Characters that no
// file name should have are written in hexadecimal.
std::string routerPlace_File(const std::string& zone);
// The port that the zone's router said it waits on; nothing when no router lives that says so.
std::optional<uint16_t> routerPlace_Port(const std::string& zone);

// Held by the one router of a zone as long as it lives; the system lets it go when the process ends, however
// that is.
class RouterPlace {
  public:
    // Waits a moment for another one that is just starting. Failure: another router has the place, or the
    // file can't be made.
    Result take(const std::string& zone);
    // Tells the port to whoever looks.
    Result tell(uint16_t port);
    ~RouterPlace();

  private:
    FileDescriptor file_;
    std::string path_;
};
