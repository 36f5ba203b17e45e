// The frames between a host program and a plug-in that it started. docs/formats.md has the layout.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct PluginFrame {
    enum class Type : uint8_t { Request = 1, Reply = 2 };
    Type type = Type::Request;
    uint8_t depth = 0;
    uint8_t status = 0;  // of a reply
    std::string text;

    bool operator==(const PluginFrame&) const = default;
};

inline constexpr size_t pluginMostFrame = size_t{1} << 20;

struct PluginFrameRead {
    enum class State {
        Incomplete,  // more bytes are needed
        Broken,      // no frame begins so
        Whole,
    };
    State state = State::Incomplete;
    size_t bytes = 0;  // of a whole frame
    PluginFrame frame;
};
// Looks at the start of what came.
PluginFrameRead pluginFrame_Read(std::span<const uint8_t> bytes);
// Nothing for a text that is too long, or that a zero byte would end early.
std::optional<std::string> pluginFrame_Write(const PluginFrame& frame);
