#include "platform/key_tree.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "platform/linux/sqlite.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kAccessDenied = 5;
constexpr std::uint32_t kInvalidParameter = 87;
constexpr std::uint32_t kAlreadyExists = 183;
constexpr std::uint32_t kNoMoreItems = 259;
constexpr std::uint32_t kBadDatabase = 1009;
constexpr std::uint32_t kRevisionMismatch = 1306;

constexpr std::size_t kLongestName = 16383;        // units of a value's name
constexpr std::int64_t kRoot = 0;                  // parent of the topmost keys
constexpr std::int64_t kApplication = 0x54415652;  // "TAVR", where a database tells whose it is
constexpr std::int64_t kVersion = 1;

constexpr const char* kMakeTables = R"(
    CREATE TABLE keys(id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, name TEXT NOT NULL,
                      folded TEXT NOT NULL, UNIQUE(parent, folded));
    CREATE TABLE entries(id INTEGER PRIMARY KEY, key INTEGER NOT NULL, name TEXT NOT NULL,
                         folded TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL, UNIQUE(key, folded));
    PRAGMA application_id = 0x54415652;
    PRAGMA user_version = 1;
)";

// --- text: UTF-8, in which a lone half of a pair is three bytes as any other unit, so that all names differ
// ---

void appendUtf8(std::string& text, std::uint32_t character) {
    const auto tail = [character](int shift) {
        return static_cast<char>(0x80 | (character >> shift & 0x3F));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += {static_cast<char>(0xC0 | character >> 6), tail(0)};
    } else if (character < 0x10000) {
        text += {static_cast<char>(0xE0 | character >> 12), tail(6), tail(0)};
    } else {
        text += {static_cast<char>(0xF0 | character >> 18), tail(12), tail(6), tail(0)};
    }
}

std::string narrow(std::u16string_view wide) {
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        std::uint32_t character = wide[i];
        const bool pair = character >= 0xD800 && character < 0xDC00 && i + 1 < wide.size() &&
                          wide[i + 1] >= 0xDC00 && wide[i + 1] < 0xE000;
        if (pair) character = 0x10000 + ((character - 0xD800) << 10) + (wide[++i] - 0xDC00u);
        appendUtf8(text, character);
    }
    return text;
}

std::u16string widen(std::string_view text) {
    std::u16string wide;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<std::uint8_t>(text[i++]);
        std::uint32_t character = first;
        int more = 0;
        if (first >= 0xF0) {
            character = first & 7u;
            more = 3;
        } else if (first >= 0xE0) {
            character = first & 15u;
            more = 2;
        } else if (first >= 0xC0) {
            character = first & 31u;
            more = 1;
        }
        for (; more > 0 && i < text.size(); --more) {
            character = character << 6 | (static_cast<std::uint8_t>(text[i++]) & 63u);
        }
        if (character >= 0x10000) {
            character = (character - 0x10000) & 0xFFFFF;
            wide += static_cast<char16_t>(0xD800 + (character >> 10));
            character = 0xDC00 + (character & 0x3FF);
        }
        wide += static_cast<char16_t>(character);
    }
    return wide;
}

std::string folded(std::string text) {
    for (char& unit : text) {
        if (unit >= 'A' && unit <= 'Z') unit = static_cast<char>(unit + ('a' - 'A'));
    }
    return text;
}

// --- the database ---

std::string homeFolder() {
    if (const char* const home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
    passwd entry{};
    passwd* found = nullptr;
    char buffer[4096];
    if (::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) != 0 || found == nullptr) return {};
    return found->pw_dir;
}

// Empty: the user has no place for it.
std::string databaseFolder() {
    const char* const configured = std::getenv("XDG_CONFIG_HOME");
    if (configured != nullptr && *configured == '/') return std::string(configured) + "/tavra";
    const std::string home = homeFolder();
    return home.empty() ? home : home + "/.config/tavra";
}

bool makeFolder(const std::string& folder) {
    namespace fs = std::filesystem;
    std::error_code failure;
    if (fs::is_directory(folder, failure)) return true;
    if (!fs::create_directories(folder, failure)) return fs::is_directory(folder, failure);
    fs::permissions(folder, fs::perms::owner_all, failure);
    return true;
}

// 0 behind a failure: each question to a locked database would wait its whole time.
std::int64_t pragma(const Database& database, const char* text, std::uint32_t& error) {
    if (error != 0) return 0;
    Statement statement(database, text);
    const std::int64_t value = statement.step() ? statement.number(0) : 0;
    error = statement.error();
    return value;
}

// Whether it is the library's database, and of a version that this library knows. Nothing is written.
std::uint32_t examine(const Database& database, bool& empty) {
    std::uint32_t error = 0;
    const std::int64_t tables = pragma(database, "SELECT count(*) FROM sqlite_master", error);
    const std::int64_t application = pragma(database, "PRAGMA application_id", error);
    const std::int64_t version = pragma(database, "PRAGMA user_version", error);
    empty = tables == 0 && application == 0 && version == 0;
    if (error != 0 || empty) return error;
    if (application != kApplication || version < 1) return kBadDatabase;
    return version > kVersion ? kRevisionMismatch : 0;
}

}  // namespace

