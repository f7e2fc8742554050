// Named sections and keys in text files:
//
//     [Clock-0123]
//     ClockMode=0
//
// One own reader and writer on every platform, so that they give the same bytes. A file is read once, changed
// in memory and replaced whole; what is not a key that was set stays byte for byte: other sections, comments,
// order, line ends.
//
// - The encoding is the file's own: UTF-16 in either byte order by its mark, else single bytes, which are
//   taken and given back as they are; a mark of UTF-8 ahead of them is no text, and stays. A new file is
//   UTF-16, little endian, with a mark. Half a unit at the end, of a file that was cut, is no text, and stays
//   where it is.
// - A line ends with CR LF, LF or CR. A section begins with a line [name]; the name ends at the line's last
//   bracket, and blanks around it are no part of it. The first section of a name counts, and the first key of
//   a name in it. Capitals and small ASCII letters are the same.
// - A key is what stands ahead of the first "=", without blanks around it; so is the value behind it, which a
//   pair of quotes may enclose. A line without "=", or that begins with ";", is no key.
//
// A ProfileText belongs to one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"

namespace tavra::platform {

class ProfileText {
  public:
    ProfileText() = default;  // of a file that is not there yet
    explicit ProfileText(std::span<const std::uint8_t> bytes);

    // The value of a key. Nothing: there is no such key.
    std::optional<std::u16string> find(std::u16string_view section, std::u16string_view key);

    // Gives a key its value. A new key comes behind the last line of its section, a new section behind all.
    void set(std::u16string_view section, std::u16string_view key, std::u16string_view value);

    // The text as a file holds it.
    std::vector<std::uint8_t> bytes() const;

  private:
    enum class Encoding { Wide, WideSwapped, Bytes };

    struct Entry {
        std::size_t begin = 0, end = 0;  // of the value in the text, with its quotes
        std::u16string value;
        bool changed = false;
    };
    struct Section {
        std::size_t begin = 0, end = 0;  // of its lines; both the end of the text for a new one
        std::size_t insertAt = 0;        // behind its last line that is not empty
        std::u16string header;           // as written, of a new section
        bool indexed = false;
        std::map<std::u16string, Entry> entries;                       // of the text, by folded name
        std::vector<std::pair<std::u16string, std::u16string>> added;  // new keys, in their order
    };

    void decode(std::span<const std::uint8_t> bytes);
    void findSections();
    void index(Section& section);
    void indexLine(Section& section, std::size_t begin, std::size_t end);
    Section* sectionNamed(std::u16string_view name);
    std::u16string edited() const;
    std::u16string linesOf(const Section& section) const;

    Encoding encoding_ = Encoding::Wide;
    std::u16string text_;               // without its mark; a single byte is a unit
    bool narrowMark_ = false;           // of UTF-8, ahead of single bytes
    std::optional<std::uint8_t> half_;  // of a unit, behind all
    std::u16string lineEnd_ = u"\r\n";
    std::map<std::u16string, Section> sections_;  // by folded name
    std::vector<std::u16string> newSections_;     // folded names, in their order
};

// Reads the file. One that is not there is an empty text. Throws std::bad_alloc.
Status readProfile(const std::u16string& name, ProfileText& text);
// Replaces the file.
Status writeProfile(const std::u16string& name, const ProfileText& text);
// Reads the file, lets `edit` change it, and replaces it: nobody else who does this loses what they set, and
// no file is torn (FileUpdateLock, with its error). `edit` must not take long.
Status updateProfile(const std::u16string& name, const std::function<void(ProfileText&)>& edit);

// The number in a value as the profile calls of Windows take it: blanks, a sign, digits up to the first other
// character, hexadecimal behind 0x; modulo 2^32. No digits: 0.
std::uint32_t profileNumber(std::u16string_view value);

}  // namespace tavra::platform
