// How an exported function gives its results out.
#pragma once

#include <cstdint>

#include "api/call.h"

namespace tavra::api {

// A null pointer where a result is to go is a bad argument; nothing is asked of the camera then.
template <typename... Outputs>
Status requireOutputs(const Outputs*... outputs) {
    return (... && (outputs != nullptr)) ? Status() : Status(error::kInvalidArgument);
}

// Stores a value where the caller wants it.
template <typename T>
void giveIfWanted(T* output, T value) {
    if (output != nullptr) *output = value;
}

// A getter of one number: `read(record, value)` gives a Status, and the number as the wider or the narrower
// type. What was read before a failure is not given out.
template <typename Output, typename Read>
TavraBool getNumber(TavraHandle handle, Output* output, Read read) {
    return call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(requireOutputs(output));
        std::uint32_t value = 0;
        TAVRA_RETURN_IF_ERROR(read(camera, value));
        *output = static_cast<Output>(value);
        return Status();
    });
}

}  // namespace tavra::api
