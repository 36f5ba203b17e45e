// The three files of a store as they are made: what the .trv says, and the order in which they come to stand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libtrv/committed_file.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/result.h"

// What a store says of itself.
struct StoreFacts {
    uint32_t ticksPerSecond = 0;
    std::string osName = {};
    bool bigEndianTarget = false;
    uint32_t checkpointInterval = mt_CheckpointInterval;  // events a block; 0 is taken as 1
};

// The bytes of a .trv file.
std::vector<uint8_t> store_EncodeVersionFile(const StoreFacts& facts);

// Deletes files of the three names that exist, makes the .trs and .tri with their terminators, and moves the
// complete .trv into place last, so that a store which has one can be opened.
Result store_CreateFiles(const std::string& base, const StoreFacts& facts, CommittedFile& events,
                         CommittedFile& index);
