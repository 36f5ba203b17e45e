// Reads the events of a store in order, holding what it reads against the form of a block and against the
// index. What does not fit is noted as damage of the store, and reading goes on at the next block that the
// index leads to.
//
// A block is a list of objects used, a table of states, and as many events as the checkpoint interval. A
// reader has a position and a buffer of its own: several read one store side by side.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "libtrv/damage.h"
#include "libtrv/event.h"
#include "libtrv/gfile.h"

struct TraceStore;

class BlockReader {
  public:
    // The store must outlive the reader.
    explicit BlockReader(TraceStore& store);
    ~BlockReader();

    // What stands where a block is to begin.
    enum class Head { Sound, Wrong, Unreadable };
    // Goes to the block's first packet and takes its head. The state, when given, becomes the block's table;
    // it is the caller's to bring forward by the events, and must outlive the reader. Not Sound: what is
    // wrong is noted, and the reader stands nowhere.
    Head start(uint32_t block, StateTable* state);
    // Goes to the block, or when its head is not sound to the nearest one before from which the events lead
    // there; when there is none, to the next one behind, which makes a gap. False when no block can be read.
    bool StartNear(uint32_t block, StateTable* state);

    // The next event; its spans last until the next call. False behind the last one: of a sound store, a
    // later call gives what was appended since.
    bool next(EventRecord& event) {
        if (special_) [[unlikely]] {
            if (held_) return GiveHeld(event);
            if (ended_) return false;
            gap_.reset();
            special_ = false;
        }
        for (;;) {
            if (room_ > 0 && file_->fill(1) && *file_->here() == mt_PacketEvent) [[likely]] {
                if (TakeEvent(event)) return true;
            } else if (!TakeOther()) {
                return false;
            }
        }
    }
    // The event that next gave last is given again by the next call.
    void hold(const EventRecord& event);
    // Reads on to the end of the block, so that damage within it is found.
    void FinishBlock();

    // The stretch that could not be read just ahead of the event last given, or behind the last one; null
    // when there is none.
    const mt_Gap* gap() const { return gap_ ? &*gap_ : nullptr; }
    // Gaps met since the start.
    uint32_t gaps() const { return gaps_; }
    // Behind a gap: the state becomes the one just ahead of the event last given, which is the table of its
    // block. Until then it is the last one known ahead of the gap.
    void TakeStateBehindGap();

    // Damage, and nothing behind it can be read: the reader gives no more, also when the store grows.
    bool IsBroken() const { return ended_; }

    uint32_t FirstBlock() const { return firstBlock_; }  // where the start found something to read
    uint32_t block() const { return block_; }
    bool BlockIsDone() const { return room_ == 0; }
    // Blocks entered since the reader was made, so that a caller learns of a new one.
    uint64_t heads() const { return heads_; }
    uint64_t HeadOffset() const { return headOffset_; }
    // Of the event last given; ahead of a block's first event, of the last one of the block before.
    uint32_t sequence() const { return sequence_; }
    mt_Time LastTime() const { return last_; }
    // Offset of the packet that next would look at, or of the event given last while it is held.
    uint64_t position() const { return file_->tell() - (held_ ? lastSize_ : 0); }
    // From now on every table that is come to is held against the state, which the caller keeps up.
    void CheckTables() { checksTables_ = true; }
    // Unknown packet types are reported as met by this query; null: not reported.
    void NameQuery(const char* query) { query_ = query; }

  private:
    struct Problem {
        const char* what = nullptr;  // null: none
        bool unreadable = false;
        mt_DamageKind kind = mt_DamageKind::Lost;
        int error = 0;  // of the system
        explicit operator bool() const { return what != nullptr; }
    };

    bool GiveHeld(EventRecord& event);
    bool TakeEvent(EventRecord& event);
    bool CompleteEvent(EventRecord& event, size_t& size);
    bool TakeOther();
    void TakeBoundary();
    Problem TakeCheckedHead(uint32_t block);
    bool PlaceBoundary(uint32_t next, uint64_t at, mt_Time time);
    bool TakeEnd();
    void CrossLimit();
    void TellTime(mt_Time time);

    Problem TakeHead(uint32_t block, StateTable* table);
    Problem ShortOf(const char* what);
    Problem TakeObjects(uint64_t bound, bool keep);
    Problem SkipTable(uint32_t block, uint64_t bound);
    Problem ReadTable(uint64_t bound, StateTable& table);
    Problem CheckKeys(const StateTable& table);
    bool JumpOverTable(uint32_t count, uint32_t block, uint64_t bound);
    void enter(uint32_t block, uint64_t offset);
    void TakeLimits();

    void lose(Problem problem, uint32_t firstLost);
    bool FindReadable(uint32_t from, uint64_t behind);
    void NoteLost(const Problem& problem, uint64_t at, uint32_t firstLost, uint32_t sequence, bool found);
    void note(mt_DamageKind kind, uint32_t block, uint64_t offset, std::string what, std::string cost = {});

    TraceStore& store_;
    std::unique_ptr<GFile> file_;
    StateTable* state_ = nullptr;
    std::unique_ptr<StateTable> pendingState_;  // of the block behind a gap, until its first event is given
    std::vector<uint8_t> keys_;                 // of the list of objects used, for the check of a table

    uint32_t firstBlock_ = 0;
    uint32_t block_ = 0;
    uint32_t room_ = 0;  // events that may still come in the block
    uint32_t sequence_ = 0;
    mt_Time last_ = 0;         // of the event last given
    mt_Time ceiling_ = 0;      // first time of the next block that is known
    uint64_t limit_ = 0;       // its offset
    uint32_t limitBlock_ = 0;  // its number; the number of blocks when there is none
    uint64_t retried_ = 0;     // where reading was tried anew already
    uint64_t heads_ = 0, headOffset_ = 0;

    bool special_ = false;  // something is to be done ahead of the next event
    bool held_ = false;
    bool ended_ = false;  // nothing behind the damage can be read
    EventRecord heldEvent_;
    size_t lastSize_ = 0;  // bytes of the event last given, its type byte included
    std::optional<mt_Gap> gap_;
    uint32_t gaps_ = 0;
    const char* query_ = nullptr;
    bool checksTables_ = false;
};
