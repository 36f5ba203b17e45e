// Where raw bytes come from. The decoder is fed by this interface, so that a file that is read once, a file
// that still grows and bytes in memory all go through the same code.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

enum class SourceStatus {
    Data,        // bytes were delivered
    NothingYet,  // none now, but more may come
    End,         // none, and none will come
    Failed       // the source can't be read at that offset
};

struct SourceRead {
    SourceStatus status = SourceStatus::End;
    size_t bytes = 0;
};

class ByteSource {
  public:
    virtual ~ByteSource() = default;
    // Reads up to bytes.size() bytes at an offset; fewer only at the present end.
    virtual SourceRead read_at(uint64_t offset, std::span<uint8_t> bytes) = 0;
    // Present length in bytes.
    virtual uint64_t size() = 0;
};

// A file. growing: its present end is NothingYet and not End. Null, with the reason in why, when it can't be
// opened; only regular files can.
std::unique_ptr<ByteSource> source_OpenFile(const std::string& name, bool growing, std::string& why);
// Bytes in memory.
std::unique_ptr<ByteSource> source_FromBytes(std::vector<uint8_t> bytes);

// Everything from an offset to the present end, at most limit bytes. False when it can't be read or held in
// memory.
[[nodiscard]] bool source_ReadRest(ByteSource& source, uint64_t offset, uint64_t limit,
                                   std::vector<uint8_t>& bytes);
