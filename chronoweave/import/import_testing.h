// What the tests of this folder share: hand-made bytes, a folder of their own, and the console's text.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "chronoweave/import/import.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"

using Bytes = std::vector<uint8_t>;

inline void put16(Bytes& bytes, uint32_t value, bool big) {
    bytes.resize(bytes.size() + 2);
    store_16(&bytes[bytes.size() - 2], static_cast<uint16_t>(value), big);
}
inline void put32(Bytes& bytes, uint32_t value, bool big) {
    bytes.resize(bytes.size() + 4);
    store_32(&bytes[bytes.size() - 4], value, big);
}
inline void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// A raw event without its length byte; its extra data is the id and then zeros up to extra bytes.
inline Bytes raw_event(uint32_t type, uint32_t subtype, uint64_t time, uint32_t id, bool big,
                       size_t extra = 4) {
    Bytes data;
    put32(data, id, big);
    data.resize(extra);
    return raw_EncodeEvent(big, time, static_cast<uint16_t>(type), static_cast<uint16_t>(subtype), data);
}
inline void put_record(Bytes& bytes, const Bytes& event) {
    bytes.push_back(static_cast<uint8_t>(event.size()));
    append(bytes, event);
}
inline Bytes short_header(bool big, uint32_t os = 1, uint32_t architecture = 3, uint32_t rate = 1000) {
    const EventSourceHeader header{3, big, architecture, rate, os};
    return raw_EncodeHeader(header, RawHeaderForm::Short);
}
inline Bytes long_header(bool big, uint8_t major, uint8_t minor, uint32_t os = 1, uint32_t rate = 1000) {
    const EventSourceHeader header{major * 256u + minor, big, 2, rate, os};
    return raw_EncodeHeader(header, RawHeaderForm::Long);
}
inline Bytes task_entry(uint32_t id, uint32_t priority, const std::string& name, bool inUse, bool big) {
    RawWriter writer(big);
    writer.TaskEntry({id, priority, name}, inUse);
    return writer.take();
}

class ImportTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string folder = (std::filesystem::temp_directory_path() / "import_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        gen_set_console_sink([this](std::string_view text) { console_ += text; });
    }
    void TearDown() override {
        gen_set_console_sink({});
        std::filesystem::remove_all(folder_);
    }

    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    std::string write(const std::string& name, const Bytes& bytes) const {
        std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path(name);
    }
    OpenedSource import(const std::string& name, const Bytes& bytes) const {
        return import_OpenSource(write(name, bytes), {});
    }

    // The store's events, each as "time:type/subtype:id".
    static std::string events(TraceStore& store) {
        std::string text;
        const bool big = mt_IsBigEndianTarget(store);
        EventWalk walk;
        EventRecord event;
        if (!mt_StartWalkAtEvent(store, 1, 0, nullptr, walk)) return text;
        while (mt_NextEvent(walk, event)) {
            if (!text.empty()) text += ' ';
            text += gen_format("%llu:%u/%u:%x", static_cast<unsigned long long>(event.time), event.type,
                               event.subtype, load_32(event.extra.data(), big));
        }
        return text;
    }
    // Takes the console's text so far.
    std::string console() { return std::exchange(console_, {}); }

    std::string folder_;
    std::string console_;
};
