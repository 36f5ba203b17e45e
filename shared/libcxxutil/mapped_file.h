// A file's bytes in the address space, to be read where they stand: what is not looked at costs no memory,
// and what is costs none of the program's own. Another program that cuts the file meanwhile can't end this
// one: zeros are read in place of what is gone.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

class MappedFile {
  public:
    // Of a regular file. One that the system can't map is read into memory.
    static Result Open(const std::string& name, std::unique_ptr<MappedFile>& file);
    // Of bytes in place of a file.
    static std::unique_ptr<MappedFile> OfBytes(std::vector<uint8_t> bytes);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // As much of the file as was there when it was last looked at. They last as long as the object, whatever
    // follows.
    std::span<const uint8_t> bytes() const { return {data_, size_}; }
    // Looks how long the file is by now.
    void Refresh();

  private:
    MappedFile() = default;
    [[nodiscard]] bool Map(size_t size);
    [[nodiscard]] bool Read(size_t size);

    struct Region {
        uint8_t* begin = nullptr;
        size_t size = 0;
    };
    FileDescriptor file_;
    std::vector<Region> regions_;               // the last one is that of the present bytes
    std::vector<std::vector<uint8_t>> copies_;  // likewise, where nothing is mapped
    const uint8_t* data_ = nullptr;
    size_t size_ = 0;
};
