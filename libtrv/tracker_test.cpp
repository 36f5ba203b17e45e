#include <gtest/gtest.h>

#include "libtrv/event.h"
#include "libtrv/task_tracker.h"
#include "libtrv/test_store.h"

namespace {

// Appends events and gives the changes of the last one as text: "+id", "id@offset=bytes".
struct Tracked {
    std::shared_ptr<Bytes> events = std::make_shared<Bytes>();
    std::unique_ptr<StoreWriter> writer = StoreWriter::OnDevices(
        std::make_unique<MemoryDevice>(events), std::make_unique<MemoryDevice>(std::make_shared<Bytes>()),
        {.bigEndianTarget = true}, TaskTracker);
    std::string append(uint16_t type, uint16_t subtype, const Bytes& extra) {
        const size_t before = events->size();
        EXPECT_TRUE(writer->AppendEvent(0, type, subtype, extra));
        // The event's changes lie between its extra data and the end mark and terminator.
        const size_t checkpoint = writer->EventsWritten() == 1 ? 10 : 0;
        const size_t from = before - 1 + checkpoint + 17 + extra.size();
        std::string text;
        StateChange change;
        const std::span<const uint8_t> all(*events);
        for (ChangeList list(all.subspan(from, events->size() - 2 - from)); list.next(change);) {
            char head[40];
            std::snprintf(head, sizeof head,
                          change.kind == mt_ChangeCreate ? "+%x" : "%x@%d=", change.objectId, change.offset);
            text += head;
            if (change.kind == mt_ChangeModify)
                for (const uint8_t byte : change.bytes)
                    std::snprintf(head, sizeof head, "%02x", byte), text += head;
            text += ' ';
        }
        return text;
    }
    int status(uint32_t id) {
        const uint32_t at = writer->state().find(0, id);
        return at == StateTable::npos ? -1 : load_be16(writer->state().BlockAt(at));
    }
};

}  // namespace

TEST(TaskTracker, ContextSwitches) {
    Tracked t;
    EXPECT_EQ(t.append(mt_TaskChange, 0, words({0x401})), "+401 401@0=0000 ");  // a new task is left ready
    EXPECT_EQ(t.append(mt_TaskChange, 0, words({0x401})), "401@0=0003 ");
    EXPECT_EQ(t.append(mt_TaskChange, 0, words({0x401})), "401@0=0000 401@0=0003 ");
    EXPECT_EQ(t.append(mt_TaskChange, 0, words({2})), "+2 2@0=0000 ");  // another group
    EXPECT_EQ(t.append(mt_KernelCall, 0, words({1})), "+1 ");           // created running: two run now
    EXPECT_EQ(t.append(mt_Interrupt, 0, words({1})), "");
    EXPECT_EQ(t.append(mt_Timer, 0, words({0x801})), "+801 ");
    EXPECT_EQ(t.append(mt_TaskChange, 0, words({0x801})), "401@0=0000 1@0=0000 801@0=0003 801@2=01 ");
    EXPECT_EQ(t.append(mt_StatusChange, 8, words({0x401})), "401@0=000a 1@0=000a 801@0=000a ");
    EXPECT_EQ(t.status(2), 0);
}

TEST(TaskTracker, StatusAndPriority) {
    Tracked t;
    EXPECT_EQ(t.append(mt_UserEvent, 0, words({5})), "+5 ");
    EXPECT_EQ(t.append(mt_StatusChange, 2, words({5})), "5@0=0002 5@2=01 ");
    EXPECT_EQ(t.append(mt_StatusChange, 2, words({5, 9})), "5@4=00000009 5@8=01 ");
    EXPECT_EQ(t.append(mt_StatusChange, 2, words({5, 9})), "");
    EXPECT_EQ(t.append(mt_StatusChange, 7, words({6, 1})), "+6 ");
    EXPECT_EQ(t.status(6), 7);
}

TEST(TaskTracker, RefreshComparesNamesByTheNewOnesLength) {
    Tracked t;
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 1, "abc", "p")), "+5 ");
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 1, "abc", "p")), "");
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 1, "ab", "p")), "");  // a beginning of the old name
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 1, "abd", "p")), "5@9=61626400 5@41=7000 ");
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 1, "abd", "q")), "5@41=7100 ");
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 2, "abd")), "5@4=00000002 ");
    t.append(mt_Refresh, 0, refresh_extra(5, 2, "\xE4"));
    EXPECT_EQ(t.append(mt_Refresh, 0, refresh_extra(5, 2, "\xE4")), "5@9=e400 ");  // above 127 always differs
    const std::string full(31, 'x');
    const std::string changes = t.append(mt_Refresh, 0, refresh_extra(5, 2, full));
    EXPECT_EQ(changes.substr(changes.size() - 11), "00 5@40=01 ");
    EXPECT_EQ(t.writer->state().BlockAt(0)[mt_TaskNameValid], 1);
    EXPECT_EQ(t.append(mt_Refresh, 3, words({7, 4})), "+7 ");  // cut short: an empty name
}
