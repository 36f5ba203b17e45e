#include "chronoweave/import/merge/merge_files.h"

#include <map>
#include <set>

#include "chronoweave/import/merge/merge_testing.h"
#include "libtrv/gfile.h"
#include "libtrv/state_table.h"

namespace {

namespace fs = std::filesystem;

class MergeFilesTest : public ImportTest {
  protected:
    Merged merge(const std::vector<std::string>& names, MergeAlign align = MergeAlign::Natural) const {
        MergeRequest request{{}, path("out.trr"), align, {}};
        for (const std::string& name : names) request.sources.push_back(path(name));
        return merge_Files(request);
    }
    Bytes content(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string EventsOf(const std::string& name) const {
        const OpenedSource opened = import_OpenSource(path(name), {});
        return opened.store ? events(*opened.store) : opened.trouble.text();
    }
    // Names in the folder, sorted.
    std::string listing() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        std::string text;
        for (const std::string& name : names) text += name + ' ';
        return text;
    }
    // The sentences with the folder left out.
    std::string LinesOf(const std::vector<std::string>& lines) const {
        std::string text;
        for (const std::string& line : lines) text += line + '\n';
        for (size_t at; (at = text.find(folder_ + '/')) != std::string::npos;)
            text.erase(at, folder_.size() + 1);
        return text;
    }
    std::string WordsOf(const Merged& merged) const { return LinesOf({merged.result.text()}); }
};

Bytes stream(uint32_t id, const std::vector<uint64_t>& times) {
    Bytes bytes = short_header(false);
    for (const uint64_t time : times) put_record(bytes, raw_event(4, 1, time, id, false));
    return bytes;
}

// A log image of one task, whose ring has one event.
Bytes log_image(uint64_t time) {
    constexpr uint32_t ring = 24 + 44 + 4;
    Bytes bytes = long_header(false, 2, 1), event;
    put_record(event, raw_event(4, 2, time, 0x402, false));
    put16(bytes, 1, false);
    bytes.resize(bytes.size() + 6);
    for (const uint32_t word : {0u, 0u, ring + static_cast<uint32_t>(event.size()), ring})
        put32(bytes, word, false);
    append(bytes, task_entry(0x402, 5, "worker", true, false));
    put32(bytes, ring, false);
    append(bytes, event);
    return bytes;
}

// A core file of one task, with one event, longer than a stream's can be.
Bytes core_file(uint64_t time, bool isTolmund = false) {
    Bytes bytes, event;
    put_record(event, raw_event(4, 3, time, 0x403, true, 90));
    put16(bytes, isTolmund ? 2 : 4, true);
    put16(bytes, isTolmund ? 0 : 1, true);
    if (isTolmund) {
        for (const uint32_t word : {0u, 0u, 0u, 1000u}) put32(bytes, word, true);
        return bytes;
    }
    for (const uint32_t word : {static_cast<uint32_t>(event.size() + 1), 2u, 0x100u, 0u, 1u, 1000u})
        put32(bytes, word, true);
    append(bytes, task_entry(0x403, 6, "cored", true, true));
    append(bytes, event);
    bytes.push_back(0);
    put32(bytes, 0x100, true);
    put32(bytes, 0, true);
    return bytes;
}

TEST_F(MergeFilesTest, takesEverySourceWithCountsAndWords) {
    Bytes junk = stream(1, {10, 30}), cut = stream(2, {20, 25, 15});
    append(junk, {0, 0x60});
    put_record(junk, Bytes(9, 1));
    append(cut, {30, 1, 2});
    write("junk.trr", junk);
    write("cut.trr", cut);
    write("empty.trr", {});
    write("bare.trr", short_header(true));
    write("image.trr", log_image(22));
    write("core.core", core_file(24));
    const Merged merged = merge({"junk.trr", "cut.trr", "empty.trr", "bare.trr", "image.trr", "core.core"});
    EXPECT_EQ(WordsOf(merged), "\n");
    EXPECT_EQ(EventsOf("out.trr"),
              "0:6/10:402 0:6/10:403 0:4/1:1 10:4/1:2 12:4/2:402 14:4/3:403 15:4/1:2 15:4/1:2 20:4/1:1");
    EXPECT_EQ(LinesOf(merged.damage),
              "empty.trr: the file is empty\n"
              "junk.trr: 1 events were dropped for their lengths\n"
              "junk.trr: 2 bytes are no part of any event\n"
              "cut.trr: 3 bytes of a cut record are left at offset 0x3d\n"
              "core.core: the extra data of 1 events was cut to 70 bytes\n");
    EXPECT_EQ(LinesOf(merged.notes),
              "cut.trr: 1 times went back and were set to the newest before them\n"
              "core.core: the data of 1 events stays in the byte order of the source, as its meaning isn't "
              "known\n");
    const MergeCounts& counts = merged.counts;
    EXPECT_EQ(
        (std::vector<uint64_t>{counts.sources, counts.events, counts.dropped, counts.badBytes, counts.unread,
                               counts.shortened, counts.back, counts.far, counts.unturned}),
        (std::vector<uint64_t>{6, 9, 1, 2, 3, 1, 1, 0, 1}));
}

TEST_F(MergeFilesTest, aRefusalLeavesWhatThereWas) {
    write("a.trr", stream(1, {10}));
    write("b.trr", stream(2, {10}));
    write("bad.trr", {1, 2, 3});
    write("header.trr", {9, 9, 9});
    write("other.trr", short_header(false, 7));
    write("empty.trr", {});
    write("tolmund.core", core_file(1, true));
    write("notes.txt", {1});
    fs::create_symlink("a.trr", path("link.trr"));
    fs::create_hard_link(path("a.trr"), path("hard.trr"));
    fs::create_directory(path("folder.trr"));
    const struct {
        std::vector<std::string> sources;
        const char* output;
        const char* words;
    } cases[] = {
        {{"a.trr", "none.trr"}, "out.trr", "none.trr: Cannot open TRR file.: No such file or directory\n"},
        {{"a.trr", "header.trr"}, "out.trr", "header.trr: Bad format TRR file.\n"},
        {{"a.trr", "other.trr"}, "out.trr", "other.trr: Unsupported OS or Architecture.\n"},
        {{"a.trr", "bad.trr"}, "out.trr", "bad.trr: Bad format TRR file.\n"},
        {{"a.trr", "notes.txt"}, "out.trr", "notes.txt: it is no source of events that can be merged\n"},
        {{"a.trr", "folder.trr"}, "out.trr", "folder.trr: Cannot open TRR file.: Is a directory\n"},
        {{"empty.trr", "empty.trr"}, "out.trr", "all the files are empty\n"},
        {{}, "out.trr", "there is nothing to merge\n"},
        {{"a.trr", "tolmund.core"},
         "out.trr",
         "tolmund.core: events of TOLMUND can't be merged with those of \"a.trr\", which are of KORVANTIS\n"},
        {{"tolmund.core"},
         "out.trr",
         "tolmund.core: events of TOLMUND can't be written as a raw event file\n"},
        {{"b.trr", "a.trr"}, "a.trr", "a.trr: it is one of the files to be merged\n"},
        {{"b.trr", "a.trr"}, "link.trr", "link.trr: it is one of the files to be merged\n"},
        {{"link.trr", "b.trr"}, "hard.trr", "hard.trr: it is one of the files to be merged\n"},
        {{"a.trr", "b.trr"}, "folder.trr", "folder.trr: Is a directory\n"},
        {{"a.trr", "b.trr"}, "no/out.trr", "no/out.trr: No such file or directory\n"},
        {{"a.trr", "b.trr"}, "/dev/null", "/dev/null: it is no regular file\n"},
    };
    write("out.trr", {42});
    const std::string before = listing();
    for (const auto& c : cases) {
        const std::string output = c.output[0] == '/' ? c.output : path(c.output);
        MergeRequest request{{}, output, MergeAlign::Tail, {}};
        for (const std::string& name : c.sources) request.sources.push_back(path(name));
        EXPECT_EQ(WordsOf(merge_Files(request)), c.words);
        EXPECT_EQ(content("out.trr"), Bytes{42});
        EXPECT_EQ(content("a.trr"), stream(1, {10}));
        EXPECT_EQ(listing(), before);
    }
}

TEST_F(MergeFilesTest, theOutputTakesItsPlaceWholeOrNotAtAll) {
    std::vector<uint64_t> times;
    for (uint64_t time = 1; time < 200000; ++time) times.push_back(time);
    write("a.trr", stream(1, times));
    write("b.trr", stream(2, times));
    write("out.trr", {42});
    const std::string before = listing();
    MergeRequest request{{path("a.trr"), path("b.trr")}, path("out.trr"), MergeAlign::Tail, {}};
    for (const int stopAt : {1, 2, 3, 6}) {
        int asked = 0;
        request.progress = [&](double done, double total) {
            EXPECT_LE(done, total);
            return ++asked < stopAt;
        };
        EXPECT_TRUE(merge_Files(request).stopped);
        EXPECT_EQ(asked, stopAt);
        EXPECT_EQ(content("out.trr"), Bytes{42});
        EXPECT_EQ(listing(), before);
    }
    request.progress = {};
    fs::permissions(path("out.trr"), fs::perms(0600));
    EXPECT_TRUE(merge_Files(request).result.ok());
    EXPECT_EQ(content("out.trr").size(), 10 + 2 * (content("a.trr").size() - 10));
    EXPECT_EQ(fs::status(path("out.trr")).permissions(), fs::perms(0600));
    EXPECT_EQ(listing(), before);
}

// A disk that is full behind so many bytes.
class FullDevice : public FileDevice {
  public:
    FullDevice(std::unique_ptr<FileDevice> device, uint64_t room) : device_(std::move(device)), room_(room) {}
    int64_t ReadAt(uint64_t offset, std::span<uint8_t> bytes) override {
        return device_->ReadAt(offset, bytes);
    }
    DeviceWrite WriteAt(uint64_t offset, std::span<const uint8_t> bytes) override {
        if (offset + bytes.size() <= room_) return device_->WriteAt(offset, bytes);
        return {0, ENOSPC};
    }
    int truncate(uint64_t size) override { return device_->truncate(size); }
    uint64_t size() override { return device_->size(); }
    int sync() override { return device_->sync(); }

