#include <gtest/gtest.h>

#include "services/descriptions/emit.h"

namespace {

const EmittedFile* find(const std::vector<EmittedFile>& files, const std::string& name) {
    for (const EmittedFile& file : files)
        if (file.name == name) return &file;
    return nullptr;
}

}  // namespace

TEST(ServiceDescription, MistakesNameTheirLine) {
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"form text\n", "d:1: a service must come first"},
        {"service A\nform letters\n", "d:2: the form is text or binary"},
        {"service A\n\n# remark\nside s x\n", "d:4: an id is a number from 1"},
        {"service A\nto nobody\n", "d:2: no such side"},
        {"service A\nMessage 0x1 \"\"\n", "d:2: a message needs a side that receives it"},
        {"service A\nside s 1\nto s\nM 0x1\n", "d:4: expected flags and a descriptor in quotes"},
        {"service A\nside s 1\nto s\nM 0x1 \"a:%what% \"\n", "d:4: character 3: expected a type"},
    };
    for (const auto& row : rows) {
        std::vector<DescribedService> services;
        EXPECT_EQ(description_Parse("d", row.text, services).text(), row.problem);
    }
}

TEST(ServiceDescription, TablesAreSortedAndOperationsKeepTheirOrder) {
    std::vector<DescribedService> services;
    const Result parsed = description_Parse("d",
                                            "service X\nside server 2\nside client 1\nto server\n"
                                            "Late 0x81 \"n:%u4% list:*(n)[{a:%str% }] | win:%num% \"\n"
                                            "Early 0x02 \"\"\nNameOnly\nto client\n",
                                            services);
    ASSERT_TRUE(parsed) << parsed.text();
    const auto files = emit_Service(services[0]);
    ASSERT_EQ(files.size(), 5u);
    const EmittedFile* const source = find(files, "x_service_server_impl.cpp");
    const EmittedFile* const header = find(files, "x_service_server_impl.h");
    const EmittedFile* const messages = find(files, "x_service_messages.h");
    ASSERT_TRUE(source && header && messages);
    EXPECT_LT(source->text.find("{\"Early\", \"\", 0, 0x02}"), source->text.find("{\"Late\""));
    EXPECT_NE(source->text.find("{\"NameOnly\", \"\", 2, 0x00}"), std::string::npos);
    EXPECT_LT(header->text.find("virtual X_Late_Reply Late("), header->text.find("virtual void Early("));
    EXPECT_EQ(header->text.find("NameOnly"), std::string::npos);
    EXPECT_NE(messages->text.find("std::vector<list_Record> list{};"), std::string::npos);
    EXPECT_NE(messages->text.find("count<STPType::U4>(\"n\", 1, self.list)"), std::string::npos);
}
