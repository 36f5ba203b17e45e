// Packets: a header of eleven little-endian words and a body. docs/formats.md has the layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

enum class STPKind : uint32_t {
    Ignored = 4,
    Sync = 5,
    Channel = 6,
    Negotiation = 12,
    Command = 13,
    Text = 14,
    Binary = 15,
    Reply = 0xFFFFFFFF,
};
// A message whose number is to be found by its name; a reply's.
inline constexpr uint32_t stpNoTag = 0xFFFFFFFF;

// Bits of a header's flags, and of a row's.
inline constexpr uint32_t stpWantsReply = 0x01, stpOneWay = 0x02, stpOrdered = 0x04, stpAnyTime = 0x10,
                          stpOwnContextOnly = 0x40, stpBringsWindowUp = 0x80;

// A place in a chain of calls.
struct STPCallContext {
    uint16_t high = 0, low = 0;
    uint16_t ordinal = 0;

    bool sameChain(const STPCallContext& other) const { return high == other.high && low == other.low; }
    bool operator==(const STPCallContext&) const = default;
};

struct STPHeader {
    uint32_t firstId = 0, secondId = 0;  // of the sender's side, of the receiver's
    uint32_t sequence = 0, inReplyTo = 0;
    uint32_t kind = 0;  // an STPKind, or one that nobody knows here
    uint32_t tag = 0, flags = 0;
    STPCallContext context = {};

    bool is(STPKind k) const { return kind == static_cast<uint32_t>(k); }
    bool isReply() const { return inReplyTo != 0; }
    bool operator==(const STPHeader&) const = default;
};

inline constexpr size_t stpHeaderBytes = 44;
// The longest body that is taken or sent.
inline constexpr size_t stpMostBody = size_t{16} << 20;

struct FrameExtent {
    enum class State {
        Incomplete,  // more bytes are needed to tell, or the packet is not whole
        Invalid,     // no packet starts so
        TooLong,     // a body beyond stpMostBody
        Whole,
    };
    State state = State::Incomplete;
    uint32_t headerBytes = 0, bodyBytes = 0;

    size_t bytes() const { return size_t{headerBytes} + bodyBytes; }
    // How far it is to the next packet.
    size_t step() const { return (bytes() + 3) & ~size_t{3}; }
};
// Looks at the start of what came.
FrameExtent frame_Measure(std::span<const uint8_t> bytes);
// The header of a whole packet. One shorter than ours leaves the last words 0; a longer one's rest is
// skipped.
STPHeader frame_ReadHeader(std::span<const uint8_t> packet, uint32_t headerBytes);
// Writes stpHeaderBytes bytes.
void frame_WriteHeader(uint8_t* to, const STPHeader& header, uint32_t bodyBytes);

// One little-endian word at any address.
uint32_t word_Read(const uint8_t* from);
void word_Write(uint8_t* to, uint32_t word);
