// The little of SQLite that the user's tree needs: a database and its statements, each closed with its owner.
// One thread at a time.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/linux/busy_wait.h"

namespace tavra::platform {

// The error number of the system that stands for a result of SQLite.
inline std::uint32_t errorFromSqlite(int result) {
    switch (result & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE: return 0;
        case SQLITE_NOMEM: return 8;
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_READONLY:
        case SQLITE_CANTOPEN: return 5;
        case SQLITE_IOERR: return 29;
        case SQLITE_FULL: return 112;
        case SQLITE_BUSY:
        case SQLITE_LOCKED: return 170;
        default: return 1009;  // it is no database, a damaged one, or one of another form
    }
}

// What another connection holds is waited for, up to the time of a BusyWait for each statement. It stays
// where it is, because the database calls back.
class Database {
  public:
    Database() = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    std::uint32_t open(const std::string& name) {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(
            name.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        handle_.reset(opened);
        if (result != SQLITE_OK) return errorFromSqlite(result);
        sqlite3_busy_handler(opened, waitAgain, &wait_);
        return 0;
    }

    sqlite3* handle() const { return handle_.get(); }

    std::uint32_t run(const char* statements) {
        return errorFromSqlite(sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr));
    }

  private:
    static int waitAgain(void* wait, int attempts) {
        auto& busy = *static_cast<BusyWait*>(wait);
        if (attempts == 0) busy = BusyWait();
        return busy.again() ? 1 : 0;
    }

    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
    };
    BusyWait wait_;
    std::unique_ptr<sqlite3, Close> handle_;
};

// Arguments are bound from 1 on in the order of the calls; what is bound stays with the caller until the
// step.
class Statement {
  public:
    Statement(const Database& database, const char* text) {
        sqlite3_stmt* made = nullptr;
        result_ = sqlite3_prepare_v2(database.handle(), text, -1, &made, nullptr);
        handle_.reset(made);
    }

    Statement& bind(std::int64_t number) { return note(sqlite3_bind_int64(handle_.get(), ++bound_, number)); }
    Statement& bind(std::string_view text) {
        return note(sqlite3_bind_text(handle_.get(), ++bound_, text.data(), static_cast<int>(text.size()),
                                      SQLITE_STATIC));
    }
    Statement& bind(std::span<const std::uint8_t> bytes) {
        // A null pointer would be no value at all.
        const void* const first = bytes.empty() ? "" : static_cast<const void*>(bytes.data());
        return note(sqlite3_bind_blob64(handle_.get(), ++bound_, first, bytes.size(), SQLITE_STATIC));
    }

    // True: there is a row. Otherwise there is none, or error() says why.
    bool step() {
        if (result_ != SQLITE_OK && result_ != SQLITE_ROW) return false;
        result_ = sqlite3_step(handle_.get());
        return result_ == SQLITE_ROW;
    }
    std::uint32_t error() const { return errorFromSqlite(result_); }
    // Runs it to its end.
    std::uint32_t run() {
        while (step()) {
        }
        return error();
    }

    std::int64_t number(int column) const { return sqlite3_column_int64(handle_.get(), column); }
    std::string_view text(int column) const {
        const auto* const first = reinterpret_cast<const char*>(sqlite3_column_text(handle_.get(), column));
        return {first != nullptr ? first : "", size(column)};
    }
    std::span<const std::uint8_t> bytes(int column) const {
        const auto* const first =
            static_cast<const std::uint8_t*>(sqlite3_column_blob(handle_.get(), column));
        return {first, first != nullptr ? size(column) : 0};
    }

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    std::size_t size(int column) const {
        return static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    }
    Statement& note(int result) {
        if (result_ == SQLITE_OK) result_ = result;
        return *this;
    }

    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
    int result_ = SQLITE_OK;
    int bound_ = 0;
};

}  // namespace tavra::platform
