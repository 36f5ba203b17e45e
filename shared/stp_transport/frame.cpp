#include "shared/stp_transport/frame.h"

#include <algorithm>

namespace {

constexpr uint32_t leastHeader = 32, mostHeader = 128;

uint32_t contextWord(const STPCallContext& context) {
    return uint32_t{context.high} << 16 | context.low;
}

}  // namespace

uint32_t word_Read(const uint8_t* from) {
    return uint32_t{from[0]} | uint32_t{from[1]} << 8 | uint32_t{from[2]} << 16 | uint32_t{from[3]} << 24;
}

void word_Write(uint8_t* to, uint32_t word) {
    for (int i = 0; i < 4; ++i) to[i] = static_cast<uint8_t>(word >> (8 * i));
}

FrameExtent frame_Measure(std::span<const uint8_t> bytes) {
    using State = FrameExtent::State;
    FrameExtent extent;
    if (bytes.size() < 8) return extent;
    extent.headerBytes = word_Read(bytes.data());
    extent.bodyBytes = word_Read(bytes.data() + 4);
    if (extent.headerBytes < leastHeader || extent.headerBytes > mostHeader || extent.headerBytes % 4 != 0 ||
        extent.bodyBytes > INT32_MAX)
        extent.state = State::Invalid;
    else if (extent.bodyBytes > stpMostBody)
        extent.state = State::TooLong;
    else if (bytes.size() >= extent.bytes())
        extent.state = State::Whole;
    return extent;
}

STPHeader frame_ReadHeader(std::span<const uint8_t> packet, uint32_t headerBytes) {
    uint32_t words[stpHeaderBytes / 4] = {};
    const size_t count = std::min<size_t>(std::min<size_t>(headerBytes, packet.size()) / 4, std::size(words));
    for (size_t i = 0; i < count; ++i) words[i] = word_Read(packet.data() + 4 * i);
    STPHeader header{words[2], words[3], words[4], words[5], words[6], words[7], words[8], {}};
    header.context = {static_cast<uint16_t>(words[9] >> 16), static_cast<uint16_t>(words[9]),
                      static_cast<uint16_t>(words[10])};
    return header;
}

void frame_WriteHeader(uint8_t* to, const STPHeader& header, uint32_t bodyBytes) {
    const uint32_t words[] = {
        stpHeaderBytes,        bodyBytes,   header.firstId, header.secondId, header.sequence,
        header.inReplyTo,      header.kind, header.tag,     header.flags,    contextWord(header.context),
        header.context.ordinal};
    for (const uint32_t word : words) {
        word_Write(to, word);
        to += 4;
    }
}
