#include <gtest/gtest.h>

#include "platform/runtime/Text.h"

namespace halvane::runtime {
namespace {

TEST(TrimTest, RemovesBlanksOnly) {
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(Trim(""), "");
    EXPECT_EQ(Trim("\tx\t"), "\tx\t");
}

TEST(SplitAtLastSeparatorTest, SplitsAtTheLastSeparator) {
    const PathSplit full = SplitAtLastSeparator("/data/work/dem.tif");
    EXPECT_TRUE(full.found);
    EXPECT_EQ(full.before, "/data/work");
    EXPECT_EQ(full.after, "dem.tif");

    const PathSplit bare = SplitAtLastSeparator("dem");
    EXPECT_FALSE(bare.found);
    EXPECT_EQ(bare.before, "");
    EXPECT_EQ(bare.after, "dem");

    const PathSplit trailing = SplitAtLastSeparator("/data/");
    EXPECT_EQ(trailing.before, "/data");
    EXPECT_EQ(trailing.after, "");

    const PathSplit root = SplitAtLastSeparator("/dem");
    EXPECT_TRUE(root.found);
    EXPECT_EQ(root.before, "");
    EXPECT_EQ(root.after, "dem");
}

}  // namespace
}  // namespace halvane::runtime
