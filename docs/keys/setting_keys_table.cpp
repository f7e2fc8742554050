#include "setting_keys_table.h"

#include "settings/walk.h"

namespace tavra {
namespace {

std::string code(const std::string& text) {
    return "`" + text + "`";
}

std::string keyText(const Key& key, Times times) {
    const std::string name = key.name;
    const auto upTo = [&](const char* separator, int last) {
        return code(name + separator + "0") + " to " + code(name + separator + std::to_string(last));
    };
    switch (times) {
        case Times::Regions: return code(name) + ", " + code(name + "_1") + ", ...";
        case Times::HdrSettings: return code(name + "_0") + ", " + code(name + "_1") + ", ...";
        case Times::Three: return upTo("_", 2);
        case Times::Twelve: return upTo("_", 11);
        case Times::Sixteen: return upTo(key.naming == Naming::Behind ? "" : "_", 15);
        case Times::TableSize: return upTo("_", 255);
        default: return code(name);
    }
}

std::string ofSome(Times times) {
    if (times == Times::IfSkipping) return "cameras that set skipping and binning";
    if (times == Times::IfSum) return "cameras with a binning sum";
    return "";
}

// What a block asks for comes on top of what its group does.
std::string cameras(const Group& group, Times times) {
    const std::string some = ofSome(times), when = describe(group.condition);
    return some.empty() || when.empty() ? some + when : some + ", " + when;
}

std::string row(const std::string& section, const std::string& key, const std::string& meaning,
                const std::string& values, const std::string& which, const std::string& command) {
    std::string text = "|";
    for (const std::string& cell : {section, key, meaning, values, which, command}) {
        text += cell.empty() ? " |" : " " + cell + " |";
    }
    return text + "\n";
}

// The group ahead of this one whose keys it has; null: none.
const Group* sameAs(const Group& group) {
    for (const Group& earlier : settingWalk()) {
        if (&earlier == &group) return nullptr;
        if (earlier.blocks.data() == group.blocks.data()) return &earlier;
    }
    return nullptr;
}

}  // namespace

std::string settingKeysTable() {
    std::string table =
        "| Section | Key | Meaning | Unit and range | Which cameras, when | `tavra get` |\n"
        "|---|---|---|---|---|---|\n";
    for (const Group& group : settingWalk()) {
        if (const Group* const same = sameAs(group)) {
            table += row(code(group.section), "as in " + code(same->section), "", "",
                         describe(group.condition), "");
            continue;
        }
        for (const Block& block : group.blocks) {
            for (const Key& key : block.keys) {
                const std::string command = *key.command != '\0' ? code(key.command) : "";
                table += row(code(group.section), keyText(key, block.times), key.meaning, key.values,
                             cameras(group, block.times), command);
            }
        }
    }
    return table;
}

}  // namespace tavra
