// The text form of one key: what the registry's editor writes, with a first line of its own, in UTF-16 with a
// mark. docs/settings.md tells the form.
//
// The writer ends lines with a line feed. The reader takes what the writer gives, and the editor's own files
// as far as they have numbers and bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/key_tree.h"

namespace tavra {

// The lines of one key; `values` in their order.
std::u16string regText(const std::u16string& path, const std::vector<platform::TreeValue>& values);

// What a text says: the first of its keys whose path begins with `prefix`, and the values behind that.
struct RegText {
    bool hasForm = false;  // the mark and the first line are right
    bool hasKey = false;
    std::u16string path;
    std::vector<platform::TreeValue> values;  // numbers and bytes
};
RegText parseRegText(std::vector<std::uint8_t> bytes, std::u16string_view prefix);

// Writes the key at `path` to a file. False, with the system's last error set: there is no such key, and no
// file is made, or the file cannot be written.
bool ExportKey(const std::u16string& fileName, const std::u16string& path);

// Reads a file into the tree. False, with the system's last error set: the file cannot be read, has another
// form, has no key under `prefix`, or no value of bytes; numbers are taken over then. Or the store does not
// take a value: on Linux none of the file is in it then, on Windows those ahead of that one. `confirm`, if
// given, is asked when the key exists already; its answer 7 ends the import with true.
bool ImportKey(const std::u16string& fileName, const std::u16string& prefix,
               const std::function<std::uint32_t()>& confirm = nullptr);

}  // namespace tavra
