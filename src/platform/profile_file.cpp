#include "platform/profile_file.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"
#include "platform/whole_file.h"

namespace tavra::platform {
namespace {

constexpr char16_t kMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;
constexpr std::array<std::uint8_t, 3> kNarrowMark{0xEF, 0xBB, 0xBF};  // the same in UTF-8

char16_t swapped(char16_t unit) {
    return static_cast<char16_t>(unit << 8 | unit >> 8);
}

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t';
}
bool isLineEnd(char16_t unit) {
    return unit == u'\r' || unit == u'\n';
}

std::u16string folded(std::u16string_view name) {
    std::u16string text(name);
    for (char16_t& unit : text) {
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    }
    return text;
}

// Moves both ends inwards over blanks.
void trim(std::u16string_view text, std::size_t& begin, std::size_t& end) {
    while (begin < end && isBlank(text[begin])) ++begin;
    while (begin < end && isBlank(text[end - 1])) --end;
}

std::u16string_view withoutQuotes(std::u16string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == u'"' || value.front() == u'\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

struct Line {
    std::size_t begin, end;  // without its line end
    std::size_t next;        // where the next one begins
};

Line lineAt(std::u16string_view text, std::size_t begin) {
    std::size_t end = begin;
    while (end < text.size() && !isLineEnd(text[end])) ++end;
    std::size_t next = end;
    if (next < text.size())
        next += text[next] == u'\r' && next + 1 < text.size() && text[next + 1] == u'\n' ? 2 : 1;
    return {begin, end, next};
}

// The name in a line [name], without blanks around it; nothing: the line is something else.
std::optional<std::u16string_view> headerIn(std::u16string_view text, Line line) {
    trim(text, line.begin, line.end);
    if (line.begin == line.end || text[line.begin] != u'[') return std::nullopt;
    const std::u16string_view inside = text.substr(line.begin + 1, line.end - line.begin - 1);
    std::size_t begin = 0, end = inside.rfind(u']');
    if (end == inside.npos) return std::nullopt;
    trim(inside, begin, end);
    return inside.substr(begin, end - begin);
}

}  // namespace

ProfileText::ProfileText(std::span<const std::uint8_t> bytes) {
    decode(bytes);
    findSections();
}

void ProfileText::decode(std::span<const std::uint8_t> bytes) {
    encoding_ = Encoding::Bytes;
    if (bytes.size() >= 2) {
        const char16_t first = loadLe16(bytes.data());
        if (first == kMark) encoding_ = Encoding::Wide;
        if (first == kSwappedMark) encoding_ = Encoding::WideSwapped;
    }
    if (encoding_ == Encoding::Bytes) {
        narrowMark_ = bytes.size() >= kNarrowMark.size() &&
                      std::ranges::equal(bytes.first(kNarrowMark.size()), kNarrowMark);
        if (narrowMark_) bytes = bytes.subspan(kNarrowMark.size());
        text_.assign(bytes.begin(), bytes.end());
        return;
    }
    text_.resize(bytes.size() / 2 - 1);
    if (bytes.size() % 2 != 0) half_ = bytes.back();
    for (std::size_t i = 0; i < text_.size(); ++i) {
        const char16_t unit = loadLe16(&bytes[2 * i + 2]);
        text_[i] = encoding_ == Encoding::Wide ? unit : swapped(unit);
    }
}

void ProfileText::findSections() {
    bool lineEndKnown = false;
    Section* open = nullptr;
    const auto close = [&open](std::size_t at) {
        if (open != nullptr) open->end = at;
        open = nullptr;
    };
    for (std::size_t at = 0; at < text_.size();) {
        const Line line = lineAt(text_, at);
        if (!lineEndKnown && line.next > line.end) {
            lineEnd_ = text_.substr(line.end, line.next - line.end);
            lineEndKnown = true;
        }
        if (const auto name = headerIn(text_, line)) {
            close(line.begin);
            const auto [place, isFirst] = sections_.try_emplace(folded(*name));
            if (isFirst) {
                open = &place->second;
                open->begin = open->insertAt = line.next;
            }
        } else if (open != nullptr) {
            std::size_t begin = line.begin, end = line.end;
            trim(text_, begin, end);
            if (begin < end) open->insertAt = line.next;
        }
        at = line.next;
    }
    close(text_.size());
}

void ProfileText::index(Section& section) {
    if (section.indexed) return;
    section.indexed = true;
    for (std::size_t at = section.begin; at < section.end;) {
        const Line line = lineAt(text_, at);
        indexLine(section, line.begin, line.end);
        at = line.next;
    }
}

void ProfileText::indexLine(Section& section, std::size_t begin, std::size_t end) {
    trim(text_, begin, end);
    const std::size_t equals = text_.find(u'=', begin);
    if (begin == end || text_[begin] == u';' || equals >= end) return;
    std::size_t keyEnd = equals;
    trim(text_, begin, keyEnd);
    Entry entry;
    entry.begin = equals + 1;
    entry.end = end;
    trim(text_, entry.begin, entry.end);
    entry.value = withoutQuotes(std::u16string_view(text_).substr(entry.begin, entry.end - entry.begin));
    section.entries.try_emplace(folded(std::u16string_view(text_).substr(begin, keyEnd - begin)),
                                std::move(entry));
}

ProfileText::Section* ProfileText::sectionNamed(std::u16string_view name) {
    const auto place = sections_.find(folded(name));
    if (place == sections_.end()) return nullptr;
    index(place->second);
    return &place->second;
}

std::optional<std::u16string> ProfileText::find(std::u16string_view section, std::u16string_view key) {
    Section* const found = sectionNamed(section);
    if (found == nullptr) return std::nullopt;
    const std::u16string name = folded(key);
    const auto entry = found->entries.find(name);
    if (entry != found->entries.end()) return entry->second.value;
    for (const auto& [addedKey, value] : found->added) {
        if (folded(addedKey) == name) return value;
    }
    return std::nullopt;
}

void ProfileText::set(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
    Section* place = sectionNamed(section);
    if (place == nullptr) {
        const std::u16string name = folded(section);
        place = &sections_[name];
        place->begin = place->end = place->insertAt = text_.size();
        place->header = section;
        place->indexed = true;
        newSections_.push_back(name);
    }
    const std::u16string name = folded(key);
    const auto entry = place->entries.find(name);
    if (entry != place->entries.end()) {
        if (entry->second.value == value) return;
        entry->second.value = value;
        entry->second.changed = true;
        return;
    }
    for (auto& [addedKey, addedValue] : place->added) {
        if (folded(addedKey) == name) {
            addedValue = value;
            return;
        }
    }
    place->added.emplace_back(key, value);
}

std::u16string ProfileText::linesOf(const Section& section) const {
    std::u16string lines;
    for (const auto& [key, value] : section.added) {
        lines.append(key).append(u"=").append(value).append(lineEnd_);
    }
    return lines;
}

std::u16string ProfileText::edited() const {
    struct Edit {
        std::size_t begin, end;
        std::u16string text;
        bool ownLine;
    };
    std::vector<Edit> edits;
    for (const auto& [name, section] : sections_) {
        for (const auto& [key, entry] : section.entries) {
            if (entry.changed) edits.push_back({entry.begin, entry.end, entry.value, false});
        }
    }
    // A value and a line may begin at the same place, the end of the text; then the value is first.
    for (const auto& [name, section] : sections_) {
        if (!section.added.empty() && section.header.empty()) {
            edits.push_back({section.insertAt, section.insertAt, linesOf(section), true});
        }
    }
    for (const std::u16string& name : newSections_) {
        const Section& section = sections_.at(name);
        edits.push_back(
            {text_.size(), text_.size(), u"[" + section.header + u"]" + lineEnd_ + linesOf(section), true});
    }
    std::ranges::stable_sort(edits, {}, &Edit::begin);

    std::u16string result;
    std::size_t at = 0;
    for (const Edit& edit : edits) {
        result.append(text_, at, edit.begin - at);
        if (edit.ownLine && !result.empty() && !isLineEnd(result.back())) result += lineEnd_;
        result += edit.text;
        at = edit.end;
    }
    return result.append(text_, at, text_.size() - at);
}

std::vector<std::uint8_t> ProfileText::bytes() const {
    const std::u16string text = edited();
    if (encoding_ == Encoding::Bytes) {
        std::vector<std::uint8_t> single;
        single.reserve(kNarrowMark.size() + text.size());
        if (narrowMark_) single.assign(kNarrowMark.begin(), kNarrowMark.end());
        for (const char16_t unit : text)
            single.push_back(static_cast<std::uint8_t>(unit < 256 ? unit : u'?'));
        return single;
    }
    std::vector<std::uint8_t> wide(2 * text.size() + 2);
    const auto store = [&](std::size_t place, char16_t unit) {
        storeLe16(&wide[2 * place], encoding_ == Encoding::Wide ? unit : swapped(unit));
    };
    store(0, kMark);
    for (std::size_t i = 0; i < text.size(); ++i) store(i + 1, text[i]);
    if (half_) wide.push_back(*half_);
    return wide;
}

Status readProfile(const std::u16string& name, ProfileText& text) {
    std::vector<std::uint8_t> bytes;
    const Status read = readWholeFile(name, bytes);
    if (saysNoSuchFile(read)) {
        text = ProfileText();
        return Status();
    }
    TAVRA_RETURN_IF_ERROR(read);
    text = ProfileText(bytes);
    return Status();
}

Status writeProfile(const std::u16string& name, const ProfileText& text) {
    return replaceWholeFile(name, text.bytes());
}

Status updateProfile(const std::u16string& name, const std::function<void(ProfileText&)>& edit) {
    const FileUpdateLock lock(name);
    TAVRA_RETURN_IF_ERROR(lock.status());
    ProfileText text;
    TAVRA_RETURN_IF_ERROR(readProfile(name, text));
    edit(text);
    return writeProfile(name, text);
}

std::uint32_t profileNumber(std::u16string_view value) {
    std::size_t at = 0;
    while (at < value.size() && isBlank(value[at])) ++at;
    const bool negative = at < value.size() && value[at] == u'-';
    if (negative || (at < value.size() && value[at] == u'+')) ++at;
    const std::u16string prefix = folded(value.substr(at, 2));
    const std::uint32_t base = prefix == u"0x" ? 16 : 10;
    if (base == 16) at += 2;
    std::uint32_t number = 0;
    for (; at < value.size(); ++at) {
        const char16_t unit = folded(value.substr(at, 1))[0];
        std::uint32_t digit = 16;
        if (unit >= u'0' && unit <= u'9') digit = unit - u'0';
        if (unit >= u'a' && unit <= u'f') digit = unit - u'a' + 10u;
        if (digit >= base) break;
        number = number * base + digit;
    }
    return negative ? 0 - number : number;
}

}  // namespace tavra::platform
