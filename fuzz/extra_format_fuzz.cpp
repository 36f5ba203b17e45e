// The text of extra data. The input: a byte of choices, the length of the format string, the format string,
// and with the rest the extra data.
#include <algorithm>
#include <string>
#include <string_view>

#include "chronoweave/rtos/extra_format.h"
#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 2) return 0;
    const size_t length = std::min<size_t>(data[1], size - 2);
    const std::string_view format(reinterpret_cast<const char*>(data + 2), length);
    EventRecord event;
    event.type = 4;
    event.extra = {data + 2 + length, size - 2 - length};
    std::string text = "before";
    bool flag = true;
    const bool made = extra_Format(event, format, (data[0] & 1) != 0, (data[0] & 2) != 0, (data[0] & 4) != 0,
                                   text, (data[0] & 8) != 0 ? &flag : nullptr);
    fuzz_Check(made == (event.extra.size() > 4) && text.size() <= extra_TextLimit && (made || text.empty()));
    return 0;
}
