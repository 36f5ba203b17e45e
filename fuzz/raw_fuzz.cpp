// Raw event files as they are.
#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    fuzz_Import({data, size});
    return 0;
}