struct TreeKey::State {
    Database database;
    std::int64_t key = kRoot;
    bool writing = false;
    bool justMade = false;   // for a reader: there is nothing in it, and no transaction is open
    std::uint32_t lost = 0;  // why the database has taken the transaction back by itself

    // Passes the result of a change on. Behind a lost transaction each change would be one of its own.
    std::uint32_t changed(std::uint32_t error) {
        if (error != 0 && lost == 0 && sqlite3_get_autocommit(database.handle()) != 0) lost = error;
        return error;
    }
    // 0: changes go into the transaction.
    std::uint32_t refusal() const { return writing ? lost : kAccessDenied; }

    // Opens the database and begins the transaction.
    std::uint32_t begin(bool write, bool create);
    // Makes the key of a reader, in a transaction. kAlreadyExists: it is there by now.
    std::uint32_t makeToRead(std::u16string_view path);
    // Keeps what was written.
    std::uint32_t end() {
        if (justMade) return 0;
        return lost != 0 ? lost : database.run("COMMIT");
    }
    std::uint32_t find(std::int64_t parent, std::string_view name, std::int64_t& found) const;
    std::uint32_t make(std::int64_t parent, std::string_view name, std::int64_t& made) const;
    // From `from` down the path.
    std::uint32_t walk(std::int64_t from, std::u16string_view path, bool create, std::int64_t& end) const;
    bool hasKeysBelow(std::int64_t parent) const;
};

std::uint32_t TreeKey::State::begin(bool write, bool create) {
    const std::string folder = databaseFolder();
    if (folder.empty()) return kPathNotFound;
    const std::string file = folder + "/settings.db";
    if (!create && ::access(file.c_str(), F_OK) != 0) return kNotFound;
    if (create && !makeFolder(folder)) return kAccessDenied;
    if (const std::uint32_t error = database.open(file); error != 0) return error;
    if (const std::uint32_t error = database.run(write ? "BEGIN IMMEDIATE" : "BEGIN"); error != 0)
        return error;
    writing = write;
    bool empty = false;
    if (const std::uint32_t error = examine(database, empty); error != 0) return error;
    if (!empty) return 0;
    return write ? database.run(kMakeTables) : kNotFound;
}

std::uint32_t TreeKey::State::find(std::int64_t parent, std::string_view name, std::int64_t& found) const {
    Statement statement(database, "SELECT id FROM keys WHERE parent = ? AND folded = ?");
    const std::string wanted = folded(std::string(name));
    if (statement.bind(parent).bind(wanted).step()) {
        found = statement.number(0);
        return 0;
    }
    return statement.error() != 0 ? statement.error() : kNotFound;
}

std::uint32_t TreeKey::State::make(std::int64_t parent, std::string_view name, std::int64_t& made) const {
    Statement statement(database, "INSERT INTO keys(parent, name, folded) VALUES(?, ?, ?)");
    const std::string small = folded(std::string(name));
    const std::uint32_t error = statement.bind(parent).bind(name).bind(small).run();
    made = sqlite3_last_insert_rowid(database.handle());
    return error;
}

std::uint32_t TreeKey::State::walk(std::int64_t from, std::u16string_view path, bool create,
                                   std::int64_t& end) const {
    end = from;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(u'\\'), path.size());
        const std::u16string_view part = path.substr(0, length);
        path.remove_prefix(std::min(length + 1, path.size()));
        if (part.empty()) continue;
        const std::string name = narrow(part);
        const std::int64_t parent = end;
        std::uint32_t error = find(parent, name, end);
        if (error == kNotFound && create) error = make(parent, name, end);
        if (error != 0) return error;
    }
    return 0;
}

std::uint32_t TreeKey::State::makeToRead(std::u16string_view path) {
    if (const std::uint32_t error = begin(true, true); error != 0) return error;
    const std::uint32_t found = walk(kRoot, path, false, key);
    if (found == 0) return kAlreadyExists;
    if (found != kNotFound) return found;
    if (const std::uint32_t error = walk(kRoot, path, true, key); error != 0) return error;
    if (const std::uint32_t error = database.run("COMMIT"); error != 0) return error;
    writing = false;
    justMade = true;
    return 0;
}

bool TreeKey::State::hasKeysBelow(std::int64_t parent) const {
    Statement statement(database, "SELECT 1 FROM keys WHERE parent = ? LIMIT 1");
    return statement.bind(parent).step();
}

TreeKey::TreeKey() = default;
TreeKey::~TreeKey() = default;  // the database rolls back when it closes
TreeKey::TreeKey(TreeKey&& other) noexcept = default;
TreeKey& TreeKey::operator=(TreeKey&& other) noexcept = default;

