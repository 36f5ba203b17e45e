// Where raw bytes come from. The decoder is fed by this interface, so that a file that is read once, a file
// that still grows, a pipe and bytes in memory all go through the same code.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "shared/libcxxutil/result.h"

enum class SourceStatus {
    Data,   // bytes were delivered
    Again,  // none now, but more may come
    End,    // none, and none will come
    Failed  // the source can't be read at that offset
};

struct SourceRead {
    SourceStatus status = SourceStatus::End;
    size_t bytes = 0;
};

class ByteSource {
  public:
    virtual ~ByteSource() = default;
    // Reads up to bytes.size() bytes at an offset; fewer only at the present end.
    virtual SourceRead ReadAt(uint64_t offset, std::span<uint8_t> bytes) = 0;
    // Present length in bytes; of a pipe what came so far.
    virtual uint64_t size() = 0;
    // Whether any offset can be read again. A pipe keeps only its newest bytes.
    virtual bool rereadable() const { return true; }
};

// A file. growing: its present end is Again and not End. Refused when it can't be opened; only regular files
// can.
Result source_OpenFile(const std::string& name, bool growing, std::unique_ptr<ByteSource>& source);
// Bytes in memory.
std::unique_ptr<ByteSource> source_FromBytes(std::vector<uint8_t> bytes);
// The reading end of a pipe or socket, which stays the caller's and must outlive the source. Nothing there is
// Again, so that a descriptor that doesn't block can be asked at any time; the far end gone is End. At least
// the last 64 KiB that were read can be read again.
std::unique_ptr<ByteSource> source_FromPipe(int file);

// Everything from an offset to the present end, at most limit bytes. False when it can't be read or held in
// memory.
[[nodiscard]] bool source_ReadRest(ByteSource& source, uint64_t offset, uint64_t limit,
                                   std::vector<uint8_t>& bytes);
