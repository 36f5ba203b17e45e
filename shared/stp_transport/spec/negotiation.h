// What two sides of a service tell each other before they talk: which messages each takes, by which number.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// A message of a table. Tables are sorted by name.
struct STPTableRow {
    const char* name;
    const char* format;  // its descriptor; empty where it is not known
    uint32_t number;
    uint32_t flags;
};

// What a generated class is.
struct STPServiceDescription {
    const char* serviceName;
    const char* sideName;
    const char* versionStamp;
    uint32_t classFlags;
    uint32_t localId, remoteId;
    std::span<const STPTableRow> receives, sends;
    std::span<const char* const> tags;  // optional features, sorted
};

// A message that this side sends, with what the peer said of it.
struct STPSendRow {
    std::string name, format;
    uint32_t id = 0, flags = 0;
    bool namedByPeer = false;
    std::string peerFormat;  // when the formats were asked for

    bool operator==(const STPSendRow&) const = default;
};

// The body of a tags message.
struct STPPeerTags {
    std::string name, version;
    uint32_t flags = 0;
    std::vector<std::string> tags;
    struct Message {
        uint32_t id = 0;
        std::string name;
        uint32_t flags = 0;
    };
    std::vector<Message> messages;
};

std::string negotiation_WriteTags(const STPServiceDescription& side);
STPPeerTags negotiation_ReadTags(std::string_view body);

// For each of ours the index of the same tag at the peer.
std::vector<std::optional<uint32_t>> negotiation_MergeTags(std::span<const char* const> ours,
                                                           const std::vector<std::string>& peers);
// Rows that the peer named get its id and flags; the others stay. Messages that only the peer knows are
// given.
std::vector<STPSendRow> negotiation_MergeMessages(std::vector<STPSendRow>& rows, const STPPeerTags& peer);

std::string negotiation_WriteFormats(std::span<const STPTableRow> rows);
// Stores the formats of the rows that are named. One that is no descriptor is reported and left out.
void negotiation_ReadFormats(std::string_view body, std::vector<STPSendRow>& rows);
