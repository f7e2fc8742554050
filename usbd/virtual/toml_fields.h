// Strict reading of TOML tables: every field has a type and a range, every key must be known. The first thing
// that is wrong is kept as a line of text, with the dotted name of the field. Used while a model is read; one
// thread.
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "toml_include.h"

namespace tavra::usbd {

// The first complaint about a file.
class Complaint {
  public:
    void set(const std::string& text) {
        if (text_.empty()) text_ = text;
    }
    bool any() const { return !text_.empty(); }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

// One table. The caller asks for each field it knows and calls finish(), which complains of the keys that are
// left.
class TomlFields {
  public:
    TomlFields(const toml::table* table, std::string name, Complaint& complaint)
        : table_(table), name_(std::move(name)), complaint_(complaint) {}

    bool present() const { return table_ != nullptr; }
    const std::string& name() const { return name_; }
    Complaint& complaint() { return complaint_; }

    // Each leaves `value` alone when the key is missing.
    template <std::unsigned_integral Number>
    void number(std::string_view key, Number& value, std::uint64_t least = 0,
                std::uint64_t most = std::numeric_limits<Number>::max()) {
        std::uint64_t wide = 0;
        if (whole(key, wide, least, most)) value = static_cast<Number>(wide);
    }
    void real(std::string_view key, double& value, double least, double most);
    // A number, or one of `words`: true with its index where it is a word.
    bool realOrWord(std::string_view key, double& value, double least, double most,
                    std::initializer_list<std::string_view> words, std::size_t& index);
    void flag(std::string_view key, bool& value);
    void text(std::string_view key, std::string& value, std::size_t mostBytes);

    // A word out of `words`, which stand for 0, 1, 2 ... of the enumeration.
    template <typename Enumeration>
    void choice(std::string_view key, Enumeration& value, std::initializer_list<std::string_view> words) {
        std::size_t index = 0;
        if (word(key, words, index)) value = static_cast<Enumeration>(index);
    }

    // An array of whole numbers, at most `longest` of them; false when the key is missing or wrong.
    bool numbers(std::string_view key, std::vector<std::uint64_t>& values, std::uint64_t most,
                 std::size_t longest);
    bool reals(std::string_view key, std::vector<double>& values, double least, double most,
               std::size_t count);

    TomlFields table(std::string_view key);
    std::vector<TomlFields> tables(std::string_view key, std::size_t most);

    // The keys of a table whose keys are data (numbers), each taken.
    std::vector<std::string> takeAllKeys();

    void finish();
    void complain(std::string_view key, const std::string& what);

  private:
    const toml::node* take(std::string_view key);
    bool whole(std::string_view key, std::uint64_t& value, std::uint64_t least, std::uint64_t most);
    bool word(std::string_view key, std::initializer_list<std::string_view> words, std::size_t& index);
    std::string dotted(std::string_view key) const;

    const toml::table* table_;
    std::string name_;
    Complaint& complaint_;
    std::set<std::string, std::less<>> taken_;
};

}  // namespace tavra::usbd
