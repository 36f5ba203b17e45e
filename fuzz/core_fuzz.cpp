// Core files: versions 1, 2 and 4 are told apart by the first byte that is not 0. Whatever else the input
// begins with is made one of them, so that no input ends at the door.
#include <vector>

#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 2) return 0;
    std::vector<uint8_t> file(data, data + size);
    constexpr uint8_t versions[4] = {1, 2, 4, 4};
    const int marker = file[0] | file[1];
    if ((file[0] != 0 && file[1] != 0) || (marker != 1 && marker != 2 && marker != 4)) {
        const bool big = (file[0] & 0x80) != 0;
        const uint8_t version = versions[file[0] % 4];
        file[0] = big ? 0 : version;
        file[1] = big ? version : 0;
    }
    fuzz_Import(file);
    return 0;
}
