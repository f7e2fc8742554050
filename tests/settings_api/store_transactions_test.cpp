// How often each call asks for the store of named settings, which others may hold. Linux.
#include <sqlite3.h>

#include <functional>
#include <utility>

#include "camera_api/camera_fixture.h"
#include "support/temp_folder.h"
#include "support/user_tree.h"

namespace tavra::test {
namespace {

// Transactions that this process begins in any database. One at a time.
class TransactionCount {
  public:
    TransactionCount() {
        count_ = 0;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
    }
    ~TransactionCount() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch)); }
    TransactionCount(const TransactionCount&) = delete;
    TransactionCount& operator=(const TransactionCount&) = delete;

    // Since the last look.
    int taken() { return std::exchange(count_, 0); }

  private:
    static int watch(sqlite3* opened, char**, const sqlite3_api_routines*) {
        return sqlite3_trace_v2(opened, SQLITE_TRACE_STMT, note, opened);
    }
    // A statement that runs while no transaction is open begins one, or is one by itself.
    static int note(unsigned, void* database, void*, void*) {
        if (sqlite3_get_autocommit(static_cast<sqlite3*>(database)) != 0) ++count_;
        return 0;
    }

    inline static int count_ = 0;
};

class StoreTransactions : public CameraTest {
  protected:
    const UserTree tree_;
    const TempFolder folder_;
    TransactionCount transactions_;
};

// Each one may be waited for: a call that took several would take that time several times.
TEST_F(StoreTransactions, EveryCallIsOne) {
    open();
    const std::u16string file = wideName(folder_ / "day.reg");
    char16_t buffer[64];
    char narrow[64];
    std::uint32_t count = 0;
    const std::pair<const char*, std::function<TavraBool()>> calls[] = {
        {"a save into nothing", [&] { return Tavra_SaveSettingRegW(handle, u"day"); }},
        {"a save", [&] { return Tavra_SaveSettingRegW(handle, u"day"); }},
        {"a load", [&] { return Tavra_LoadSettingRegW(handle, u"day"); }},
        {"setting the default", [&] { return Tavra_SetDefaultSettingRegW(handle, u"day"); }},
        {"the default", [&] { return Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer); }},
        {"the default, narrow", [&] { return Tavra_GetDefaultSettingRegA(handle, narrow, sizeof narrow); }},
        {"the list", [&] { return Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count); }},
        {"an export", [&] { return Tavra_ExportSettingRegW(handle, u"day", file.c_str()); }},
        {"an import", [&] { return Tavra_ImportSettingRegW(handle, file.c_str()); }},
        {"a removal", [&] { return Tavra_RemoveSettingRegW(handle, u"day"); }},
        {"a default that is gone",
         [&] { return Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer); }},
        {"an import of what is not there", [&] { return Tavra_ImportSettingRegW(handle, file.c_str()); }},
        {"no default any more", [&] { return Tavra_SetDefaultSettingRegW(handle, nullptr); }}};
    for (const auto& [what, call] : calls) {
        EXPECT_EQ(call(), 1) << what << ": " << lastError();
        EXPECT_EQ(transactions_.taken(), 1) << what;
    }
    EXPECT_EQ(Tavra_RemoveSettingRegW(handle, u"night"), 0);
    EXPECT_EQ(transactions_.taken(), 1) << "a removal of what is not there";
}

TEST_F(StoreTransactions, OneMoreMakesTheKeyThatIsRead) {
    open();
    char16_t buffer[64];
    std::uint32_t count = 0;
    expectSuccess(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer));
    EXPECT_EQ(transactions_.taken(), 2);
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count));
    EXPECT_EQ(transactions_.taken(), 1) << "it is there by now";
    expectSuccess(Tavra_LoadSettingRegW(handle, u"new"));
    EXPECT_EQ(transactions_.taken(), 2);
    expectSuccess(Tavra_LoadSettingRegW(handle, u"new"));
    EXPECT_EQ(transactions_.taken(), 1);
}

}  // namespace
}  // namespace tavra::test
