// Fields of every type, for the entry points that read bodies.
#pragma once

#include <string>
#include <vector>

#include "fuzz/support.h"
#include "shared/stp_transport/spec/body_fields.h"

struct FuzzInner {
    uint32_t a = 0;
    std::string b;
    std::vector<uint16_t> c;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::U4>("a", 1, self.a);
        v.template field<STPType::String>("b", 2, self.b);
        v.template array<STPType::U2>("c", 3, self.c);
    }
};

struct FuzzFields {
    uint8_t u1 = 0;
    uint64_t u8 = 0;
    double f8 = 0;
    std::string text, file;
    FuzzInner record;
    std::vector<uint32_t> numbers;
    std::vector<std::string> texts;
    std::vector<FuzzInner> records;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::U1>("u1", 1, self.u1);
        v.template field<STPType::U8>("u8", 2, self.u8);
        v.template field<STPType::F8>("f8", 3, self.f8);
        v.template field<STPType::String>("s", 4, self.text);
        v.template field<STPType::FileName>("f", 5, self.file);
        v.template field<STPType::Record>("r", 6, self.record);
        v.template count<STPType::U4>("n", 7, self.numbers);
        v.template array<STPType::U4>("l", 8, self.numbers);
        v.template array<STPType::String>("t", 9, self.texts);
        v.template array<STPType::Record>("m", 10, self.records);
    }
};

// What was read is written and read again to the same, in either form.
inline void fuzz_Bodies(STPBodyForm form, std::string_view body) {
    const auto fields = stp_ReadBody<FuzzFields>(form, body);
    for (const STPBodyForm other : {STPBodyForm::Text, STPBodyForm::Binary}) {
        const std::string written = stp_WriteBody(other, "", fields);
        const auto again = stp_ReadBody<FuzzFields>(other, written);
        fuzz_Check(stp_WriteBody(other, "", again) == written);
    }
}
