// What the store's tests share: a device in memory that can run out of room, and stores of random events.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "libtrv/gfile.h"
#include "libtrv/store_writer.h"
#include "libtrv/task_tracker.h"

// A folder that goes with the test.
class TestFolder {
  public:
    TestFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "cw_test_XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TestFolder() { std::filesystem::remove_all(path_); }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

using Bytes = std::vector<uint8_t>;

class MemoryDevice : public FileDevice {
  public:
    explicit MemoryDevice(std::shared_ptr<Bytes> bytes, size_t room = SIZE_MAX)
        : bytes_(std::move(bytes)), room_(room) {}
    int64_t ReadAt(uint64_t offset, std::span<uint8_t> out) override {
        if (offset >= bytes_->size()) return 0;
        const size_t n = std::min(out.size(), bytes_->size() - offset);
        std::copy_n(bytes_->begin() + static_cast<ptrdiff_t>(offset), n, out.begin());
        return static_cast<int64_t>(n);
    }
    DeviceWrite WriteAt(uint64_t offset, std::span<const uint8_t> in) override {
        if (failing_ > 0 && --failing_ == 0) return {0, EIO};
        if (offset >= room_) return {0, ENOSPC};
        const size_t n = std::min<size_t>(in.size(), room_ - offset);
        if (bytes_->size() < offset + n) bytes_->resize(offset + n);
        std::copy_n(in.begin(), n, bytes_->begin() + static_cast<ptrdiff_t>(offset));
        return {n, n == in.size() ? 0 : ENOSPC};
    }
    int truncate(uint64_t size) override {
        bytes_->resize(size);
        return 0;
    }
    uint64_t size() override { return bytes_->size(); }
    int sync() override { return sync_; }
    void SetRoom(size_t room) { room_ = room; }
    // The n-th write from now fails once, without a byte.
    void FailWrite(int n) { failing_ = n; }
    void SetSync(int error) { sync_ = error; }

  private:
    std::shared_ptr<Bytes> bytes_;
    size_t room_;
    int failing_ = 0, sync_ = 0;
};

struct TestEvent {
    mt_Time time;
    uint16_t type, subtype;
    Bytes extra;
};

inline Bytes words(std::initializer_list<uint32_t> values, bool big_endian = true) {
    Bytes bytes;
    for (const uint32_t value : values)
        for (int i = 0; i < 4; ++i)
            bytes.push_back(static_cast<uint8_t>(value >> (big_endian ? 24 - 8 * i : 8 * i)));
    return bytes;
}

// A user event.
inline TestEvent user(mt_Time time, uint32_t object, uint16_t subtype) {
    return {time, mt_UserEvent, subtype, words({object})};
}
inline TestEvent status_change(mt_Time time, uint32_t object, uint16_t status) {
    return {time, mt_StatusChange, status, words({object})};
}
inline TestEvent switch_to(mt_Time time, uint32_t object) {
    return {time, mt_TaskChange, 0, words({object})};
}

// Extra data of a Refresh, with a prefix when it is not null.
inline Bytes refresh_extra(uint32_t id, uint32_t priority, const std::string& name,
                           const char* prefix = nullptr) {
    Bytes extra = words({id, priority});
    std::string text = name;
    text.resize(31);
    if (prefix) text += prefix, text.resize(62);
    extra.insert(extra.end(), text.begin(), text.end());
    return extra;
}

// A task's name.
inline TestEvent name_event(mt_Time time, uint32_t id, const std::string& name) {
    return {time, mt_Refresh, 0, refresh_extra(id, 5, name)};
}

// Events of every type over a few dozen tasks; times never go back and often stand still.
inline std::vector<TestEvent> random_events(unsigned seed, size_t count) {
    std::mt19937 random(seed);
    const auto below = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };
    std::vector<TestEvent> events;
    mt_Time time = 0;
    for (size_t i = 0; i < count; ++i) {
        if (below(3) == 0) time += below(50) == 0 ? 1000 : below(9);
        const uint32_t id = (below(20) << 10) | below(3);
        const auto type = static_cast<uint16_t>(1 + below(7));
        const auto subtype = static_cast<uint16_t>(below(11));
        Bytes extra = type == mt_Refresh ? refresh_extra(id, below(99), "task" + std::to_string(below(5)),
                                                         below(2) ? "group" : nullptr)
                                         : words({id, below(40), below(1u << 31)});
        if (type != mt_Refresh) extra.resize(4 + below(9));
        events.push_back({time, type, subtype, extra});
    }
    return events;
}