  private:
    std::unique_ptr<FileDevice> device_;
    uint64_t room_;
};

TEST_F(MergeFilesTest, aFullDiskLeavesNoOutput) {
    write("a.trr", stream(1, std::vector<uint64_t>(150000, 10)));
    for (const uint64_t room : {5u, 600'000u, 2'400'000u}) {
        gf_WrapDevices([&](std::unique_ptr<FileDevice> device, const std::string& name) {
            if (name.find("out.trr") == std::string::npos) return device;
            return std::unique_ptr<FileDevice>(std::make_unique<FullDevice>(std::move(device), room));
        });
        EXPECT_EQ(WordsOf(merge({"a.trr"})), "out.trr: No space left on device\n");
        EXPECT_EQ(listing(), "a.trr ");
    }
    gf_WrapDevices({});
}

// A recording of four processors, and the same split into a file for each.
struct Recording {
    enum class Times { Distinct, Shared };
    Recording(Random& random, Times times, bool big) {
        RawWriter whole(big);
        const EventSourceHeader header{3, big, 3, 1000, raw_OsKorvantis};
        whole.header(header, RawHeaderForm::Short);
        for (RawWriter& part : parts) part.header(header, RawHeaderForm::Short);
        const auto both = [&](uint32_t processor, const auto& put) {
            put(whole);
            put(parts[processor]);
        };
        uint64_t time = 100;
        for (uint32_t task = 0; task < 12; ++task) {
            const RawTask about{IdOf(task), task, "task" + std::to_string(task)};
            const uint64_t at = times == Times::Distinct ? ++time : 0;
            both(task % 4, [&](RawWriter& to) { to.refresh(at, task < 4 ? mt_Running : mt_Pend, about); });
        }
        for (int i = 0; i < 2000; ++i) {
            const auto task = static_cast<uint32_t>(below(random, 16));  // some are never introduced
            const auto type = static_cast<uint16_t>(1 + below(random, 7));
            const auto subtype = static_cast<uint16_t>(below(random, 10));
            time += times == Times::Distinct ? 1 + below(random, 5) : below(random, 2);
            both(task % 4, [&](RawWriter& to) {
                EXPECT_TRUE(to.event(time, type, subtype, {IdOf(task), subtype * 3u}));
            });
        }
        bytes = whole.take();
    }
    static uint32_t IdOf(uint32_t task) { return (task + 1) << 10 | task % 4; }

    Bytes bytes;
    std::vector<RawWriter> parts{4, RawWriter(false)};
};

// What happened within each tick, in any order, and every object's state at its end.
using Tick = std::pair<std::multiset<std::string>, std::map<uint32_t, Bytes>>;
std::map<uint64_t, Tick> ticks_of(TraceStore& store) {
    std::map<uint64_t, Tick> ticks;
    StateTable state;
    EventWalk walk;
    EventRecord event;
    if (!mt_StartWalkAtEvent(store, 1, 0, &state, walk)) return ticks;
    std::map<uint32_t, Bytes> known;
    while (mt_NextEvent(walk, event)) {
        mt_ApplyEventToState(state, event);
        for (const uint32_t position : state.sorted()) {
            const uint8_t* block = state.BlockAt(position);
            known[state.IdAt(position)] = Bytes(block, block + mt_TaskBlockSize);
        }
        Tick& tick = ticks[event.time];
        tick.first.insert(std::to_string(event.type) + '/' + std::to_string(event.subtype) + '/' +
                          std::string(event.extra.begin(), event.extra.end()));
        tick.second = known;
    }
    return ticks;
}

TEST_F(MergeFilesTest, aRecordingThatWasSplitByProcessorIsWholeAgain) {
    Random random(7);
    for (const auto times : {Recording::Times::Distinct, Recording::Times::Shared}) {
        const Recording recording(random, times, false);
        write("whole.trr", recording.bytes);
        std::vector<std::string> names;
        for (size_t i = 0; i < recording.parts.size(); ++i) {
            names.push_back("part" + std::to_string(i) + ".trr");
            const auto bytes = recording.parts[i].bytes();
            write(names.back(), {bytes.begin(), bytes.end()});
        }
        ASSERT_EQ(WordsOf(merge(names)), "\n");
        const OpenedSource whole = import_OpenSource(path("whole.trr"), {});
        const OpenedSource merged = import_OpenSource(path("out.trr"), {});
        ASSERT_TRUE(whole.store && merged.store);
        EXPECT_EQ(whole.counts.events, merged.counts.events);
        EXPECT_EQ(ticks_of(*whole.store), ticks_of(*merged.store));
        if (times == Recording::Times::Shared) continue;
        for (const char* extension : {".trs", ".tri", ".trv"})
            EXPECT_EQ(content(std::string("whole") + extension), content(std::string("out") + extension))
                << extension;
    }
}

}  // namespace
