// The order of the operations of the recorder, the writers and the streams, as callers that hold no header of
// ours see it: by the slot in the object's table of virtual functions.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "media/jpeg/base_stream.h"
#include "media/movie/avi_file.h"
#include "media/movie/create_avi.h"
#include "media/movie/no_files.h"
#include "media/movie/save_avi_file.h"
#include "stages/factory.h"
#include "support/virtual_slots.h"

namespace tavra::test {
namespace {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

// ---- the recorder; each operation gives its number

class RecorderSlots final : public movie::ISaveAVIFile {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 SetFileFormat(u16, u32) override { return 102; }
    u32 SetFrameSizeShift(u8) override { return 103; }
    u32 SetFramesPerFile(u32) override { return 104; }
    u32 GetFramesPerFile(u32*) override { return 105; }
    u32 SetReserved(u32) override { return 106; }
    u32 SetQuality(u32) override { return 107; }
    u32 SetRate(u32) override { return 108; }
    u32 SetScale(u32) override { return 109; }
    u32 SetBufferCount(u32) override { return 110; }
    u32 GetBufferCount(u32*) override { return 111; }
    u32 SetImageFormat(u32, u32, u32, u32) override { return 112; }
    u32 AddFile(const char16_t*) override { return 113; }
    u32 Start() override { return 114; }
    u32 WriteFrame(const u8*, u32, u32, u32*) override { return 115; }
    u32 GetStatus(u8*) override { return 116; }
    u32 SetStatus(u8) override { return 117; }
    u32 GetPosition(u32*) override { return 118; }
    u32 SetNotifyWindow(TavraWindow) override { return 119; }
    u32 SetNotifyParam(u64) override { return 120; }
    u32 GetMovieHeader(u8*) override { return 121; }
    u32 SetMovieHeader(const u8*) override { return 122; }
    u32 SetImageFormatEx(u32, u32, u32, u32) override { return 123; }
    u32 GetFileSizeEstimate(u32, u32, u64*) override { return 124; }
};

TEST(MovieSlots, OfTheRecorder) {
    RecorderSlots object;
    movie::ISaveAVIFile* const slots = &object;
    u8* const outBytes = nullptr;
    const u8* const bytes = nullptr;
    u32* const out = nullptr;
    u64* const out64 = nullptr;
    const char16_t* const name = nullptr;
    const TavraWindow window = nullptr;
    EXPECT_EQ(callSlot(slots, 0), 100u);
    EXPECT_EQ(callSlot(slots, 1), 101u);
    EXPECT_EQ(callSlot(slots, 2, u16{}, u32{}), 102u);
    EXPECT_EQ(callSlot(slots, 3, u8{}), 103u);
    EXPECT_EQ(callSlot(slots, 4, u32{}), 104u);
    EXPECT_EQ(callSlot(slots, 5, out), 105u);
    for (u32 setter = 6; setter <= 10; ++setter) EXPECT_EQ(callSlot(slots, setter, u32{}), 100 + setter);
    EXPECT_EQ(callSlot(slots, 11, out), 111u);
    EXPECT_EQ(callSlot(slots, 12, u32{}, u32{}, u32{}, u32{}), 112u);
    EXPECT_EQ(callSlot(slots, 13, name), 113u);
    EXPECT_EQ(callSlot(slots, 14), 114u);
    EXPECT_EQ(callSlot(slots, 15, bytes, u32{}, u32{}, out), 115u);
    EXPECT_EQ(callSlot(slots, 16, outBytes), 116u);
    EXPECT_EQ(callSlot(slots, 17, u8{}), 117u);
    EXPECT_EQ(callSlot(slots, 18, out), 118u);
    EXPECT_EQ(callSlot(slots, 19, window), 119u);
    EXPECT_EQ(callSlot(slots, 20, u64{}), 120u);
    EXPECT_EQ(callSlot(slots, 21, outBytes), 121u);
    EXPECT_EQ(callSlot(slots, 22, bytes), 122u);
    EXPECT_EQ(callSlot(slots, 23, u32{}, u32{}, u32{}, u32{}), 123u);
    EXPECT_EQ(callSlot(slots, 24, u32{}, u32{}, out64), 124u);
}

// What the factory gives is this interface, though the class has another one as well.
TEST(MovieSlots, OfWhatTheFactoryGives) {
    ISUnknown* const recorder = CreateStageObject(144);
    ASSERT_NE(recorder, nullptr);
    u32 count = 0;
    EXPECT_EQ(callSlot(recorder, 11, &count), 0u);
    EXPECT_EQ(count, 10u) << "buffers";
    EXPECT_EQ(callSlot(recorder, 10, u32{7}), 0u);
    EXPECT_EQ(callSlot(recorder, 11, &count), 0u);
    EXPECT_EQ(count, 7u);
    u8 status = 9;
    EXPECT_EQ(callSlot(recorder, 16, &status), 0u);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(callSlot(recorder, 0), 2u);
    EXPECT_EQ(callSlot(recorder, 1), 1u);
    EXPECT_EQ(callSlot(recorder, 1), 0u);
}

class ListenerSlots final : public movie::IAVIFileStatusListener {
  public:
    Status OnStatus(u32 event, u32 value) override { return Status(100 * event + value); }
};

TEST(MovieSlots, OfTheListener) {
    ListenerSlots object;
    movie::IAVIFileStatusListener* const slots = &object;
    EXPECT_EQ(callSlot<Status>(slots, 0, u32{3}, u32{4}).code(), 304u);
}

// ---- the workers

constexpr std::size_t kFirstDestructor = 3;
constexpr std::size_t kDestructorSlots = 2;  // one that destroys, and one that also frees

class WorkerSlots : public TavraTrg::CWorker {
  public:
    explicit WorkerSlots(std::vector<std::string>& calls) : calls_(calls) {}
    ~WorkerSlots() override { calls_.emplace_back("destructor"); }
    Status Start() override { return Status(100); }
    void Stop() override { calls_.emplace_back("Stop"); }
    void ThreadMain() override { calls_.emplace_back("ThreadMain"); }

