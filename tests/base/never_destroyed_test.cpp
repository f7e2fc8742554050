#include "base/never_destroyed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace tavra {
namespace {

int made = 0;
int destroyed = 0;

struct Counted {
    Counted() { ++made; }
    ~Counted() { ++destroyed; }
    alignas(64) int value = 7;
};

TEST(NeverDestroyed, MakesItsObjectOnceAndLeavesItAlone) {
    {
        NeverDestroyed<Counted> holder;
        EXPECT_EQ(made, 1);
        EXPECT_EQ(holder.get().value, 7);
        holder.get().value = 8;
        EXPECT_EQ(holder.get().value, 8);
        EXPECT_EQ(&holder.get(), &holder.get());
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&holder.get()) % alignof(Counted), 0u);
    }
    EXPECT_EQ(made, 1);
    EXPECT_EQ(destroyed, 0);
}

// A static of it has nothing to do when the library goes.
static_assert(std::is_trivially_destructible_v<NeverDestroyed<Counted>>);

}  // namespace
}  // namespace tavra
