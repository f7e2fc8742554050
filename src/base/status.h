// The result of every operation inside the library: success, or an error code of the public interface.
#pragma once

#include <cstdint>

#include "base/error_codes.h"

namespace tavra {

// A value to return and to look at; it cannot be dropped by accident. Any thread.
class [[nodiscard]] Status {
  public:
    constexpr Status() = default;  // success
    explicit constexpr Status(std::uint32_t code) : code_(code) {}

    constexpr bool ok() const { return code_ == error::kNone; }
    constexpr std::uint32_t code() const { return code_; }

    friend constexpr bool operator==(Status, Status) = default;

  private:
    std::uint32_t code_ = error::kNone;
};

}  // namespace tavra

// Leaves the function with the failure of `expression`, if it has one.
#define TAVRA_RETURN_IF_ERROR(expression)                                          \
    do {                                                                           \
        if (const ::tavra::Status tavraStatus = (expression); !tavraStatus.ok()) { \
            return tavraStatus;                                                    \
        }                                                                          \
    } while (false)
