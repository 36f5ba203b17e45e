#include "shared/stp_transport/spec/negotiation.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/spec/body_fields.h"

namespace {

struct WireMessage {
    uint32_t id = 0;
    std::string name;
    uint32_t flags = 0;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::Number>("id", 1, self.id);
        v.template field<STPType::Word>("name", 2, self.name);
        v.template field<STPType::Number>("flags", 3, self.flags);
    }
};

struct WireTags {
    std::string name, version;
    uint32_t flags = 0;
    std::vector<std::string> tags;
    std::vector<WireMessage> messages;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::Word>("name", 1, self.name);
        v.template field<STPType::String>("vstamp", 2, self.version);
        v.template field<STPType::Number>("flags", 3, self.flags);
        v.template array<STPType::String>("tags", 4, self.tags);
        v.template array<STPType::Record>("msgs", 5, self.messages);
    }
};

struct WireFormat {
    std::string name, format;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::Word>("name", 1, self.name);
        v.template field<STPType::String>("fmt", 2, self.format);
    }
};

struct WireFormats {
    std::vector<WireFormat> messages;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template array<STPType::Record>("msgs", 1, self.messages);
    }
};

STPSendRow* find(std::vector<STPSendRow>& rows, std::string_view name) {
    const auto row = std::lower_bound(rows.begin(), rows.end(), name,
                                      [](const STPSendRow& r, std::string_view n) { return r.name < n; });
    return row != rows.end() && row->name == name ? &*row : nullptr;
}

}  // namespace

std::string negotiation_WriteTags(const STPServiceDescription& side) {
    WireTags wire{
        side.sideName, side.versionStamp, side.classFlags, {side.tags.begin(), side.tags.end()}, {}};
    for (const STPTableRow& row : side.receives) wire.messages.push_back({row.number, row.name, row.flags});
    return stp_FieldsAsText(wire);
}

STPPeerTags negotiation_ReadTags(std::string_view body) {
    auto wire = stp_ReadBody<WireTags>(STPBodyForm::Text, body);
    STPPeerTags peer{std::move(wire.name), std::move(wire.version), wire.flags, std::move(wire.tags), {}};
    for (WireMessage& message : wire.messages)
        peer.messages.push_back({message.id, std::move(message.name), message.flags});
    return peer;
}

std::vector<std::optional<uint32_t>> negotiation_MergeTags(std::span<const char* const> ours,
                                                           const std::vector<std::string>& peers) {
    std::vector<std::optional<uint32_t>> map;
    for (const char* tag : ours) {
        const auto found = std::find(peers.begin(), peers.end(), tag);
        map.push_back(found == peers.end()
                          ? std::nullopt
                          : std::optional(static_cast<uint32_t>(std::distance(peers.begin(), found))));
    }
    return map;
}

std::vector<STPSendRow> negotiation_MergeMessages(std::vector<STPSendRow>& rows, const STPPeerTags& peer) {
    std::vector<STPSendRow> extra;
    for (const STPPeerTags::Message& message : peer.messages) {
        STPSendRow* const row = find(rows, message.name);
        if (!row) {
            extra.push_back({message.name, {}, message.id, message.flags, true, {}});
        } else if (!row->namedByPeer) {  // the first one counts
            row->id = message.id;
            row->flags = message.flags;
            row->namedByPeer = true;
        }
    }
    return extra;
}

std::string negotiation_WriteFormats(std::span<const STPTableRow> rows) {
    WireFormats wire;
    for (const STPTableRow& row : rows) wire.messages.push_back({row.name, row.format});
    return stp_FieldsAsText(wire);
}

void negotiation_ReadFormats(std::string_view body, std::vector<STPSendRow>& rows) {
    for (WireFormat& message : stp_ReadBody<WireFormats>(STPBodyForm::Text, body).messages) {
        STPSendRow* const row = find(rows, message.name);
        if (!row) continue;
        STPMessageDescriptor descriptor;
        if (const Result parsed = descriptor_Parse(message.format, descriptor); !parsed)
            gen_warning("The peer's format of %s can't be read: %s", message.name.c_str(),
                        parsed.text().c_str());
        else
            row->peerFormat = std::move(message.format);
    }
}
