// A service description: which messages the sides of a service exchange, and their fields.
//
//     service NAME               begins a service
//     version TEXT               what negotiation tells; 1 when it is missing
//     form text | binary
//     side NAME [LOCAL-ID]       its first side is the server; the other side's id is the remote one
//     to SIDE                    messages that this side receives follow, one to a line:
//     MESSAGE [FLAGS "DESCRIPTOR"]
//     receives MESSAGE...        messages known by name only, of services without fields
//     sends MESSAGE...
//
// A "#" begins a remark. The order of messages is that of the operations in the generated class; tables are
// sorted by name.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/result.h"
#include "shared/stp_transport/frame.h"
#include "shared/stp_transport/spec/body_fields.h"

struct DescribedMessage {
    std::string name;
    uint32_t number = 0;  // its place in the table that is sorted by name
    // Of one whose fields are known.
    struct Fields {
        uint32_t flags = 0;
        std::string format;
        STPMessageDescriptor descriptor;
    };
    std::optional<Fields> fields;

    bool hasReply() const { return fields && (fields->flags & stpWantsReply) != 0; }
};

struct DescribedSide {
    std::string name;
    uint32_t id = 0;
    std::vector<DescribedMessage> receives;
};

struct DescribedService {
    std::string name, version = "1";
    STPBodyForm form = STPBodyForm::Text;
    std::vector<DescribedSide> sides;
    std::vector<std::string> receives, sends;  // by name only

    // Whether it has classes: two sides with ids.
    bool hasClasses() const { return sides.size() == 2 && sides[0].id != 0 && sides[1].id != 0; }
};

// The failure names the line.
Result description_Parse(const std::string& file, std::string_view text,
                         std::vector<DescribedService>& services);
