// Log images. The input is a whole raw event file; its header is made one of a log image that can be read, of
// either byte order.
#include <cstring>
#include <vector>

#include "chronoweave/import/raw/raw_header.h"
#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < raw_LongHeaderSize) return 0;
    std::vector<uint8_t> file(data, data + size);
    const bool big = file[6] != 0;
    std::memcpy(file.data(), "FUZZ", 4);
    file[4] = raw_LogImageVersion >> 8;
    file[5] = raw_LogImageVersion & 0xFF;
    file[8] = big ? 0 : 1;
    file[9] = big ? 1 : 0;
    fuzz_Import(file);
    return 0;
}
