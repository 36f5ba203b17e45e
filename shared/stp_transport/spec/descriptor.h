// Descriptors: which fields a message has, in the text form that tables and peers carry. docs/formats.md has
// the grammar.
//
//     "dataFile:%str% list:{count:%u4% data:*(count)[%str%] } | win:%num% "
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/result.h"

enum class STPType {
    Number,    // %num%: 32 bits
    Number64,  // %num8%
    U1,        // %u1%, and so on: unsigned, by bytes
    U2,
    U4,
    U8,
    F4,  // %f4%, %f8%: floating point, by bytes
    F8,
    String,    // %str%
    FileName,  // %fn%: a string in the form of the host that sends it
    Word,      // %word%: a bare word without blanks
    Record,    // {...}
    Array,     // [...], *(count)[...] or %dar%(count, ...)
};

struct STPField;

struct STPDescribed {
    STPType type = STPType::Number;
    std::vector<STPField> fields;       // of a record
    std::vector<STPDescribed> element;  // of an array: one
    // Of an array: the field that holds the number of its elements; empty for [...], which has none.
    std::string count;
    // How an array with a count is written in the descriptor: as %dar%(count, ...).
    bool dynamic = false;

    bool operator==(const STPDescribed&) const;
};

struct STPField {
    std::string name;
    STPDescribed type;

    bool operator==(const STPField&) const;
};

struct STPMessageDescriptor {
    std::vector<STPField> request;
    std::vector<STPField> reply;  // what stands behind the "|"

    bool operator==(const STPMessageDescriptor&) const = default;
};

// The failure says what is wrong and at which character. Names are letters, digits and "_"; each stands once
// in its record; a count names an earlier number of the same record.
Result descriptor_Parse(std::string_view text, STPMessageDescriptor& descriptor);
// As tables have it; parses to the same.
std::string descriptor_Text(const STPMessageDescriptor& descriptor);
// Deeper records and arrays are refused.
inline constexpr int descriptorMostDepth = 16;
