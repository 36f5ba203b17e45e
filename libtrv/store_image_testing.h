// Stores in memory for tests: the three files as bytes, with any checkpoint interval, and devices that fail.
#pragma once

#include <cerrno>
#include <map>
#include <set>

#include "libtrv/store_files.h"
#include "libtrv/test_store.h"
#include "libtrv/trace_store.h"

struct StoreImage {
    Bytes version, events, index;
    std::vector<uint64_t> eventEnds;  // offset behind each event's packet in the stream
};

// A device that fails to read some of its bytes.
class FailingDevice : public MemoryDevice {
  public:
    FailingDevice(std::shared_ptr<Bytes> bytes, uint64_t from, uint64_t to)
        : MemoryDevice(std::move(bytes)), from_(from), to_(to) {}
    int64_t ReadAt(uint64_t offset, std::span<uint8_t> out) override {
        if (offset < to_ && offset + out.size() > from_) {
            errno = EIO;
            return -1;
        }
        return MemoryDevice::ReadAt(offset, out);
    }

  private:
    uint64_t from_, to_;
};

inline TraceStorePtr open_image(const StoreImage& image, Result* trouble = nullptr) {
    const auto device = [](const Bytes& bytes) {
        return std::make_unique<MemoryDevice>(std::make_shared<Bytes>(bytes));
    };
    return mt_OpenOnDevices(device(image.version), device(image.events), device(image.index), "run", trouble);
}

// Puts packets together as the format has them, by nothing that the store's own writer uses.
class ImageBuilder {
  public:
    ImageBuilder(uint32_t interval, Bytes version) : interval_(interval) {
        image_.version = std::move(version);
        for (int i = 0; i < 4; ++i)
            image_.version[image_.version.size() - 4 + static_cast<size_t>(i)] =
                static_cast<uint8_t>(interval >> (24 - 8 * i));
        GFileHeader header;
        header.kind = mt_KindEvents;
        image_.events = gf_EncodeHeader(header);
        header.kind = mt_KindIndex;
        image_.index = gf_EncodeHeader(header);
    }
    void add(const EventRecord& event) {
        if (image_.eventEnds.size() % interval_ == 0) BeginBlock(event.time);
        put(image_.events, 1, mt_PacketEvent);
        put(image_.events, 8, event.time);
        put(image_.events, 4, event.extra.size());
        put(image_.events, 2, event.type);
        put(image_.events, 2, event.subtype);
        image_.events.insert(image_.events.end(), event.extra.begin(), event.extra.end());
        const auto changes = event.changes.bytes();
        image_.events.insert(image_.events.end(), changes.begin(), changes.end());
        put(image_.events, 1, mt_ChangeEnd);
        image_.eventEnds.push_back(image_.events.size());
        StateChange change;
        for (ChangeList list = event.changes; list.next(change);)
            if (change.kind == mt_ChangeCreate) used_.insert({change.objectType, change.objectId});
        mt_ApplyEventToState(state_, event);
    }
    StoreImage finish() {
        put(image_.events, 1, mt_PacketEnd);
        put(image_.index, 1, mt_PacketEnd);
        return std::move(image_);
    }

  private:
    static void put(Bytes& out, int bytes, uint64_t value) {
        while (bytes-- > 0) out.push_back(static_cast<uint8_t>(value >> (8 * bytes)));
    }
    void BeginBlock(mt_Time time) {
        put(image_.index, 1, 1);
        put(image_.index, 8, time);
        put(image_.index, 4, image_.events.size());
        put(image_.events, 1, mt_PacketObjectsUsed);
        put(image_.events, 4, used_.size());
        for (const auto& [type, id] : used_) {
            put(image_.events, 2, type);
            put(image_.events, 4, id);
        }
        put(image_.events, 1, mt_PacketState);
        put(image_.events, 4, state_.size());
        used_.clear();
        for (const uint32_t position : state_.sorted()) {
            const ObjectEntry entry = state_.entry(position);
            put(image_.events, 2, entry.objectType);
            put(image_.events, 4, entry.objectId);
            put(image_.events, 4, entry.block.size());
            image_.events.insert(image_.events.end(), entry.block.begin(), entry.block.end());
            used_.insert({entry.objectType, entry.objectId});
        }
    }

    uint32_t interval_;
    StoreImage image_;
    StateTable state_;
    std::set<std::pair<uint16_t, uint32_t>> used_;
};

inline StoreFacts image_facts() {
    return {1000, "KORVANTIS", true};
}

// The events with the changes that the task tracker gives them.
inline EventList tracked(const std::vector<TestEvent>& events) {
    const auto stream = std::make_shared<Bytes>(), index = std::make_shared<Bytes>();
    {
        const auto writer =
            StoreWriter::OnDevices(std::make_unique<MemoryDevice>(stream),
                                   std::make_unique<MemoryDevice>(index), image_facts(), TaskTracker);
        for (const TestEvent& event : events)
            if (!writer->AppendEvent(event.time, event.type, event.subtype, event.extra)) std::abort();
    }
    const TraceStorePtr store = open_image({store_EncodeVersionFile(image_facts()), *stream, *index, {}});
    EventList list;
    StateTable state;
    mt_GetEventsInTimeRange(*store, 0, INT64_MAX, list, state);
    return list;
}

inline StoreImage image_of(const EventList& events, uint32_t interval) {
    ImageBuilder builder(interval, store_EncodeVersionFile(image_facts()));
    for (const EventRecord& event : events) builder.add(event);
    return builder.finish();
}
