// Text and binary bodies, and descriptors.
#include <gtest/gtest.h>

#include <cmath>

#include "libtrv/documented_bytes_testing.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/frame.h"
#include "shared/stp_transport/spec/body_fields.h"
#include "shared/stp_transport/spec/descriptor.h"

namespace {

std::string documentedBytes(const std::string& name) {
    const auto bytes = documented_Bytes(name);
    return {bytes.begin(), bytes.end()};
}

// Fields of every type.
struct Inner {
    uint32_t a = 0;
    std::string b;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::U4>("a", 1, self.a);
        v.template field<STPType::String>("b", 2, self.b);
    }
};
struct Everything {
    uint8_t u1 = 0;
    uint16_t u2 = 0;
    uint32_t u4 = 0;
    uint64_t u8 = 0;
    float f4 = 0;
    double f8 = 0;
    std::string text, file, word;
    Inner record;
    std::vector<uint8_t> bytes;
    std::vector<double> reals;
    std::vector<std::string> texts;
    std::vector<Inner> records;
    template <class Visitor, class Self>
    static void visit(Visitor& v, Self& self) {
        v.template field<STPType::U1>("u1", 1, self.u1);
        v.template field<STPType::U2>("u2", 2, self.u2);
        v.template field<STPType::U4>("u4", 3, self.u4);
        v.template field<STPType::U8>("u8", 4, self.u8);
        v.template field<STPType::F4>("f4", 5, self.f4);
        v.template field<STPType::F8>("f8", 6, self.f8);
        v.template field<STPType::String>("text", 7, self.text);
        v.template field<STPType::FileName>("file", 8, self.file);
        v.template field<STPType::Word>("word", 9, self.word);
        v.template field<STPType::Record>("record", 10, self.record);
        v.template count<STPType::U4>("count", 11, self.bytes);
        v.template array<STPType::U1>("bytes", 12, self.bytes);
        v.template array<STPType::F8>("reals", 13, self.reals);
        v.template array<STPType::String>("texts", 14, self.texts);
        v.template array<STPType::Record>("records", 15, self.records);
    }
};

std::string fatalOf(const std::function<void()>& run) {
    std::string told;
    gen_set_report_sink([&](int, const std::string& line) { told += line; });
    run();
    gen_set_report_sink({});
    return told;
}

}  // namespace

TEST(TextBody, IsWrittenAsDocumented) {
    std::string body;
    TextBodyWriter writer(body);
    writer.number("n", 31);
    writer.number64("big", 0x1000002a5);
    writer.string("s", "a \"quote\", \\ and\nmore");
    writer.string("none", std::nullopt);
    writer.word("w", "bare");
    writer.beginRecord("r");
    writer.number("a", 1);
    writer.string("b", "");
    writer.endRecord();
    writer.beginArray("list", 2);
    writer.string({}, "x");
    writer.string({}, "y");
    writer.endArray();
    EXPECT_EQ(body, documented_Text("bus-text-fields"));
    TextBodyReader reader(body);
    EXPECT_EQ(reader.array("list").size(), 2u);  // in any order
    EXPECT_EQ(reader.number("n"), 31u);
    EXPECT_EQ(reader.number("big"), 0x1000002a5u);
    EXPECT_EQ(reader.string("s"), "a \"quote\", \\ and\nmore");
    EXPECT_EQ(reader.string("none"), std::nullopt);
    EXPECT_EQ(reader.word("w"), "bare");
    EXPECT_EQ(TextBodyReader::record(reader.word("r")).string("b"), "");
    EXPECT_EQ(reader.string("missing"), std::nullopt);
    EXPECT_EQ(reader.number("missing"), 0u);
}