  private:
    std::vector<std::string>& calls_;
};

TEST(MovieSlots, OfAWorkerEndWithItsDestructor) {
    std::vector<std::string> calls;
    TavraTrg::CWorker* const worker = new WorkerSlots(calls);
    EXPECT_EQ(callSlot<Status>(worker, 0).code(), 100u);
    callSlot<void>(worker, 1);
    callSlot<void>(worker, 2);
    callSlot<void>(worker, kFirstDestructor + kDestructorSlots - 1);  // frees it, as a sanitizer tells
    EXPECT_EQ(calls, (std::vector<std::string>{"Stop", "ThreadMain", "destructor"}));
}

class WriterSlots final : public movie::CAVIFile {
  public:
    explicit WriterSlots(movie::MovieFiles& files) : CAVIFile(files) {}
    void Stop() override { ++stopped; }
    u64 GetFileSizeEstimate(u32 frameBytes, u32 frames) const override { return 100 + frameBytes + frames; }
    bool StoresBottomUp() const override { return true; }
    u64 GetMaxFileSize() const override { return u64{102} << 32; }
    void SetCompressor(u32 fourcc) override { compressor = fourcc; }
    u32 GetMovieHeader(u8*) const override { return 104; }
    u32 SetMovieHeader(const u8*) override { return 105; }
    Status PrepareHeader() override { return Status(106); }
    Status OpenFile(const std::u16string&, std::unique_ptr<movie::FileRecord>&) override {
        return Status(107);
    }
    Status WriteFrame(movie::FileRecord&, u8*, u32 index, u32 tag) override {
        return Status(108 + index + tag);
    }
    Status CloseFile(movie::FileRecord&) override { return Status(109); }
    Status Finish() override { return Status(110); }
    bool IsFileFull() const override { return full; }

