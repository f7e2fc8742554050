// A recorder of a test's own: movies in memory, and a layout that keeps what it is given and stops on order.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "media/movie/create_avi.h"
#include "platform/event.h"
#include "support/movie_files_double.h"

namespace tavra::test {

using Bytes = std::vector<std::uint8_t>;

// What the test's layout has seen. One recording at a time.
class LayoutLog {
  public:
    struct Frame {
        std::uint32_t index = 0;
        std::uint32_t tag = 0;
        Bytes image;
        friend bool operator==(const Frame&, const Frame&) = default;
    };

    LayoutLog() { current = this; }
    ~LayoutLog() { current = nullptr; }
    LayoutLog(const LayoutLog&) = delete;
    LayoutLog& operator=(const LayoutLog&) = delete;

    bool bottomUp = false;
    std::uint32_t failWith = 0;  // of every write, and of the close behind them
    std::uint32_t failFrom = 0;  // the index of the first that fails
    bool prepareThrows = false;  // std::bad_alloc
    std::uint16_t format = 0;    // that was asked for
    std::uint32_t compressor = 0;

    void add(Frame frame) {
        const std::lock_guard lock(mutex_);
        frames_.push_back(std::move(frame));
    }
    std::vector<Frame> frames() const {
        const std::lock_guard lock(mutex_);
        return frames_;
    }
    movie::MovieSettings settings;  // of the last frame

    // While closed, the writer stops in its next frame, and says so.
    platform::Event gate{platform::Event::Reset::Manual, true};
    platform::Event stopped{platform::Event::Reset::Manual};

    static inline LayoutLog* current = nullptr;

  private:
    mutable std::mutex mutex_;
    std::vector<Frame> frames_;
};

class TestLayout final : public movie::CAVIFile {
  public:
    explicit TestLayout(movie::MovieFiles& files) : CAVIFile(files) {}
    ~TestLayout() override { Stop(); }

    bool StoresBottomUp() const override { return LayoutLog::current->bottomUp; }
    Status PrepareHeader() override {
        if (LayoutLog::current->prepareThrows) throw std::bad_alloc();
        return {};
    }
    Status OpenFile(const std::u16string& name, std::unique_ptr<movie::FileRecord>& record) override {
        record = std::make_unique<movie::FileRecord>();
        return files_.create(name, record->file);
    }
    Status WriteFrame(movie::FileRecord&, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override {
        LayoutLog& log = *LayoutLog::current;
        log.settings = settings;
        log.add({index, tag, Bytes(image, image + settings.imageBytes)});
        if (!log.gate.wait(0)) log.stopped.set();
        log.gate.wait(platform::kWaitForever);
        return Status(index >= log.failFrom ? log.failWith : 0);
    }
    Status CloseFile(movie::FileRecord& record) override {
        const Status closed = record.file->close();
        return LayoutLog::current->failWith != 0 ? Status(LayoutLog::current->failWith) : closed;
    }

    static std::unique_ptr<movie::CAVIFile> make(std::uint16_t format, std::uint32_t compressor,
                                                 movie::MovieFiles& files) {
        LayoutLog::current->format = format;
        LayoutLog::current->compressor = compressor;
        if (format == movie::movie_format::kSmf) return movie::makeMovieWriter(format, compressor, files);
        return std::make_unique<TestLayout>(files);
    }
};

inline std::uint64_t freeMemoryOfTest = std::uint64_t{1} << 40;

// The last reference of a recorder that finds the test's things around it.
class Recorder {
  public:
    explicit Recorder(movie::MovieFiles& files)
        : object_(new movie::CCreateAVI({&files, [] { return freeMemoryOfTest; }, &TestLayout::make})) {
        object_->AddRef();
    }
    ~Recorder() { release(); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    movie::CCreateAVI* operator->() const { return object_; }
    movie::CCreateAVI& operator*() const { return *object_; }
    void release() {
        if (object_ != nullptr) object_->Release();
        object_ = nullptr;
    }

    // A frame that is taken.
    void write(const Bytes& image, std::uint32_t number, std::uint32_t tag = 0) {
        std::uint32_t ended = 7;
        EXPECT_EQ(object_->WriteFrame(image.data(), number, tag, &ended), 0u);
        EXPECT_EQ(ended, 0u) << "frame " << number;
    }
    // Frames from `number` on until the writer's end is told, and its status with it; how many were taken.
    std::uint32_t writeUntilEnded(const Bytes& image, std::uint32_t number) {
        for (std::uint32_t taken = 0;; ++taken) {
            std::uint32_t ended = 0;
            EXPECT_EQ(object_->WriteFrame(image.data(), number + taken, 0, &ended), 0u);
            if (ended == 0) continue;
            while (status() == 1) std::this_thread::yield();  // the writer's last act
            return taken;
        }
    }
    std::uint8_t status() const {
        std::uint8_t status = 9;
        EXPECT_EQ(object_->GetStatus(&status), 0u);
        return status;
    }
    std::uint32_t position() const {
        std::uint32_t position = 0;
        EXPECT_EQ(object_->GetPosition(&position), 0u);
        return position;
    }

  private:
    movie::CCreateAVI* object_;
};

// Bytes that differ, for an image of so many.
inline Bytes pattern(std::size_t size, std::uint8_t first = 1) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(first + 7 * i + (i >> 5));
    return bytes;
}

}  // namespace tavra::test
