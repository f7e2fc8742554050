// A device that remembers the control transfers it is asked for.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "device.h"

namespace tavra::usbd::test {

struct Transfer {
    ControlSetup setup;
    std::vector<std::uint8_t> sent;
    std::size_t length;
};

class FakeDevice : public Device {
  public:
    ErrorCode configDescriptor(std::span<std::uint8_t>, std::uint32_t&) override { return 0; }
    std::uint32_t functionAddress() const override { return 1; }
    std::uint32_t openCount() const override { return 1; }
    ErrorCode checkConfiguration(std::uint32_t&, std::uint32_t&) override { return 0; }
    void driverVersion(std::span<std::uint32_t, 4>) const override {}
    ErrorCode beginRead() override { return 0; }
    ErrorCode endRead() override {
        ++endReads;
        return 0;
    }
    bool canResumeRead() const override { return false; }
    ErrorCode startRead(void*, std::uint32_t, TavraUsbRead&) override { return 0; }
    ErrorCode readResult(TavraUsbRead&, std::uint32_t&, bool) override { return 0; }
    void* allocReadMemory(std::size_t) override { return nullptr; }
    void freeReadMemory(void*, std::size_t) override {}
    ErrorCode deviceControl(std::uint32_t) override { return 0; }

    // To the host: bytes that count up from the low byte of the value, or `reply` if that is not empty.
    ErrorCode controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                              std::uint32_t& transferred) override {
        Transfer transfer{setup, {}, data.size()};
        if (!setup.toHost()) transfer.sent.assign(data.begin(), data.end());
        transfers.push_back(transfer);
        if (transfers.size() == failAt) return 31;
        transferred = static_cast<std::uint32_t>(data.size());
        if (transfers.size() == shortAt) transferred /= 2;
        for (std::size_t i = 0; setup.toHost() && i < data.size(); ++i) {
            data[i] = i < reply.size() ? reply[i] : static_cast<std::uint8_t>(setup.value + i);
        }
        return 0;
    }

    std::vector<Transfer> transfers;
    std::vector<std::uint8_t> reply;
    std::size_t failAt = 0, shortAt = 0;  // counted from 1
    int endReads = 0;
};

}  // namespace tavra::usbd::test
