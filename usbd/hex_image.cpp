#include "hex_image.h"

#include <algorithm>
#include <array>

#include "error_numbers.h"

namespace tavra::usbd {
namespace {

enum class RecordType : std::uint8_t {
    Data = 0,
    End = 1,
    SegmentBase = 2,
    SegmentStart = 3,
    LinearBase = 4,
    LinearStart = 5,
};

struct Record {
    RecordType type{};
    std::uint16_t address = 0;
    std::uint8_t count = 0;
    std::array<std::uint8_t, 255> data{};

    std::uint16_t word() const { return static_cast<std::uint16_t>(data[0] << 8 | data[1]); }
};

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// Takes the text apart into records.
class RecordReader {
  public:
    explicit RecordReader(std::string_view text) : text_(text) {}

    // False: what comes next is not a whole record with a right checksum.
    bool next(Record& record) {
        skipBlanks();
        if (at_ >= text_.size() || text_[at_] != ':') return false;
        ++at_;
        sum_ = 0;
        std::uint8_t high = 0, low = 0, type = 0, checksum = 0;
        if (!byte(record.count) || !byte(high) || !byte(low) || !byte(type)) return false;
        for (std::size_t i = 0; i < record.count; ++i) {
            if (!byte(record.data[i])) return false;
        }
        if (!byte(checksum) || sum_ != 0) return false;
        record.address = static_cast<std::uint16_t>(high << 8 | low);
        record.type = static_cast<RecordType>(type);
        return true;
    }

    bool onlyBlanksLeft() const {
        return std::all_of(text_.begin() + static_cast<std::ptrdiff_t>(at_), text_.end(),
                           [](char c) { return isBlank(c) || c == '\0'; });
    }

  private:
    void skipBlanks() {
        while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
    }

    bool byte(std::uint8_t& value) {
        if (text_.size() - at_ < 2) return false;
        const int high = digit(text_[at_]), low = digit(text_[at_ + 1]);
        if (high < 0 || low < 0) return false;
        value = static_cast<std::uint8_t>(high << 4 | low);
        sum_ = static_cast<std::uint8_t>(sum_ + value);
        at_ += 2;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::uint8_t sum_ = 0;
};

// Places the data of records, by the base address in force.
class ImageBuilder {
  public:
    ImageBuilder(std::span<std::uint8_t> image, std::span<std::uint8_t> mask) : image_(image), mask_(mask) {}

    ErrorCode place(const Record& record) {
        for (std::uint32_t i = 0; i < record.count; ++i) {
            const std::uint32_t address = addressOf(record.address, i);
            if (address >= image_.size()) return error::kBufferTooSmall;
            if (mask_[address] != 0) return error::kInvalidData;
            image_[address] = record.data[i];
            mask_[address] = 1;
            length_ = std::max(length_, address + 1);
        }
        return error::kNone;
    }

    void setBase(std::uint32_t base, bool segmented) {
        base_ = base;
        segmented_ = segmented;
    }

    std::uint32_t length() const { return length_; }

  private:
    // Within a segment the offset wraps at 64 KiB; linear addresses wrap at 4 GiB.
    std::uint32_t addressOf(std::uint16_t offset, std::uint32_t i) const {
        return base_ + (segmented_ ? (offset + i) & 0xFFFF : offset + i);
    }

    std::span<std::uint8_t> image_, mask_;
    std::uint32_t base_ = 0;
    bool segmented_ = false;
    std::uint32_t length_ = 0;
};

bool hasRightForm(const Record& record) {
    switch (record.type) {
        case RecordType::Data: return true;
        case RecordType::End: return record.count == 0;
        case RecordType::SegmentBase:
        case RecordType::LinearBase: return record.count == 2 && record.address == 0;
        case RecordType::SegmentStart:
        case RecordType::LinearStart: return record.count == 4 && record.address == 0;
    }
    return false;
}

}  // namespace

ErrorCode parseHexImage(std::string_view text, std::span<std::uint8_t> image, std::span<std::uint8_t> mask,
                        std::uint32_t& length) {
    std::fill(image.begin(), image.end(), std::uint8_t{0});
    std::fill(mask.begin(), mask.end(), std::uint8_t{0});
    length = 0;
    RecordReader reader(text);
    ImageBuilder builder(image, mask);
    for (Record record; reader.next(record);) {
        if (!hasRightForm(record)) return error::kInvalidData;
        switch (record.type) {
            case RecordType::End:
                if (!reader.onlyBlanksLeft()) return error::kInvalidData;
                length = builder.length();
                return error::kNone;
            case RecordType::Data:
                if (const ErrorCode result = builder.place(record); result != error::kNone) return result;
                break;
            case RecordType::SegmentBase: builder.setBase(std::uint32_t{record.word()} << 4, true); break;
            case RecordType::LinearBase: builder.setBase(std::uint32_t{record.word()} << 16, false); break;
            case RecordType::SegmentStart:
            case RecordType::LinearStart: break;
        }
    }
    return error::kInvalidData;
}

}  // namespace tavra::usbd
