#include "platform/key_tree.h"

#include <gtest/gtest.h>

#include "support/user_tree.h"

namespace tavra::platform {
namespace {

using Access = TreeKey::Access;
using Missing = TreeKey::Missing;
using Bytes = std::vector<std::uint8_t>;

constexpr const char16_t* kPath = uR"(SOFTWARE\Some\Key)";

class KeyTree : public testing::Test {
  protected:
    static void make(const std::u16string& path) {
        TreeKey key;
        ASSERT_EQ(key.open(path, Access::Write, Missing::Create), 0u);
        ASSERT_EQ(key.close(), 0u);
    }
    static std::uint32_t openError(const std::u16string& path) {
        return TreeKey().open(path, Access::Read, Missing::Fail);
    }
    static std::vector<std::u16string> below(const std::u16string& path) {
        TreeKey key;
        EXPECT_EQ(key.open(path, Access::Read, Missing::Fail), 0u);
        std::vector<std::u16string> names;
        std::u16string name;
        std::uint32_t error = 0;
        for (std::uint32_t i = 0; (error = key.subKeyName(i, name)) == 0; ++i) names.push_back(name);
        EXPECT_EQ(error, 259u);
        return names;
    }

    const test::UserTree tree_;
};

TEST_F(KeyTree, AKeyIsThereOnceItWasMade) {
    EXPECT_EQ(openError(kPath), 2u);
    EXPECT_EQ(TreeKey().open(kPath, Access::Write, Missing::Fail), 2u);
    make(kPath);
    EXPECT_EQ(openError(kPath), 0u);
    EXPECT_EQ(openError(u"SOFTWARE\\Some"), 0u) << "and those above it";
    EXPECT_EQ(openError(u"software\\SOME\\key\\"), 0u) << "by capitals and small letters";
    EXPECT_EQ(openError(u"SOFTWARE\\Some\\Key\\More"), 2u);
}

TEST_F(KeyTree, ReadingMakesAKeyToo) {
    TreeKey key;
    ASSERT_EQ(key.open(kPath, Access::Read, Missing::Create), 0u);
    TreeValue value;
    EXPECT_EQ(key.read(u"x", value), 2u);
    EXPECT_EQ(key.write(u"x", ValueType::Dword, Bytes(4)), 5u) << "but is no right to write";
    key.close();
    EXPECT_EQ(openError(kPath), 0u);
}

TEST_F(KeyTree, WithoutAKeyEverythingGives87) {
    TreeKey key;
    TreeValue value;
    std::u16string name;
    EXPECT_FALSE(key.isOpen());
    EXPECT_EQ(key.close(), 87u);
    EXPECT_EQ(key.subKeyName(0, name), 87u);
    EXPECT_EQ(key.removeSubKey(u"x"), 87u);
    EXPECT_EQ(key.value(0, value), 87u);
    EXPECT_EQ(key.read(u"x", value), 87u);
    EXPECT_EQ(key.write(u"x", ValueType::Binary, Bytes()), 87u);
    EXPECT_EQ(key.removeValue(u"x"), 87u);
}

TEST_F(KeyTree, ValuesComeBackWithTypeAndBytes) {
    TreeKey key;
    ASSERT_EQ(key.open(kPath, Access::Write, Missing::Create), 0u);
    EXPECT_EQ(key.write(u"Number", ValueType::Dword, Bytes{1, 2, 3, 4}), 0u);
    EXPECT_EQ(key.write(u"Nothing", ValueType::Binary, Bytes()), 0u);
    EXPECT_EQ(key.write(u"Bytes", ValueType::Binary, Bytes(300, 7)), 0u);
    EXPECT_EQ(key.write(u"NUMBER", ValueType::Dword, Bytes{5, 6, 7, 8}), 0u) << "over the other";
    key.close();
    ASSERT_EQ(key.open(kPath, Access::Read, Missing::Fail), 0u);
    TreeValue value;
    ASSERT_EQ(key.read(u"number", value), 0u);
    EXPECT_EQ(value.type, ValueType::Dword);
    EXPECT_EQ(value.data, (Bytes{5, 6, 7, 8}));
    ASSERT_EQ(key.read(u"Nothing", value), 0u);
    EXPECT_EQ(value.type, ValueType::Binary);
    EXPECT_TRUE(value.data.empty());
    ASSERT_EQ(key.read(u"Bytes", value), 0u);
    EXPECT_EQ(value.data, Bytes(300, 7));
    EXPECT_EQ(key.read(u"Other", value), 2u);
    std::uint32_t count = 0;
    while (key.value(count, value) == 0) ++count;
    EXPECT_EQ(count, 3u);
}

TEST_F(KeyTree, ValuesAreRemovedOneByOne) {
    TreeKey key;
    ASSERT_EQ(key.open(kPath, Access::Write, Missing::Create), 0u);
    ASSERT_EQ(key.write(u"a", ValueType::Binary, Bytes{1}), 0u);
    EXPECT_EQ(key.removeValue(u"A"), 0u);
    EXPECT_EQ(key.removeValue(u"a"), 2u);
}

TEST_F(KeyTree, KeysAreListedByTheirNames) {
    for (const char16_t* name : {u"night", u"Day", u"evening"}) make(std::u16string(kPath) + u"\\" + name);
    EXPECT_EQ(below(kPath), (std::vector<std::u16string>{u"Day", u"evening", u"night"}));
}

TEST_F(KeyTree, KeysBelowAreFound) {
    make(std::u16string(kPath) + u"\\one\\two");
    TreeKey key;
    EXPECT_EQ(key.findSubKey(u"one"), 87u);
    ASSERT_EQ(key.open(kPath, Access::Read, Missing::Fail), 0u);
    EXPECT_EQ(key.findSubKey(u"ONE"), 0u);
    EXPECT_EQ(key.findSubKey(u"one\\two"), 0u);
    EXPECT_EQ(key.findSubKey(u"two"), 2u);
    EXPECT_EQ(key.findSubKey(u"one\\three"), 2u);
    EXPECT_EQ(key.findSubKey(u""), 87u);
    EXPECT_EQ(key.findSubKey(std::u16string(256, u'n')), 87u);
    ASSERT_EQ(key.open(std::u16string(kPath) + u"\\new", Access::Read, Missing::Create), 0u);
    EXPECT_EQ(key.findSubKey(u"one"), 2u) << "it has just been made";
}

TEST_F(KeyTree, AKeyIsRemovedWithItsValuesUnlessThereAreKeysBelow) {
    make(std::u16string(kPath) + u"\\one");
    make(std::u16string(kPath) + u"\\two\\three");
    TreeKey key;
    ASSERT_EQ(key.open(kPath, Access::Write, Missing::Fail), 0u);
    EXPECT_EQ(key.removeSubKey(u"none"), 2u);
    EXPECT_EQ(key.removeSubKey(u""), 87u);
    EXPECT_EQ(key.removeSubKey(u"two"), 5u);
    EXPECT_EQ(key.removeSubKey(u"ONE"), 0u);
    key.close();
    EXPECT_EQ(below(kPath), (std::vector<std::u16string>{u"two"}));
}

TEST_F(KeyTree, NamesOfKeysHaveAtMost255Units) {
    make(std::u16string(255, u'n'));
    EXPECT_EQ(openError(std::u16string(255, u'n')), 0u);
    for (const std::size_t length : {std::size_t{256}, std::size_t{10000}}) {
        EXPECT_NE(TreeKey().open(std::u16string(length, u'n'), Access::Write, Missing::Create), 0u);
    }
}

TEST_F(KeyTree, AnyUnitIsPartOfAName) {
    std::u16string name = u"\u00e4\u20ac\U0001F4F7";
    make(std::u16string(kPath) + u"\\" + name);
    EXPECT_EQ(below(kPath), (std::vector<std::u16string>{name}));
}

}  // namespace
}  // namespace tavra::platform
