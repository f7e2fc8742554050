// Calls an operation of an interface as callers that hold no header of ours do: by its slot in the object's
// table of virtual functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tavra::test {

// With the object as the hidden first argument. The arguments' types are those of the operation.
template <class Result = std::uint32_t, class Object, class... Arguments>
Result callSlot(Object* object, std::size_t slot, Arguments... arguments) {
    using Operation = Result (*)(Object*, Arguments...);
    static_assert(sizeof(Operation) == sizeof(void*));
    const unsigned char* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    Operation operation = nullptr;
    std::memcpy(&operation, table + slot * sizeof operation, sizeof operation);
    return operation(object, arguments...);
}

}  // namespace tavra::test
