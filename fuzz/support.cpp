#include "fuzz/support.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "chronoweave/import/core/core_file.h"
#include "chronoweave/import/import_session.h"
#include "chronoweave/import/raw/raw_format.h"
#include "chronoweave/import/raw/raw_header.h"
#include "libtrv/store_writer.h"
#include "libtrv/task_tracker.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/report.h"

void fuzz_Silence() {
    static const bool done = [] {
        gen_set_report_sink([](int, const std::string&) {});
        gen_set_console_sink([](std::string_view) {});
#ifdef __GLIBC__
        stderr = std::fopen("/dev/null", "w");
#endif
        return true;
    }();
    static_cast<void>(done);
}

void fuzz_Check(bool kept) {
    if (!kept) std::abort();
}

namespace {

std::unique_ptr<FileDevice> device_of(std::span<const uint8_t> bytes) {
    return std::make_unique<MemoryDevice>(std::make_shared<Bytes>(bytes.begin(), bytes.end()));
}

// Walks to the end. Of a sound store the times never go back and the numbers are one after the other.
uint32_t count_walk(EventWalk& walk, TraceStore& store, StateTable* state) {
    EventRecord event;
    uint32_t events = 0;
    while (mt_NextEvent(walk, event)) {
        uint16_t type = 0;
        uint32_t id = 0;
        fuzz_Check(mt_GetEventObject(store, event, type, id) == (event.extra.size() >= 4));
        if (state) mt_ApplyEventToState(*state, event);
        ++events;
    }
    fuzz_Check(!mt_NextEvent(walk, event));
    return events;
}

void read_attributes(const TraceStore& store, const StateTable& state) {
    char buffer[64];
    bool delivered = false;
    for (uint32_t position = 0; position < state.size(); ++position) {
        const ObjectEntry entry = state.entry(position);
        fuzz_Check(state.find(entry.objectType, entry.objectId) == position);
        for (const uint32_t attribute : {mt_AttributeStatus, mt_AttributePriority, mt_AttributeName})
            for (const uint32_t room : {0u, 3u, 64u})
                fuzz_Check(mt_GetObjectAttribute(store, state, entry.objectType, entry.objectId, attribute,
                                                 buffer, room, '/', delivered));
    }
}

void query_range(TraceStore& store, mt_Time t0, mt_Time t1) {
    StateTable state, listed;
    EventWalk walk;
    const bool started = mt_StartWalkInTimeRange(store, t0, t1, &state, walk);
    const uint32_t walked = started ? count_walk(walk, store, nullptr) : 0;
    EventList list;
    fuzz_Check(mt_GetEventsInTimeRange(store, t0, t1, list, listed) == started);
    fuzz_Check(list.size() == walked && listed.size() == state.size());
    read_attributes(store, state);
    const auto objects = mt_GetObjectStuffUsedInTimeRange(store, t0, t1, std::nullopt);
    for (size_t i = 1; i < objects.size(); ++i) fuzz_Check(objects[i - 1] < objects[i]);
    static_cast<void>(mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, t0, t1));
}

}  // namespace

TraceStorePtr fuzz_OpenStore(std::span<const uint8_t> version, std::span<const uint8_t> events,
                             std::span<const uint8_t> index) {
    return mt_OpenOnDevices(device_of(version), device_of(events), device_of(index), "fuzz");
}

void fuzz_QueryStore(TraceStore& store) {
    const mt_Range range = mt_GetTimeRange(store);
    const uint32_t count = mt_GetEventCount(store);
    static_cast<void>(mt_HasNewData(store));
    mt_RefreshIndex(store);
    const mt_Time middle = range.first + (range.end - range.first) / 2;
    query_range(store, 0, UINT64_MAX);
    query_range(store, range.first, range.end);
    query_range(store, middle, range.end);
    query_range(store, middle, range.first);
    for (const uint32_t sequence : {0u, 1u, 99u, 100u, count / 2, count, count + 1, UINT32_MAX}) {
        StateTable state;
        EventWalk walk;
        if (mt_StartWalkBySequence(store, sequence, 130, &state, walk)) count_walk(walk, store, &state);
        EventList list;
        mt_GetEventsBySequence(store, sequence, 3, list, state);
        fuzz_Check(list.size() <= 3);
    }
}

namespace {

class Import {
  public:
    explicit Import(std::span<const uint8_t> file) : file_(file.begin(), file.end()) {}

    void run() {
        std::unique_ptr<EventSource> source;
        const Result opened = raw_BeginsLikeCore(file_)
                                  ? CoreSource::open(file_, "fuzz.core", source)
                                  : raw_Open(source_FromBytes(file_), "fuzz.trr", source);
        if (!opened.ok()) return;
        const Result made = session_.open(
            std::move(source), 0,
            [this](const StoreFacts& facts, mt_EventCallback tracker, std::unique_ptr<StoreWriter>& writer) {
                version_ = store_EncodeVersionFile(facts);
                writer = StoreWriter::OnDevices(std::make_unique<MemoryDevice>(events_),
                                                std::make_unique<MemoryDevice>(index_), facts, tracker);
                return Result();
            });
        fuzz_Check(made.ok());
        session_.read(0);
        readBack();
    }

  private:
    void readBack() {
        const auto written = session_.writer()->state().image();
        const Bytes last(written.begin(), written.end());
        fuzz_Check(session_.close().ok());
        const TraceStorePtr store = fuzz_OpenStore(version_, *events_, *index_);
        fuzz_Check(store != nullptr);
        fuzz_Check(session_.counts().refused == 0 && mt_GetEventCount(*store) == session_.counts().events);
        StateTable state;
        EventWalk walk;
        if (mt_StartWalkAtEvent(*store, 1, 0, &state, walk))
            fuzz_Check(count_walk(walk, *store, &state) == session_.counts().events);
        fuzz_Check(Bytes(state.image().begin(), state.image().end()) == last);
        fuzz_QueryStore(*store);
    }

    std::vector<uint8_t> file_, version_;
    std::shared_ptr<Bytes> events_ = std::make_shared<Bytes>(), index_ = std::make_shared<Bytes>();
    ImportSession session_;
};

}  // namespace

void fuzz_Import(std::span<const uint8_t> file) {
    Import(file).run();
}
