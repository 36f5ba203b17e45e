// Binary bodies as they are.
#include "fuzz/bus_bodies.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    fuzz_Bodies(STPBodyForm::Binary, {reinterpret_cast<const char*>(data), size});
    return 0;
}
