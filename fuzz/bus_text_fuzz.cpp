// Text bodies as they are: fields of every type, and what negotiation reads of them.
#include "fuzz/bus_bodies.h"
#include "shared/stp_transport/spec/negotiation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    const std::string_view body(reinterpret_cast<const char*>(data), size);
    fuzz_Bodies(STPBodyForm::Text, body);
    const STPPeerTags tags = negotiation_ReadTags(body);
    std::vector<STPSendRow> rows{{"CloseFile", "", 0, 2, false, {}}, {"OpenFile", "", 1, 1, false, {}}};
    const auto extra = negotiation_MergeMessages(rows, tags);
    fuzz_Check(extra.size() <= tags.messages.size());
    negotiation_ReadFormats(body, rows);
    return 0;
}
