// The identity records that a camera stores: a number and a short text each, one of the maker, one of the
// user.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/status.h"
#include "camera/control_channel.h"
#include "tavra/tavra_types.h"

namespace tavra {

// 256 bytes: ID, a flag for UTF-16 text, the text's length in bytes, the text. A value; whoever wants to read
// or write one has it.
class IdentityRecord {
  public:
    static constexpr std::size_t kSize = 256;

    enum class Place : std::uint32_t { Serial = 0, User = 256 };  // address in the non-volatile memory

    IdentityRecord() = default;  // ID 0, no text

    // A record with text from a caller's buffer of `size` bytes (null or 0: none). Text that is too long is
    // cut.
    static IdentityRecord withNarrow(std::uint32_t id, const char* text, std::uint32_t size);
    static IdentityRecord withWide(std::uint32_t id, const TavraWChar* text, std::uint32_t size);

    std::uint32_t id() const;

    // Puts the text into a zeroed buffer, converted where the record holds the other kind. Text as long as
    // the buffer fills it without a terminator.
    void copyText(std::span<char> buffer) const;
    void copyText(std::span<TavraWChar> buffer, std::uint32_t bufferBytes) const;

    std::array<std::uint8_t, kSize>& bytes() { return bytes_; }
    const std::array<std::uint8_t, kSize>& bytes() const { return bytes_; }

  private:
    void setText(const void* text, std::size_t length);
    bool isWide() const;
    std::size_t textLength() const;  // bytes; 0 where the record holds none
    const std::uint8_t* text() const { return &bytes_[6]; }

    std::array<std::uint8_t, kSize> bytes_{};
};

// A record that could not be read whole is empty. 0xE0000005. Any thread.
Status readIdentity(const ControlChannel& control, IdentityRecord::Place place, IdentityRecord& record);
Status writeIdentity(const ControlChannel& control, IdentityRecord::Place place,
                     const IdentityRecord& record);

}  // namespace tavra
