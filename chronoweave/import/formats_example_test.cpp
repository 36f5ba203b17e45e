#include <iterator>

#include "chronoweave/import/import_testing.h"
#include "libtrv/documented_bytes_testing.h"

using FormatsPage = ImportTest;

// The page shows the raw event file and the store that is made of it.
TEST_F(FormatsPage, RawEventFileBecomesTheStoreOfThePage) {
    const Bytes with_short = documented_Bytes("run1.trr");
    ASSERT_GT(with_short.size(), 10u);
    Bytes with_long = documented_Bytes("long-header");
    with_long.insert(with_long.end(), with_short.begin() + 10, with_short.end());
    for (const Bytes& raw : {with_short, with_long}) {
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
