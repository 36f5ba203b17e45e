#include "services/servicerouter_proxy/plugin_frame.h"

namespace {

constexpr size_t lengthBytes = 4, typeAt = 4, depthAt = 5, statusAt = 6;

// What stands ahead of the text.
size_t headBytes(PluginFrame::Type type) {
    return type == PluginFrame::Type::Reply ? statusAt + 1 : statusAt;
}

constexpr size_t leastFrame = statusAt + 1;  // a request without a text, and its zero byte

uint32_t readLength(std::span<const uint8_t> bytes) {
    uint32_t length = 0;
    for (size_t i = 0; i < lengthBytes; ++i) length = length << 8 | bytes[i];
    return length;
}

}  // namespace

PluginFrameRead pluginFrame_Read(std::span<const uint8_t> bytes) {
    const PluginFrameRead broken{PluginFrameRead::State::Broken, 0, {}};
    if (bytes.size() < lengthBytes) return {};
    const uint32_t length = readLength(bytes);
    if (length < leastFrame || length > pluginMostFrame) return broken;
    if (bytes.size() < length) return {};
    const auto type = static_cast<PluginFrame::Type>(bytes[typeAt]);
    if (type != PluginFrame::Type::Request && type != PluginFrame::Type::Reply) return broken;
    const size_t head = headBytes(type);
    // The text ends where the frame does.
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()) + head, length - head);
    if (text.empty() || text.find('\0') != text.size() - 1) return broken;
    PluginFrameRead read{PluginFrameRead::State::Whole, length, {}};
    read.frame = {type, bytes[depthAt], head > statusAt ? bytes[statusAt] : uint8_t{0},
                  std::string(text.substr(0, text.size() - 1))};
    return read;
}

std::optional<std::string> pluginFrame_Write(const PluginFrame& frame) {
    const size_t length = headBytes(frame.type) + frame.text.size() + 1;
    if (length > pluginMostFrame || frame.text.find('\0') != std::string::npos) return std::nullopt;
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(length >> shift & 0xFF);
    bytes += static_cast<char>(frame.type);
    bytes += static_cast<char>(frame.depth);
    if (frame.type == PluginFrame::Type::Reply) bytes += static_cast<char>(frame.status);
    return bytes + frame.text + '\0';
}
