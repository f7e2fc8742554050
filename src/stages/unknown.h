// The base of all stage interfaces: an object that is shared by count and destroys itself with the last
// release. Counting is atomic, any thread; what else a stage allows is said by its own header.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace tavra {

// The slot order is part of the contract: a stage interface adds its operations behind these two, and none of
// them is a destructor.
class ISUnknown {
  public:
    virtual std::uint32_t AddRef() = 0;   // the new count
    virtual std::uint32_t Release() = 0;  // the remaining count; at 0 the object is gone

  protected:
    ~ISUnknown() = default;
};

// The count for the class `Stage`, which implements `Interface`:
// class CGamma final : public CountedStage<CGamma, IGamma>.
//
// A new object has count 0; whoever made it (the factory) takes the first reference.
template <class Stage, class Interface>
class CountedStage : public Interface {
  public:
    CountedStage(const CountedStage&) = delete;
    CountedStage& operator=(const CountedStage&) = delete;

    std::uint32_t AddRef() override { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }

    std::uint32_t Release() override {
        static_assert(std::is_final_v<Stage>, "the class that is deleted is the class that was made");
        const std::uint32_t remaining = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (remaining == 0) delete static_cast<Stage*>(this);
        return remaining;
    }

  protected:
    CountedStage() = default;
    ~CountedStage() = default;

  private:
    std::atomic<std::uint32_t> count_{0};
};

}  // namespace tavra
