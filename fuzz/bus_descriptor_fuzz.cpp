// Descriptors as they are: one that is read is written and read again to the same.
#include "fuzz/support.h"
#include "shared/stp_transport/spec/descriptor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    STPMessageDescriptor descriptor, again;
    if (!descriptor_Parse({reinterpret_cast<const char*>(data), size}, descriptor)) return 0;
    const std::string text = descriptor_Text(descriptor);
    fuzz_Check(descriptor_Parse(text, again).ok());
    fuzz_Check(again == descriptor && descriptor_Text(again) == text);
    return 0;
}