TEST(TextBody, FieldsAreFoundPastWhateverStandsBetween) {
    const struct {
        const char* body;
        uint64_t a;
    } rows[] = {{"a:1 ", 1},
                {"a:1 a:2 ", 1},  // the first one counts
                {"b:2 a:1 a:3 ", 1},
                {"Name with words a:7 ", 7},
                {"r:{ a:1 x:\"}\" } a:2 ", 2},
                {"l:(0x1 )[ { a:1 } ] a:3 ", 3},
                {"s:\"a:9 \\\" a:8\" a:4 ", 4},
                {"a:0x10 ", 16},
                {"a:-1 ", static_cast<uint64_t>(-1)},
                {"a:+12 ", 12},
                {"a:-0x2 ", static_cast<uint64_t>(-2)},
                {"a:12abc ", 12},
                {"a: b:2 ", 0},
                {"aa:1 ", 0},
                {"a:{ ", 0},
                {":3 a:5", 5},
                {"} ] ) a:6 ", 6},
                {"\"a:1\" { a:2 } a:8 ", 8},
                {"", 0}};
    for (const auto& row : rows) EXPECT_EQ(TextBodyReader(row.body).number("a"), row.a) << row.body;
    EXPECT_EQ(TextBodyReader(std::string_view("a:1 \0b:2 ", 9)).number("b"), 0u);  // it ends at a zero byte
    EXPECT_EQ(TextBodyReader::firstWord("  CheckAbility dataFile:"), "CheckAbility");
    EXPECT_EQ(TextBodyReader("s:\"cut").string("s"), "cut");
    EXPECT_EQ(TextBodyReader("s:\"cut\\").string("s"), "cut");
}

TEST(TextBody, ArraysTakeWhatIsThereAndNeedASize) {
    EXPECT_EQ(textBody_Array("(0x2 )[ 1 2 3 ] ").size(), 2u);
    EXPECT_EQ(textBody_Array("(0xffffffff )[ 1 2 3 ] ").size(), 3u);
    EXPECT_EQ(textBody_Array("(0x2 )[ 1 ").size(), 1u);
    EXPECT_EQ(textBody_Array("(0x0 )[  ] ").size(), 0u);
    EXPECT_EQ(textBody_Array("[ ] ").size(), 0u);
    EXPECT_EQ(textBody_Array("12 ").size(), 0u);
    EXPECT_NE(fatalOf([] {
                  EXPECT_EQ(textBody_Array("[ 1 ] ").size(), 0u);
              }).find("unspecified stp ascii array size"),
              std::string::npos);
}

TEST(BinaryBody, EveryItemIsAsDocumented) {
    std::string body;
    BinaryBodyWriter writer(body);
    writer.string(1, "net");
    writer.string(2, "");
    writer.string(3, std::nullopt);
    writer.integer(4, 1, 0xab);
    writer.integer(5, 2, 0xabcd);
    writer.integer(6, 4, 0x12345678);
    writer.integer(7, 8, 0x123456789);
    writer.real(8, 4, 1.5);
    writer.real(9, 8, -2.25);
    writer.beginRecord(10);
    writer.integer(1, 4, 7);
    writer.string(2, "a");
    writer.endRecord();
    writer.beginArray(11);
    for (const uint32_t value : {1u, 2u, 3u}) writer.integerElement(4, value);
    writer.endArray();
    writer.beginArray(12);
    writer.stringElement("x");
    writer.stringElement("yz");
    writer.endArray();
    writer.beginArray(13);
    writer.beginRecordElement();
    writer.integer(1, 4, 5);
    writer.endRecordElement();
    writer.beginRecordElement();
    writer.endRecordElement();
    writer.endArray();
    writer.beginArray(14);
    writer.integerElement(1, 1);
    writer.integerElement(1, 255);
    writer.endArray();
    body.append(4, '\0');
    EXPECT_EQ(body, documentedBytes("bus-binary-items"));
}

