#include <iterator>

#include "chronoweave/import/import_testing.h"
#include "libtrv/documented_bytes_testing.h"

using FormatsPage = ImportTest;

// The page shows the raw event file and the store that is made of it.
TEST_F(FormatsPage, RawEventFileBecomesTheStoreOfThePage) {
    const Bytes withShort = documented_Bytes("run1.trr");
    ASSERT_GT(withShort.size(), 10u);
    Bytes withLong = documented_Bytes("long-header");
    withLong.insert(withLong.end(), withShort.begin() + 10, withShort.end());
    for (const Bytes& raw : {withShort, withLong}) {
        const OpenedSource opened = import("run1.trr", raw);
        ASSERT_EQ(opened.trouble.text(), "");
        EXPECT_EQ(opened.counts.events, 3u);
        EXPECT_EQ(opened.counts.dropped() + opened.counts.badBytes + opened.counts.unread, 0u);
        for (const char* name : {"run1.trs", "run1.tri", "run1.trv"}) {
            std::ifstream file(path(name), std::ios::binary);
            const Bytes written{std::istreambuf_iterator<char>(file), {}};
            EXPECT_EQ(written, documented_Bytes(name)) << name;
        }
    }
}
