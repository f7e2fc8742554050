#include "platform/text.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cerrno>
#include <cstring>

namespace tavra::platform {
namespace {

// The encoding of the user's locale, whether the application has called setlocale or not.
std::string localeEncoding() {
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) return "UTF-8";
    std::string encoding = nl_langinfo_l(CODESET, locale);
    freelocale(locale);
    // The plain C locale names ASCII; file names there are UTF-8 in practice.
    return encoding.empty() || encoding == "ANSI_X3.4-1968" ? "UTF-8" : encoding;
}

const std::string& systemEncoding() {
    static const std::string encoding = localeEncoding();
    return encoding;
}

class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (valid()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Converts all of `input`; each unit of `unitBytes` bytes that cannot be converted becomes `substitute`.
    // `failures`, if given, tells how many did.
    std::string convert(std::string_view input, std::size_t unitBytes, std::string_view substitute,
                        std::size_t* failures = nullptr) {
        std::string output;
        if (!valid()) {
            if (failures != nullptr) *failures = input.size() / unitBytes;
            return output;
        }
        char* in = const_cast<char*>(input.data());  // iconv's interface; it does not write there
        std::size_t inLeft = input.size();
        while (inLeft > 0) {
            char buffer[256];
            char* out = buffer;
            std::size_t outLeft = sizeof buffer;
            const std::size_t result = iconv(handle_, &in, &inLeft, &out, &outLeft);
            const int reason = errno;
            output.append(buffer, sizeof buffer - outLeft);
            if (result == static_cast<std::size_t>(-1) && reason != E2BIG) {
                output.append(substitute);
                if (failures != nullptr) ++*failures;
                const std::size_t skipped = inLeft < unitBytes ? inLeft : unitBytes;
                in += skipped;
                inLeft -= skipped;
                iconv(handle_, nullptr, nullptr, nullptr, nullptr);
            }
        }
        return output;
    }

  private:
    bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    iconv_t handle_;
};

std::string_view bytesOf(std::u16string_view wide) {
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * 2};
}

}  // namespace

std::u16string toWide(std::string_view narrow) {
    Converter converter("UTF-16LE", systemEncoding().c_str());
    const std::string bytes = converter.convert(narrow, 1, std::string_view("?\0", 2));
    std::u16string wide(bytes.size() / 2, u'\0');
    std::memcpy(wide.data(), bytes.data(), wide.size() * 2);
    return wide;
}

std::string toNarrow(std::u16string_view wide) {
    Converter converter(systemEncoding().c_str(), "UTF-16LE");
    return converter.convert(bytesOf(wide), 2, "?");
}

std::optional<std::string> toNarrowExactly(std::u16string_view wide) {
    Converter converter(systemEncoding().c_str(), "UTF-16LE");
    std::size_t failures = 0;
    std::string narrow = converter.convert(bytesOf(wide), 2, "?", &failures);
    if (failures != 0) return std::nullopt;
    return narrow;
}

}  // namespace tavra::platform