TEST(BinaryBody, EveryItemIsReadInAnyOrder) {
    const std::string body = documentedBytes("bus-binary-items");
    BinaryBodyReader reader{std::string_view(body)};
    EXPECT_EQ(reader.string(12), std::nullopt);  // of another class
    EXPECT_EQ(reader.real(9), -2.25);            // behind the beginning
    EXPECT_EQ(reader.real(8), 1.5);
    EXPECT_EQ(reader.string(1), "net");  // before the last one found
    EXPECT_EQ(reader.string(2), "");
    EXPECT_EQ(reader.string(3), std::nullopt);
    EXPECT_EQ(reader.integer(4), 0xabu);
    EXPECT_EQ(reader.integer(5), 0xabcdu);
    EXPECT_EQ(reader.integer(6), 0x12345678u);
    EXPECT_EQ(reader.integer(7), 0x123456789u);
    BinaryBodyReader record(reader.record(10));
    EXPECT_EQ(record.string(2), "a");
    EXPECT_EQ(record.integer(1), 7u);
    EXPECT_EQ(record.integer(3), 0u);
    BinaryElements numbers = reader.array(11);
    EXPECT_EQ(numbers.integer(4) + numbers.integer(4) + numbers.integer(4), 6u);
    EXPECT_TRUE(numbers.atEnd());
    BinaryElements texts = reader.array(12);
    EXPECT_EQ(texts.string(), "x");
    EXPECT_EQ(texts.string(), "yz");
    BinaryElements records = reader.array(13);
    EXPECT_EQ(BinaryBodyReader(records.record()).integer(1), 5u);
    EXPECT_TRUE(records.record().empty());
    EXPECT_EQ(reader.integer(99), 0u);
    EXPECT_EQ(reader.integer(6), 0x12345678u);
}

TEST(BinaryBody, SizesMayStandInAWordAndUnknownItemsAreSkipped) {
    const std::string body = documentedBytes("bus-binary-sizes");
    EXPECT_EQ(BinaryBodyReader(body).integer(1), 0x1234u);
    // Cut anywhere, nothing beyond the bytes is read.
    const std::string items = documentedBytes("bus-binary-items");
    for (size_t length = 0; length < items.size(); ++length) {
        const std::string cut = items.substr(0, length);
        BinaryBodyReader reader{std::string_view(cut)};
        for (uint32_t field = 1; field < 15; ++field) {
            reader.integer(field);
            reader.string(field);
            BinaryElements elements = reader.array(field);
            while (!elements.atEnd()) elements.string();
        }
    }
}

TEST(Bodies, BothFormsGiveBackWhatWasWritten) {
    Everything all;
    all.u1 = 200;
    all.u2 = 60000;
    all.u4 = 4000000000;
    all.u8 = 0xfedcba9876543210;
    all.f4 = -0.5f;
    all.f8 = 1e300;
    all.text = "a \"b\" {c\n\\";
    all.file = "/tmp/a b.trr";
    all.word = "bare";
    all.record = {7, "seven"};
    all.bytes = {1, 2, 255};
    all.reals = {0.1, -2};
    all.texts = {"", "x ] y", "null"};
    all.records = {{1, "one"}, {}, {3, "}"}};
    for (const STPBodyForm form : {STPBodyForm::Text, STPBodyForm::Binary}) {
        const std::string body = stp_WriteBody(form, "", all);
        const auto back = stp_ReadBody<Everything>(form, body);
        EXPECT_EQ(stp_FieldsAsText(back), stp_FieldsAsText(all));
        EXPECT_EQ(back.f8, all.f8);
        EXPECT_EQ(back.texts, all.texts);
        ASSERT_EQ(back.records.size(), 3u);
        EXPECT_EQ(back.records[2].b, "}");
        // An empty body reads as nothing at all.
        EXPECT_EQ(stp_FieldsAsText(stp_ReadBody<Everything>(form, "")), stp_FieldsAsText(Everything()));
    }
}