std::uint32_t TreeKey::open(const std::u16string& path, Access access, Missing missing) {
    close();
    if (!keyPartsFit(path)) return kInvalidParameter;
    const bool write = access == Access::Write;
    const bool create = missing == Missing::Create;
    auto state = std::make_unique<State>();
    std::uint32_t error = state->begin(write, create);
    if (error == 0) error = state->walk(kRoot, path, create && write, state->key);
    if (error == kNotFound && create && !write) {
        state = std::make_unique<State>();
        error = state->makeToRead(path);
        // Somebody else was faster.
        if (error == kAlreadyExists) return open(path, access, Missing::Fail);
    }
    if (error != 0) return error;  // the database rolls back when it closes
    state_ = std::move(state);
    return 0;
}

std::uint32_t TreeKey::close() {
    if (!isOpen()) return kInvalidParameter;
    const std::uint32_t error = state_->end();
    state_.reset();
    return error;
}

void TreeKey::abandon() {
    state_.reset();  // the database rolls back when it closes
}

std::uint32_t TreeKey::subKeyName(std::uint32_t index, std::u16string& name) {
    if (!isOpen()) return kInvalidParameter;
    if (state_->justMade) return kNoMoreItems;
    Statement statement(state_->database,
                        "SELECT name FROM keys WHERE parent = ? ORDER BY folded LIMIT 1 OFFSET ?");
    if (!statement.bind(state_->key).bind(std::int64_t{index}).step()) {
        return statement.error() != 0 ? statement.error() : kNoMoreItems;
    }
    name = widen(statement.text(0));
    return 0;
}

std::uint32_t TreeKey::findSubKey(const std::u16string& name) {
    if (!isOpen() || name.empty() || !keyPartsFit(name)) return kInvalidParameter;
    if (state_->justMade) return kNotFound;
    std::int64_t key = kRoot;
    return state_->walk(state_->key, name, false, key);
}

std::uint32_t TreeKey::removeSubKey(const std::u16string& name) {
    if (!isOpen() || name.empty() || !keyPartsFit(name)) return kInvalidParameter;
    if (const std::uint32_t refused = state_->refusal(); refused != 0) return refused;
    std::int64_t key = kRoot;
    if (const std::uint32_t error = state_->walk(state_->key, name, false, key); error != 0) return error;
    if (key == state_->key) return kInvalidParameter;
    if (state_->hasKeysBelow(key)) return kAccessDenied;
    const std::uint32_t error =
        state_->changed(Statement(state_->database, "DELETE FROM entries WHERE key = ?").bind(key).run());
    if (error != 0) return error;
    return state_->changed(Statement(state_->database, "DELETE FROM keys WHERE id = ?").bind(key).run());
}

std::uint32_t TreeKey::value(std::uint32_t index, TreeValue& value) {
    if (!isOpen()) return kInvalidParameter;
    if (state_->justMade) return kNoMoreItems;
    Statement statement(state_->database,
                        "SELECT name, type, data FROM entries WHERE key = ? ORDER BY id LIMIT 1 OFFSET ?");
    if (!statement.bind(state_->key).bind(std::int64_t{index}).step()) {
        return statement.error() != 0 ? statement.error() : kNoMoreItems;
    }
    value.name = widen(statement.text(0));
    value.type = static_cast<ValueType>(statement.number(1));
    const std::span<const std::uint8_t> data = statement.bytes(2);
    value.data.assign(data.begin(), data.end());
    return 0;
}

std::uint32_t TreeKey::read(const std::u16string& name, TreeValue& value) {
    if (!isOpen()) return kInvalidParameter;
    if (state_->justMade) return kNotFound;
    Statement statement(state_->database, "SELECT type, data FROM entries WHERE key = ? AND folded = ?");
    const std::string key = folded(narrow(name));
    if (!statement.bind(state_->key).bind(key).step()) {
        return statement.error() != 0 ? statement.error() : kNotFound;
    }
    value.name = name;
    value.type = static_cast<ValueType>(statement.number(0));
    const std::span<const std::uint8_t> data = statement.bytes(1);
    value.data.assign(data.begin(), data.end());
    return 0;
}

std::uint32_t TreeKey::write(const std::u16string& name, ValueType type, std::span<const std::uint8_t> data) {
    if (!isOpen() || name.size() > kLongestName) return kInvalidParameter;
    if (const std::uint32_t refused = state_->refusal(); refused != 0) return refused;
    Statement statement(state_->database,
                        "INSERT INTO entries(key, name, folded, type, data) VALUES(?1, ?2, ?3, ?4, ?5) "
                        "ON CONFLICT(key, folded) DO UPDATE SET type = ?4, data = ?5");
    const std::string own = narrow(name), key = folded(own);
    const auto number = static_cast<std::int64_t>(type);
    return state_->changed(statement.bind(state_->key).bind(own).bind(key).bind(number).bind(data).run());
}

std::uint32_t TreeKey::removeValue(const std::u16string& name) {
    if (!isOpen()) return kInvalidParameter;
    if (const std::uint32_t refused = state_->refusal(); refused != 0) return refused;
    Statement statement(state_->database, "DELETE FROM entries WHERE key = ? AND folded = ?");
    const std::string key = folded(narrow(name));
    const std::uint32_t error = state_->changed(statement.bind(state_->key).bind(key).run());
    if (error != 0) return error;
    return sqlite3_changes(state_->database.handle()) != 0 ? 0 : kNotFound;
}

}  // namespace tavra::platform
