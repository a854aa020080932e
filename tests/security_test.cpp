// The map-wide switch, and with it the shortest whole run.
#include "fixture.h"

TEST(Security, IsStoredAndShown) {
    const Tree tree;
    EXPECT_EQ(tree.Run({"-view", "security"}).out, "false\n");
    const Result set = tree.Run({"-security", "true"});
    EXPECT_EQ(set.code, 0);
    EXPECT_EQ(set.err, "");
    EXPECT_EQ(tree.Read(kMap), MapText("", R"(serial="1" security="true" version="3.0")"));
    EXPECT_EQ(tree.Run({"-view", "security"}).out, "true\n");
    EXPECT_FALSE(tree.Exists(kCalls));
    EXPECT_FALSE(tree.Exists(kKfxConf));
}

TEST(Security, IsNeverCreated) {
    const Tree tree;
    tree.WriteMap("", R"(serial="1")");
    const std::string before = tree.Read(kMap);
    for (const auto& words :
         {std::vector<std::string>{"-security", "true"}, {"-view", "security"}}) {
        const Result r = tree.Run(words);
        EXPECT_EQ(r.code, 21);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "tqsmgr: Cannot find the \"security\" attribute for SystemMap.\n");
    }
    EXPECT_EQ(tree.Read(kMap), before);
}
