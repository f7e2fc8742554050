// The names that the table of setting files gives for the command.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "settings/walk.h"
#include "settings_table.h"

namespace tavra::tool {
namespace {

TEST(StoredKeys, AreCalledAsTheCommandCallsThem) {
    std::set<std::string> known{"gamma.*"};
    for (const Setting& setting : settings()) known.insert(setting.name);
    for (const Group& group : settingWalk()) {
        for (const Block& block : group.blocks) {
            for (const Key& key : block.keys) {
                if (*key.command != '\0') {
                    EXPECT_TRUE(known.contains(key.command)) << key.name << ": " << key.command;
                }
            }
        }
    }
}

}  // namespace
}  // namespace tavra::tool
