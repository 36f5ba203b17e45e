#include "libtrv/packets.h"

#include "shared/libcxxutil/report.h"

bool mt_ReadEvent(GFile& file, EventRecord& event) {
    for (;;) {
        size_t size = 0;
        switch (mt_ParseEvent(file.here(), file.buffered(), event, size)) {
            case mt_Parse::UnknownChange:
                gen_error("Unrecognized StateChange type\n");
                [[fallthrough]];
            case mt_Parse::Implausible:
                event.changes = {};
                [[fallthrough]];
            case mt_Parse::Whole:
                file.step(size);
                return true;
            case mt_Parse::NeedMore:
                if (!file.fill(size)) return false;
        }
    }
}

bool mt_ReadStateTable(GFile& file, StateTable& table) {
    table.clear();
    const uint32_t count = file.u32();
    for (uint32_t i = 0; i < count; ++i) {
        if (!file.fill(mt_EntryHead)) return false;
        const size_t length = load_be32(file.here() + 6);
        if (!file.fill(mt_EntryHead + length)) return false;
        const uint8_t* entry = file.step(mt_EntryHead + length);
        table.create(load_be16(entry), load_be32(entry + 2), {entry + mt_EntryHead, length});
    }
    return true;
}

void mt_SkipObjectsUsed(GFile& file) {
    file.skip(uint64_t{file.u32()} * mt_KeySize);
}

bool mt_IsPlausibleBlock(uint16_t objectType, std::span<const uint8_t> block) {
    if (objectType != mt_ObjectTask) return true;
    if (block.size() != mt_TaskBlockSize) return block.size() < mt_TaskBlockSize;
    for (const uint32_t flag :
         {mt_TaskStatusValid, mt_TaskPriorityValid, mt_TaskNameValid, mt_TaskPrefixValid})
        if (block[flag] > 1) return false;
    return block[mt_TaskStatusValid + 1] == 0 && block[73] == 0 && block[74] == 0 && block[75] == 0;
}
