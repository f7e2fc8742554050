#include "toml_fields.h"

#include <algorithm>
#include <cmath>

namespace tavra::usbd {
namespace {

std::string rangeText(std::uint64_t least, std::uint64_t most) {
    return "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most);
}

bool inRange(const toml::node& node, std::uint64_t least, std::uint64_t most, std::uint64_t& value) {
    const auto* const number = node.as_integer();
    if (number == nullptr || number->get() < 0) return false;
    value = static_cast<std::uint64_t>(number->get());
    return value >= least && value <= most;
}

bool inRange(const toml::node& node, double least, double most, double& value) {
    if (const auto* const number = node.as_floating_point()) {
        value = number->get();
    } else if (const auto* const whole = node.as_integer()) {
        value = static_cast<double>(whole->get());
    } else {
        return false;
    }
    return std::isfinite(value) && value >= least && value <= most;
}

std::string listOf(std::initializer_list<std::string_view> words) {
    std::string list;
    for (const std::string_view each : words) list += (list.empty() ? "" : ", ") + std::string(each);
    return list;
}

std::string realRangeText(double least, double most) {
    return "must be a number from " + std::to_string(least) + " to " + std::to_string(most);
}

}  // namespace

std::string TomlFields::dotted(std::string_view key) const {
    return name_.empty() ? std::string(key) : name_ + "." + std::string(key);
}

void TomlFields::complain(std::string_view key, const std::string& what) {
    complaint_.set(dotted(key) + " " + what);
}

const toml::node* TomlFields::take(std::string_view key) {
    taken_.emplace(key);
    return table_ != nullptr ? table_->get(key) : nullptr;
}

bool TomlFields::whole(std::string_view key, std::uint64_t& value, std::uint64_t least, std::uint64_t most) {
    const toml::node* const node = take(key);
    if (node == nullptr) return false;
    if (inRange(*node, least, most, value)) return true;
    complain(key, rangeText(least, most));
    return false;
}

void TomlFields::real(std::string_view key, double& value, double least, double most) {
    const toml::node* const node = take(key);
    if (node == nullptr) return;
    double number = 0;
    if (inRange(*node, least, most, number)) {
        value = number;
    } else {
        complain(key, realRangeText(least, most));
    }
}

bool TomlFields::realOrWord(std::string_view key, double& value, double least, double most,
                            std::initializer_list<std::string_view> words, std::size_t& index) {
    const toml::node* const node = take(key);
    if (node == nullptr) return false;
    double number = 0;
    if (inRange(*node, least, most, number)) {
        value = number;
        return false;
    }
    const auto* const string = node->as_string();
    const auto found = string != nullptr ? std::find(words.begin(), words.end(), string->get()) : words.end();
    index = static_cast<std::size_t>(found - words.begin());
    if (found != words.end()) return true;
    complain(key, realRangeText(least, most) + ", or one of " + listOf(words));
    return false;
}

void TomlFields::flag(std::string_view key, bool& value) {
    const toml::node* const node = take(key);
    if (node == nullptr) return;
    if (const auto* const boolean = node->as_boolean()) {
        value = boolean->get();
    } else {
        complain(key, "must be true or false");
    }
}

void TomlFields::text(std::string_view key, std::string& value, std::size_t mostBytes) {
    const toml::node* const node = take(key);
    if (node == nullptr) return;
    const auto* const string = node->as_string();
    if (string != nullptr && string->get().size() <= mostBytes) {
        value = string->get();
    } else {
        complain(key, "must be a text of at most " + std::to_string(mostBytes) + " bytes");
    }
}

bool TomlFields::word(std::string_view key, std::initializer_list<std::string_view> words,
                      std::size_t& index) {
    const toml::node* const node = take(key);
    if (node == nullptr) return false;
    const auto* const string = node->as_string();
    const auto found = string != nullptr ? std::find(words.begin(), words.end(), string->get()) : words.end();
    if (found == words.end()) {
        complain(key, "must be one of " + listOf(words));
        return false;
    }
    index = static_cast<std::size_t>(found - words.begin());
    return true;
}

bool TomlFields::numbers(std::string_view key, std::vector<std::uint64_t>& values, std::uint64_t most,
                         std::size_t longest) {
    const toml::node* const node = take(key);
    if (node == nullptr) return false;
    const toml::array* const array = node->as_array();
    bool good = array != nullptr && array->size() <= longest;
    values.clear();
    for (std::size_t i = 0; good && i < array->size(); ++i) {
        std::uint64_t value = 0;
        good = inRange((*array)[i], 0, most, value);
        values.push_back(value);
    }
    if (!good) {
        complain(key, "must be an array of at most " + std::to_string(longest) + " whole numbers from 0 to " +
                          std::to_string(most));
    }
    return good;
}

bool TomlFields::reals(std::string_view key, std::vector<double>& values, double least, double most,
                       std::size_t count) {
    const toml::node* const node = take(key);
    if (node == nullptr) return false;
    const toml::array* const array = node->as_array();
    bool good = array != nullptr && array->size() == count;
    values.clear();
    for (std::size_t i = 0; good && i < array->size(); ++i) {
        double value = 0;
        good = inRange((*array)[i], least, most, value);
        values.push_back(value);
    }
    if (!good) complain(key, "must be an array of " + std::to_string(count) + " numbers");
    return good;
}

TomlFields TomlFields::table(std::string_view key) {
    const toml::node* const node = take(key);
    if (node != nullptr && node->as_table() == nullptr) complain(key, "must be a table");
    return {node != nullptr ? node->as_table() : nullptr, dotted(key), complaint_};
}

std::vector<TomlFields> TomlFields::tables(std::string_view key, std::size_t most) {
    std::vector<TomlFields> all;
    const toml::node* const node = take(key);
    if (node == nullptr) return all;
    const toml::array* const array = node->as_array();
    if (array == nullptr || array->size() > most) {
        complain(key, "must be an array of at most " + std::to_string(most) + " tables");
        return all;
    }
    for (const toml::node& each : *array) {
        if (each.as_table() == nullptr) complain(key, "must be an array of tables");
        all.emplace_back(each.as_table(), dotted(key), complaint_);
    }
    return all;
}

std::vector<std::string> TomlFields::takeAllKeys() {
    std::vector<std::string> keys;
    if (table_ == nullptr) return keys;
    for (const auto& [key, node] : *table_) {
        keys.emplace_back(key.str());
        taken_.emplace(key.str());
    }
    return keys;
}

void TomlFields::finish() {
    if (table_ == nullptr) return;
    for (const auto& [key, node] : *table_) {
        if (!taken_.contains(key.str())) complain(key.str(), "is not a known field");
    }
}

}  // namespace tavra::usbd
