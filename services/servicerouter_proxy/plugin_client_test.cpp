// The link to a plug-in host over a scripted wire.
#include "services/servicerouter_proxy/plugin_client.h"

#include <gtest/gtest.h>

#include "libtrv/documented_bytes_testing.h"
#include "shared/stp_transport/scripted_wire_testing.h"

namespace {

using std::chrono::seconds;
using Type = PluginFrame::Type;

std::string frame(Type type, uint8_t depth, uint8_t status, std::string text) {
    return pluginFrame_Write({type, depth, status, std::move(text)}).value();
}
std::string request(uint8_t depth, std::string text) {
    return frame(Type::Request, depth, 0, std::move(text));
}
std::string reply(uint8_t depth, uint8_t status, std::string text) {
    return frame(Type::Reply, depth, status, std::move(text));
}

struct Host : PluginClientHost {
    int idles = 0;
    std::vector<std::string> asked;
    std::function<void()> inRequest;
    void idle() override { ++idles; }
    uint8_t request(const std::string& text, std::string& answer) override {
        asked.push_back(text);
        if (inRequest) inRequest();
        return PluginClientHost::request(text, answer);
    }
};

struct Link {
    std::shared_ptr<WireScript> script = std::make_shared<WireScript>();
    Host host;
    PluginClient::Clock::time_point now{};
    PluginClient client{std::make_unique<ScriptedWire>(script), host, [this] { return now; }};
    std::string text;
};

}  // namespace

TEST(PluginFrames, TheDocumentedExamplesByteForByte) {
    const auto documented = [](const char* name) {
        const auto bytes = documented_Bytes(name);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(request(0, ";"), documented("plugin-request"));
    EXPECT_EQ(reply(0, 1, "ok"), documented("plugin-reply"));
}

TEST(PluginFrames, FalseLengthsTypesAndTextsAreBroken) {
    const auto state = [](const std::string& bytes) {
        return pluginFrame_Read({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}).state;
    };
    using State = PluginFrameRead::State;
    const std::string whole = request(3, "text");
    for (size_t i = 0; i < whole.size(); ++i) EXPECT_EQ(state(whole.substr(0, i)), State::Incomplete) << i;
    EXPECT_EQ(state(whole + "more"), State::Whole);
    const std::string zero(1, '\0');
    EXPECT_EQ(state(zero + zero + zero + "\x06\x01" + zero), State::Broken) << "too short for its zero byte";
    EXPECT_EQ(state(zero + "\x10" + zero + "\x01"), State::Broken) << "longer than 1 MiB";
    EXPECT_EQ(state("\xff\xff\xff\xff"), State::Broken);
    std::string other = whole;
    other[4] = 3;
    EXPECT_EQ(state(other), State::Broken);
    other = whole;
    other[7] = 0;
    EXPECT_EQ(state(other), State::Broken) << "a zero byte within";
    other = whole;
    other.back() = 'x';
    EXPECT_EQ(state(other), State::Broken) << "none at the end";
    EXPECT_FALSE(pluginFrame_Write({Type::Request, 0, 0, std::string(pluginMostFrame, 'x')}));
}

TEST(PluginLink, ARequestIsSentAndItsAnswerTakenInWhateverPieces) {
    Link link;
    const std::string answer = reply(0, 1, "yes");
    for (const char c : answer) link.script->come(std::string(1, c));
    EXPECT_EQ(link.client.runRequest(";", link.text), 1);
    EXPECT_EQ(link.text, "yes");
    EXPECT_EQ(link.script->takeWritten(), request(0, ";"));
    link.script->come(reply(0, 0, "no"));
    EXPECT_EQ(link.client.runRequest("again", link.text), 0);
    EXPECT_EQ(link.script->takeWritten(), request(0, "again"));
}

TEST(PluginLink, RequestsThatComeMeanwhileAreAnsweredFirst) {
    Link link;
    // One within ours, at our depth; then one that crossed ours, which is asked again.
    link.script->come(request(1, "within") + request(0, "crossed") + reply(0, 1, "done"));
    EXPECT_EQ(link.client.runRequest("ours", link.text), 1);
    EXPECT_EQ(link.script->takeWritten(), request(0, "ours") + reply(1, 0, "Unknown request:within") +
                                              reply(0, 0, "Unknown request:crossed") + request(0, "ours"));
    EXPECT_EQ(link.host.asked, (std::vector<std::string>{"within", "crossed"}));
    // A request from within the handling of theirs goes one deeper.
    link.host.inRequest = [&] {
        std::string inner;
        link.host.inRequest = {};
        link.script->come(reply(1, 1, "deep"));
        EXPECT_EQ(link.client.runRequest("inner", inner), 1);
    };
    link.script->come(request(0, "theirs"));
    link.client.poll();
    EXPECT_EQ(link.script->takeWritten(), request(1, "inner") + reply(0, 0, "Unknown request:theirs"));
    EXPECT_TRUE(link.client.connected());
    // One that came together with the answer is not forgotten.
    link.script->come(reply(0, 1, "yes") + request(0, "next"));
    EXPECT_EQ(link.client.runRequest("x", link.text), 1);
    EXPECT_EQ(link.script->takeWritten(), request(0, "x") + reply(0, 0, "Unknown request:next"));
}

TEST(PluginLink, ARequestRightBehindTheAnswerIsAnsweredToo) {
    Link link;
    link.script->come(reply(0, 1, "yes") + request(0, "theirs"));
    EXPECT_EQ(link.client.runRequest("ours", link.text), 1);
    EXPECT_EQ(link.text, "yes");
    EXPECT_EQ(link.script->takeWritten(), request(0, "ours") + reply(0, 0, "Unknown request:theirs"));
}

TEST(PluginLink, WhatDoesNotFitDropsTheConnection) {
    const std::string wrong[] = {reply(1, 1, "deeper"), reply(7, 1, "far"), request(2, "too deep"),
                                 std::string("\0\0\0\1", 4), std::string(9, '\xee')};
    for (const std::string& bytes : wrong) {
        Link link;
        link.script->come(bytes);
        EXPECT_EQ(link.client.runRequest("x", link.text), PluginClient::lostStatus);
        EXPECT_FALSE(link.client.connected());
        EXPECT_TRUE(link.script->closed);
        EXPECT_EQ(link.client.runRequest("x", link.text), PluginClient::lostStatus);
    }
    Link unasked;
    unasked.script->come(reply(0, 1, "nobody asked"));
    unasked.client.poll();
    EXPECT_FALSE(unasked.client.connected());
    Link ended;
    ended.script->come(reply(0, 1, "last words"));
    ended.script->end();
    EXPECT_EQ(ended.client.runRequest("x", ended.text), 1);
    ended.client.poll();
    EXPECT_FALSE(ended.client.connected());
}

TEST(PluginLink, AMinuteOfSilenceEndsItAndTheWaitSleepsOnTheSocket) {
    Link link;
    link.script->onWait = [&](std::chrono::milliseconds longest) {
        EXPECT_GE(longest, std::chrono::milliseconds(20));
        link.now += seconds(20);
    };
    EXPECT_EQ(link.client.runRequest("x", link.text), PluginClient::lostStatus);
    EXPECT_EQ(link.script->waits.size(), 3u);
    EXPECT_GE(link.host.idles, 3);
    Link lively;  // a frame begins the minute anew
    int waits = 0;
    lively.script->onWait = [&](std::chrono::milliseconds) {
        lively.now += seconds(50);
        lively.script->come(++waits < 4 ? request(1, "still here") : reply(0, 1, "late"));
    };
    EXPECT_EQ(lively.client.runRequest("x", lively.text), 1);
}
