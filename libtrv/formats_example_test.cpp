#include <fstream>
#include <iterator>

#include "libtrv/documented_bytes_testing.h"
#include "libtrv/test_store.h"

TEST(FormatsPage, StoreIsWhatTheWriterWrites) {
    TestFolder folder;
    const std::string base = folder / "run1";
    const auto writer = StoreWriter::OpenForWrite(base, 1000000, "KORVANTIS", false, TaskTracker);
    ASSERT_NE(writer, nullptr);
    Bytes introduced = words({0x401, 20}, false);
    introduced.insert(introduced.end(), {'n', 'e', 't'});
    introduced.resize(39);
    EXPECT_TRUE(writer->AppendEvent(0, mt_Refresh, mt_Suspend, introduced));
    EXPECT_TRUE(writer->AppendEvent(0, mt_TaskChange, 0, words({0x401}, false)));
    EXPECT_TRUE(writer->AppendEvent(250, mt_UserEvent, 7, words({0x401, 99}, false)));
    for (const char* extension : {".trs", ".tri", ".trv"}) {
        std::ifstream file(base + extension, std::ios::binary);
        const Bytes written{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(written, documented_Bytes(std::string("run1") + extension)) << extension;
    }
}
