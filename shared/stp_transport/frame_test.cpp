#include "shared/stp_transport/frame.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libtrv/documented_bytes_testing.h"
#include "shared/stp_transport/may_dispatch.h"
#include "shared/stp_transport/message.h"

namespace {

std::vector<uint8_t> packetOf(STPHeader header, std::string text) {
    STPMessage message{header, std::move(text)};
    message.finish();
    message.finish();  // once is enough
    std::vector<uint8_t> packet(stpHeaderBytes);
    frame_WriteHeader(packet.data(), header, static_cast<uint32_t>(message.body.size()));
    packet.insert(packet.end(), message.body.begin(), message.body.end());
    return packet;
}

FrameExtent::State measured(uint32_t header, uint32_t body, size_t have) {
    std::vector<uint8_t> bytes(have);
    if (have >= 8) {
        word_Write(bytes.data(), header);
        word_Write(bytes.data() + 4, body);
    }
    return frame_Measure(bytes).state;
}

}  // namespace

TEST(Frame, PacketsAreAsDocumented) {
    STPHeader request{2, 1, 7, 0, 14, 0, 0x41, {0, 7, 1}};
    EXPECT_EQ(packetOf(request, "CheckAbility dataFile:\"a.trr\" "), documented_Bytes("bus-request"));
    STPHeader reply{1, 2, 9, 7, 0xFFFFFFFF, 0xFFFFFFFF, 0, {0, 7, 1}};
    EXPECT_EQ(packetOf(reply, "powerMmask:0x6 "), documented_Bytes("bus-reply"));
    for (const STPHeader& header : {request, reply}) {
        const auto packet = packetOf(header, "x");
        EXPECT_EQ(frame_ReadHeader(packet, 44), header);
    }
    // Contexts have two halves.
    request.context = {0x1234, 0xabcd, 0xffff};
    EXPECT_EQ(frame_ReadHeader(packetOf(request, ""), 44), request);
}

TEST(Frame, TellsWholePacketsFromCutAndImpossibleOnes) {
    using State = FrameExtent::State;
    const struct {
        uint32_t header, body;
        size_t have;
        State state;
    } rows[] = {{44, 0, 7, State::Incomplete},
                {44, 0, 43, State::Incomplete},
                {44, 0, 44, State::Whole},
                {44, 5, 48, State::Incomplete},
                {44, 5, 49, State::Whole},  // the padding may come later
                {32, 0, 32, State::Whole},
                {128, 0, 128, State::Whole},
                {28, 0, 200, State::Invalid},
                {30, 0, 200, State::Invalid},
                {34, 0, 200, State::Invalid},
                {132, 0, 200, State::Invalid},
                {0, 0, 200, State::Invalid},
                {0x2C000000, 0, 200, State::Invalid},  // the other byte order
                {44, 0xFFFFFFFF, 200, State::Invalid},
                {44, 0x80000000, 200, State::Invalid},
                {44, 0x7FFFFFFF, 200, State::TooLong},
                {44, stpMostBody + 1, 8, State::TooLong},
                {44, stpMostBody, 8, State::Incomplete}};
    for (const auto& row : rows)
        EXPECT_EQ(measured(row.header, row.body, row.have), row.state) << row.header << " " << row.body;
    EXPECT_EQ((FrameExtent{State::Whole, 44, 5}.step()), 52u);
}

TEST(Frame, AShortHeaderLeavesTheLastWordsZero) {
    const auto packet = packetOf({2, 1, 7, 0, 14, 0, 0x41, {0, 7, 1}}, "");
    const STPHeader header = frame_ReadHeader(packet, 32);
    EXPECT_EQ(header.tag, 0u);
    EXPECT_EQ(header.kind, 14u);
    EXPECT_EQ(header.flags, 0u);
    EXPECT_EQ(header.context, STPCallContext{});
}

TEST(MayDispatch, FollowsItsSixRules) {
    const STPCallContext chain{1, 5, 3};
    const struct {
        const char* rule;
        STPHeader message;
        DispatchState state;
        bool may;
    } rows[] = {
        {"nothing within a blocking send", {.inReplyTo = 4}, {.sendDepth = 1}, false},
        {"everything at depth 0",
         {.flags = stpOrdered},
         {.orderedWaits = 1, .replyOfOrdinalPending = true},
         true},
        {"a reply", {.inReplyTo = 4}, {.messageDepth = 1, .orderedWaits = 1}, true},
        {"not before a pending reply of its ordinal",
         {.flags = stpAnyTime},
         {.messageDepth = 1, .replyOfOrdinalPending = true},
         false},
        {"plain in a plain wait", {}, {.messageDepth = 1}, true},
        {"ordered in a plain wait", {.flags = stpOrdered}, {.messageDepth = 1}, false},
        {"plain in an ordered wait", {}, {.messageDepth = 1, .orderedWaits = 1}, false},
        {"any time in an ordered wait", {.flags = stpAnyTime}, {.messageDepth = 1, .orderedWaits = 1}, true},
        {"any time goes before ordered",
         {.flags = stpAnyTime | stpOrdered},
         {.messageDepth = 1, .orderedWaits = 1},
         true},
        {"further down the chain",
         {.context = {1, 5, 4}},
         {.messageDepth = 1, .orderedWaits = 1, .top = {.context = chain}},
         true},
        {"the same place of the chain",
         {.context = chain},
         {.messageDepth = 1, .orderedWaits = 1, .top = {.context = chain}},
         false},
        {"another chain, low half",
         {.context = {1, 6, 4}},
         {.messageDepth = 1, .orderedWaits = 1, .top = {.context = chain}},
         false},
        {"another chain, high half",
         {.context = {2, 5, 4}},
         {.messageDepth = 1, .orderedWaits = 1, .top = {.context = chain}},
         false},
    };
    for (const auto& row : rows) EXPECT_EQ(stp_MayDispatch(row.message, row.state), row.may) << row.rule;
}