TEST(Bodies, NumbersThatAreNoneComeBack) {
    const double inf = std::numeric_limits<double>::infinity();
    Everything all;
    all.reals = {inf, -inf, -0.0, std::nan(""), 5e-324};
    for (const STPBodyForm form : {STPBodyForm::Text, STPBodyForm::Binary}) {
        const auto back = stp_ReadBody<Everything>(form, stp_WriteBody(form, "", all)).reals;
        ASSERT_EQ(back.size(), 5u);
        EXPECT_EQ(back[0], inf);
        EXPECT_EQ(back[1], -inf);
        EXPECT_TRUE(std::signbit(back[2]));
        EXPECT_TRUE(std::isnan(back[3]));
        EXPECT_EQ(back[4], 5e-324);
    }
}

TEST(Bodies, ASmallPacketDoesNotFillTheMemory) {
    std::string body;
    BinaryBodyWriter writer(body);
    writer.integer(11, 4, 0xFFFFFFFF);
    writer.beginArray(15);
    for (size_t i = 0; i < stpMostElements + 10; ++i) writer.stringElement(std::nullopt);
    writer.endArray();
    EXPECT_EQ(stp_ReadBody<Everything>(STPBodyForm::Binary, body).records.size(), stpMostElements);
    body = "texts:(0xffffffff )[ ";
    for (size_t i = 0; i < stpMostElements + 10; ++i) body += "0 ";
    EXPECT_NE(fatalOf([&] {
                  EXPECT_EQ(stp_ReadBody<Everything>(STPBodyForm::Text, body).texts.size(), stpMostElements);
              }).find("is cut"),
              std::string::npos);
}

TEST(Descriptor, ReadsWhatTablesHaveAndWritesItBack) {
    const char* const texts[] = {
        "",
        "dataFile:%str% | powerMmask:%num% ",
        "| win:%num% ",
        "name_list:{count:%u4% data:*(count)[%str%] } ",
        "n:%u4% d:%dar%(n, %u4%) big:%num8% w:%word% f:%fn% a:[{x:%f4% y:%f8% }] u:%u1% v:%u2% z:%u8% ",
    };
    for (const char* text : texts) {
        STPMessageDescriptor descriptor;
        const Result result = descriptor_Parse(text, descriptor);
        EXPECT_TRUE(result) << text << ": " << result.text();
        EXPECT_EQ(descriptor_Text(descriptor), text);
    }
    STPMessageDescriptor loose;
    ASSERT_TRUE(descriptor_Parse("  a:%num%b:%str%|c:{ } ", loose));
    EXPECT_EQ(descriptor_Text(loose), "a:%num% b:%str% | c:{} ");
}

TEST(Descriptor, SaysWhatIsWrongAndWhere) {
    const struct {
        std::string text;
        const char* problem;
    } rows[] = {
        {"a", "character 2: expected \":\""},
        {"a:", "character 3: expected a type"},
        {"a:%nun% ", "character 3: expected a type"},
        {"a:%num% !", "character 9: expected a field"},
        {"a:{b:%num% ", "character 12: expected \"}\""},
        {"a:%num% a:%str% ", "character 17: expected another name: this one stands already"},
        {"a:*(n)[%num%] ", "character 8: expected a count that is an earlier number of the record"},
        {"n:%str% a:*(n)[%num%] ", "character 16: expected a count that is an earlier number of the record"},
        {"a:[%num% ", "character 10: expected \"]\""},
        {"n:%u4% a:%dar%(n %u4%) ", "character 18: expected \",\""},
        {"a:%num% | b:%num% | c:%num% ", "character 19: expected a field"},
    };
    for (const auto& row : rows) {
        STPMessageDescriptor descriptor;
        EXPECT_EQ(descriptor_Parse(row.text, descriptor).text(), row.problem) << row.text;
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "a:{";
    STPMessageDescriptor descriptor;
    EXPECT_NE(descriptor_Parse(deep, descriptor).text().find("no deeper nesting"), std::string::npos);
}
