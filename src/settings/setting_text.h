// Values of a setting file as text, and back. Pure; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavra {

// How the value of a key is written and read. All are decimal.
enum class Form : std::uint8_t {
    Byte,           // written signed, which a byte never shows; digits, counted in 8 bits
    UnsignedByte,   // the same, written unsigned
    Number,         // written as 32 bits signed; digits only
    Word,           // the same, of which the low 16 bits count
    Unsigned,       // written as 32 bits unsigned; digits only
    UnsignedWord,   // the same, of which the low 16 bits count
    Position,       // 32 bits signed; digits and minus signs, less than 2^30
    Signed16,       // 16 bits signed, kept as the low 16 bits; digits and minus signs
    ProfileNumber,  // written unsigned; read as platform::profileNumber does
    ProfileWord,    // the same, of which the low 16 bits count
};

// Of a key that a file does not have, or not as a number of digits: these never give it, because a number
// with bit 31 set does not come back from a file.
inline constexpr std::uint32_t kNoValue = 0xFFFFFFFF;

std::u16string textOf(Form form, std::uint32_t value);

// The value that a text stands for, or `present` for a text that is none in this form.
//
// Digits: a character that is none, or a number that turns negative in 32 bits on its way, is no value; so a
// number with bit 31 set never comes back. One that wraps past that unseen is taken as it then stands. A byte
// wraps in 8 bits. No digits at all are 0.
std::uint32_t valueOf(Form form, std::u16string_view text, std::uint32_t present);

}  // namespace tavra