    int stopped = 0;
    u32 compressor = 0;
    bool full = false;
};

TEST(MovieSlots, OfAWriterFollowThoseOfTheWorker) {
    constexpr std::size_t kFirst = kFirstDestructor + kDestructorSlots;
    NoFiles files;
    WriterSlots object(files);
    movie::CAVIFile* const slots = &object;
    u8* const image = nullptr;
    const u8* const block = nullptr;
    const std::u16string name;
    const std::u16string* const namePlace = &name;
    std::unique_ptr<movie::FileRecord> none;
    std::unique_ptr<movie::FileRecord>* const recordPlace = &none;
    movie::FileRecord record;
    movie::FileRecord* const opened = &record;

    EXPECT_EQ(callSlot<Status>(slots, 0).code(), 106u) << "the start asks for the header first";
    callSlot<void>(slots, 1);
    EXPECT_GE(object.stopped, 1);
    EXPECT_EQ(callSlot<u64>(slots, kFirst, u32{7}, u32{8}), 115u);
    EXPECT_TRUE(callSlot<bool>(slots, kFirst + 1));
    EXPECT_EQ(callSlot<u64>(slots, kFirst + 2), u64{102} << 32);
    callSlot<void>(slots, kFirst + 3, u32{103});
    EXPECT_EQ(object.compressor, 103u);
    EXPECT_EQ(callSlot(slots, kFirst + 4, image), 104u);
    EXPECT_EQ(callSlot(slots, kFirst + 5, block), 105u);
    EXPECT_EQ(callSlot<Status>(slots, kFirst + 6).code(), 106u);
    EXPECT_EQ(callSlot<Status>(slots, kFirst + 7, namePlace, recordPlace).code(), 107u);
    EXPECT_EQ(callSlot<Status>(slots, kFirst + 8, opened, image, u32{20}, u32{3}).code(), 131u);
    EXPECT_EQ(callSlot<Status>(slots, kFirst + 9, opened).code(), 109u);
    EXPECT_EQ(callSlot<Status>(slots, kFirst + 10).code(), 110u);
    EXPECT_FALSE(callSlot<bool>(slots, kFirst + 11));
    object.full = true;
    EXPECT_TRUE(callSlot<bool>(slots, kFirst + 11));
}

// ---- the encoder's streams, which begin with their destructor

class StreamSlots final : public CBaseStreamOutput {
  public:
    explicit StreamSlots(bool& destroyed) : destroyed_(destroyed) {}
    ~StreamSlots() override { destroyed_ = true; }
    JpegError Open() override { return static_cast<JpegError>(100); }
    JpegError Close() override { return static_cast<JpegError>(101); }
    JpegError Write(const void*, std::size_t size, std::size_t& written) override {
        written = size - 1;
        return static_cast<JpegError>(102);
    }

  private:
    bool& destroyed_;
};

TEST(MovieSlots, OfAStreamBeginWithItsDestructor) {
    bool destroyed = false;
    CBaseStreamOutput* const slots = new StreamSlots(destroyed);
    const void* const buffer = nullptr;
    std::size_t written = 0;
    std::size_t* const writtenPlace = &written;
    EXPECT_EQ(callSlot<int>(slots, kDestructorSlots), 100);
    EXPECT_EQ(callSlot<int>(slots, kDestructorSlots + 1), 101);
    EXPECT_EQ(callSlot<int>(slots, kDestructorSlots + 2, buffer, std::size_t{9}, writtenPlace), 102);
    EXPECT_EQ(written, 8u);
    EXPECT_FALSE(destroyed);
    callSlot<void>(static_cast<CBaseStream*>(slots), kDestructorSlots - 1);
    EXPECT_TRUE(destroyed);
}

}  // namespace
}  // namespace tavra::test
