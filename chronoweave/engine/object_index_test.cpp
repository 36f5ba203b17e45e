#include "chronoweave/engine/object_index.h"

#include <gtest/gtest.h>

namespace {

TEST(ObjectIndex, FindsEveryIdAmongMany) {
    ObjectIndex index;
    EXPECT_EQ(index.find(7), ObjectIndex::none);
    for (uint32_t i = 0; i < 5000; ++i) index.add(i * 1024, i);
    for (uint32_t i = 0; i < 5000; ++i) EXPECT_EQ(index.find(i * 1024), i);
    EXPECT_EQ(index.find(1), ObjectIndex::none);
}

}  // namespace
