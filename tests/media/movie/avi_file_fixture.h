// A writer's thread with a layout that notes what it is asked.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "media/movie/avi_file.h"
#include "support/movie_files_double.h"

namespace tavra::test {

using movie::CAVIFile;
using movie::FileRecord;
using movie::FrameBuffer;
using movie::IAVIFileStatusListener;
using movie::PointerQueue;
using platform::kWaitForever;
using Log = std::vector<std::string>;

// What happened, in the order in which it did, of all threads.
class Journal {
  public:
    void add(std::string line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }
    Log lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    mutable std::mutex mutex_;
    Log lines_;
};

// Its files are names. A write is told as name, index, tag and first byte.
class NotingLayout final : public CAVIFile {
  public:
    NotingLayout(MovieFilesDouble& files, Journal& journal, std::uint64_t limit = kSizeLimit)
        : CAVIFile(files, limit), journal_(journal) {}
    ~NotingLayout() override { Stop(); }

    Status PrepareHeader() override {
        journal_.add("prepare");
        return Status(prepareResult);
    }
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) override {
        if (openResult != 0) return Status(openResult);
        record = std::make_unique<CountedRecord>();
        record->name = name;
        return {};
    }
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override {
        EXPECT_EQ(projectedSize_, index == 0 ? 0 : projectedFirst + bytesPerFrame * (index - 1));
        journal_.add(narrow(record.name) + " " + std::to_string(index) + " " + std::to_string(tag) + " " +
                     std::to_string(image[0]));
        projectedSize_ = projectedFirst + bytesPerFrame * index;
        if (outOfMemory.contains("write")) throw std::bad_alloc();
        return failingIndex == index ? Status(writeResult) : Status();
    }
    Status CloseFile(FileRecord& record) override {
        journal_.add("close " + narrow(record.name));
        if (outOfMemory.contains("close")) throw std::bad_alloc();
        if (closeResults.empty()) return {};
        const Status result(closeResults.front());
        closeResults.pop_front();
        return result;
    }
    Status Finish() override {
        journal_.add("finish");
        if (outOfMemory.contains("finish")) throw std::bad_alloc();
        return Status(finishResult);
    }
    std::uint64_t GetMaxFileSize() const override { return sizeLimit_; }

    void ordersColors() { encoderOrdersColors_ = true; }
    std::uint64_t limitFor(const std::u16string& name) {
        limitSizeByVolume(name);
        return sizeLimit_;
    }
    bool hasThread() const { return runs(); }

    // Files that were opened and not yet given back. They may outlive the layout's own members.
    static inline int records = 0;

    std::uint32_t prepareResult = 0;
    std::uint32_t openResult = 0;
    std::uint32_t finishResult = 0;
    std::deque<std::uint32_t> closeResults;  // of one file after the other
    std::optional<std::uint32_t> failingIndex;
    std::uint32_t writeResult = 0;
    std::set<std::string> outOfMemory;
    std::uint64_t projectedFirst = 0;  // projected size when frame 0 has been written
    std::uint64_t bytesPerFrame = 0;

  private:
    struct CountedRecord final : FileRecord {
        CountedRecord() { ++records; }
        ~CountedRecord() override { --records; }
    };

    static std::string narrow(const std::u16string& name) { return {name.begin(), name.end()}; }

    Journal& journal_;
};

class NotingListener final : public IAVIFileStatusListener {
  public:
    explicit NotingListener(Journal& journal) : journal_(journal) {}
    Status OnStatus(std::uint32_t event, std::uint32_t value) override {
        EXPECT_EQ(writer->ended().wait(0), event == kEnded) << "first the event, then the message";
        journal_.add(std::to_string(event) + " " + std::to_string(value));
        return Status(result);
    }

    const CAVIFile* writer = nullptr;
    std::uint32_t result = 0;

  private:
    Journal& journal_;
};

struct AviFileTest : testing::Test {
    MovieFilesDouble files;
    Journal journal;
    NotingListener listener{journal};
    PointerQueue<FrameBuffer> filled, free;
    std::deque<FrameBuffer> buffers;
    NotingLayout writer{files, journal};

    AviFileTest() {
        NotingLayout::records = 0;
        writer.filledFrames = &filled;
        writer.freeFrames = &free;
        writer.listener = &listener;
        listener.writer = &writer;
        writer.settings.imageBytes = 100;
    }

    // A frame of 100 bytes; its first byte and its tag follow from its position.
    FrameBuffer& makeFrame(std::uint32_t position) {
        FrameBuffer& frame = buffers.emplace_back();
        EXPECT_TRUE(frame.allocate(100).ok());
        frame.position = position;
        frame.tag = position % 100 + 1000;
        frame.image()[0] = static_cast<std::uint8_t>(position + 5);
        return frame;
    }
    void fill(std::initializer_list<std::uint32_t> positions) {
        for (const std::uint32_t position : positions) filled.push(&makeFrame(position));
    }
    void addFiles(std::initializer_list<const char16_t*> names) {
        for (const char16_t* name : names) EXPECT_TRUE(writer.addFile(name).ok());
    }
    // Everything that is filled is written before the stop shows.
    Status run() {
        EXPECT_TRUE(writer.Start().ok());
        writer.Stop();
        EXPECT_TRUE(writer.ended().wait(0));
        return writer.result();
    }
};

}  // namespace tavra::test
