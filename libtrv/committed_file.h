// A file whose every append becomes visible by one byte.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libtrv/byte_buffer.h"
#include "libtrv/gfile.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/result.h"

// One growing file under the commit protocol. pending holds what is to come behind the terminator, beginning
// with the byte that takes the terminator's place. Failures name the file.
struct CommittedFile {
    std::unique_ptr<FileDevice> device;
    std::string name;
    uint64_t terminator = 0;
    ByteBuffer pending;

    // Makes the file of a name, with a header of this kind and version and its terminator.
    Result create(const std::string& fileName, uint32_t kind, uint32_t kindVersion = 0);
    // The same on a device.
    Result begin(std::unique_ptr<FileDevice> on, const std::string& fileName, uint32_t kind,
                 uint32_t kindVersion = 0);

    // Writes what is pending behind the terminator, a new terminator included. wrote: how many bytes of it
    // the device took. Nothing is visible to a reader yet.
    Result WriteBehind(size_t& wrote);
    // Puts a terminator behind the first size bytes of what is pending, all of which were taken.
    Result EndBehind(size_t size);
    // Makes the first size bytes of what is pending visible, behind which a terminator already stands, and
    // lets go of the rest.
    Result TurnTerminator(size_t size);

    // Takes away what was written behind the terminator and never became visible. Where that fails the bytes
    // stay, and no reader looks at them.
    void CutBack();
    // Begins to write to the disk what is visible by now, and does not wait for it.
    void StartSync();
    // Asks the disk to keep what was written.
    Result sync();

  private:
    uint64_t syncStarted_ = 0;  // of the bytes ahead of this the disk was told
};
