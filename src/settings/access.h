// How the values of one group of settings are read from a camera and given to it: through the functions of
// the public interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <utility>

#include "settings/setting_camera.h"

namespace tavra {

// Both give false when a function of the interface failed; the last error of the handle then says why. The
// values are in the order of the group's keys, each as the low bits of a 32-bit number.
struct Access {
    bool (*get)(ISettingCamera& camera, std::span<std::uint32_t> values) = nullptr;
    bool (*set)(ISettingCamera& camera, std::span<const std::uint32_t> values) = nullptr;
};

namespace detail {

template <auto Get, auto Set, typename... Numbers>
constexpr Access directAccess(TavraBool (*)(TavraHandle, Numbers...)) {
    return {[](ISettingCamera& camera, std::span<std::uint32_t> values) {
                return [&]<std::size_t... i>(std::index_sequence<i...>) {
                    std::tuple<Numbers...> read{};
                    const TavraBool good = Get(camera.handle(), &std::get<i>(read)...);
                    ((values[i] = std::get<i>(read)), ...);
                    return good != 0;
                }
                (std::index_sequence_for<Numbers...>());
            },
            [](ISettingCamera& camera, std::span<const std::uint32_t> values) {
                return [&]<std::size_t... i>(std::index_sequence<i...>) {
                    return Set(camera.handle(), static_cast<Numbers>(values[i])...) != 0;
                }
                (std::index_sequence_for<Numbers...>());
            }};
}

}  // namespace detail

// A pair of functions that take and give the group's values one by one, in the order of its keys.
template <auto Get, auto Set>
constexpr Access direct() {
    return detail::directAccess<Get, Set>(Set);
}

}  // namespace tavra
