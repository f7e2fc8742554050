// The base of the movie writers: a worker thread that takes filled frames off a queue and hands them to a
// layout, which writes them.
//
// The recorder (create_avi.h) owns one for as long as its format stands. The application's thread sets it up,
// opens files and starts it; everything behind that runs on the writer's thread until the ended event is set.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "base/status.h"
#include "media/movie/frame_buffer.h"
#include "media/movie/image_description.h"
#include "media/movie/movie_files.h"
#include "media/movie/pointer_queue.h"
#include "media/movie/worker.h"

namespace tavra::movie {

// What happens to a recording, told from the writer's thread.
class IAVIFileStatusListener {
  public:
    static constexpr std::uint32_t kFileStarted = 45064;  // value 0; the first file of a recording
    static constexpr std::uint32_t kEnded = 45065;        // value: the writer's result

    virtual Status OnStatus(std::uint32_t event, std::uint32_t value) = 0;

  protected:
    ~IAVIFileStatusListener() = default;
};

// One file of the queue. A layout that needs more than these derives from it.
struct FileRecord {
    virtual ~FileRecord() = default;
    std::u16string name;
    std::unique_ptr<MovieFile> file;
    std::unique_ptr<UnbufferedMovieFile> unbuffered;
    std::optional<std::uint64_t> volumeLimit;  // bytes; taken when the file was opened
    Status firstFailure;

    // Passes a result on, and keeps it if it is the file's first failure.
    Status keep(Status result) {
        if (firstFailure.ok()) firstFailure = result;
        return result;
    }
};

// How the movie is made; the recorder fills it in before Start.
struct MovieSettings {
    std::uint32_t quality = 75;  // 0 to 100
    std::uint32_t rate = 1;      // frames a second are rate / scale
    std::uint32_t scale = 1;
    std::uint32_t framesPerFile = 600;  // 0 counts as 1
    std::uint32_t imageBytes = 0;       // of one frame
    std::uint32_t rowStride = 0;
    bool swapRedBlue = false;
    ImageDescription image;
};

class CAVIFile : public TavraTrg::CWorker {
  public:
    static constexpr std::uint64_t kSizeLimit = 0x80000000;
    static constexpr std::uint64_t kLargeSizeLimit = 0x10000000000;
    static constexpr std::uint64_t kBeyondAllSizes = std::numeric_limits<std::uint64_t>::max();
    static constexpr std::uint32_t kHeaderBytes = 376;  // of an SMF file

    ~CAVIFile() override;

    // Builds the header (its failure is the result, and no thread runs), then starts the thread.
    Status Start() final;
    void ThreadMain() final;

    // Bytes of a file with so many frames of so many bytes; kBeyondAllSizes where 64 bits do not hold them.
    virtual std::uint64_t GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames) const;
    virtual bool StoresBottomUp() const { return false; }
    virtual std::uint64_t GetMaxFileSize() const { return kSizeLimit; }
    virtual void SetCompressor(std::uint32_t fourcc) { compressor_ = fourcc; }
    // The header of an SMF file, kHeaderBytes; 1 and nothing done in every other layout.
    virtual std::uint32_t GetMovieHeader(std::uint8_t*) const { return 1; }
    virtual std::uint32_t SetMovieHeader(const std::uint8_t*) { return 1; }
    virtual Status PrepareHeader() { return {}; }
    // On the application's thread. Makes the file and its record; a failure leaves none.
    virtual Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) = 0;
    // The 8 bytes ahead of `image` and the spare room behind it are the layout's to use (frame_buffer.h).
    // `index` counts from 0 in each file and may jump; `tag` came with the frame. 223 behind a jump, and
    // nothing written: the file does not hold it; the next file of the queue, if there is one, begins with
    // this frame.
    virtual Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                              std::uint32_t tag) = 0;
    // Completes and closes the file. Reports the first failure that the file has had, also of an earlier
    // write.
    virtual Status CloseFile(FileRecord& record) = 0;
    virtual Status Finish() { return {}; }
    virtual bool IsFileFull() const;

    // Opens the file and puts it behind the others to be written. Also while the writer runs, by the thread
    // that started it.
    Status addFile(const std::u16string& name);

    MovieSettings settings;

    // Set before Start, and left alone until the ended event.
    PointerQueue<FrameBuffer>* filledFrames = nullptr;
    PointerQueue<FrameBuffer>* freeFrames = nullptr;
    IAVIFileStatusListener* listener = nullptr;

    // Set when no thread writes.
    const platform::Event& ended() const { return ended_; }
    // False when the system had no descriptor left for an event of the writer.
    bool hasEvents() const { return ended_.valid() && stopEvent().valid() && fileQueue_.notEmpty().valid(); }
    // The writer's result; valid when the ended event is set.
    Status result() const { return result_; }

  protected:
    explicit CAVIFile(MovieFiles& files, std::uint64_t sizeLimit = kSizeLimit)
        : files_(files), sizeLimit_(sizeLimit), largestSize_(sizeLimit) {}

    // Closes the files that were opened and not begun; behind Stop, by a layout whose files need what it
    // holds.
    void dropFiles();

    // Whether a file that is opened now is the first of a recording: none runs, and none waits in the queue.
    bool isFirstFile() const { return ended_.wait(0) && fileQueue_.size() == 0; }

    // For the layouts that watch the volume, in OpenFile: the limit by its file system and its free room. A
    // file of that name that exists is about to be replaced, so that its bytes count as free. It holds for
    // this file alone; a writer that runs has another in work.
    void limitSizeByVolume(const std::u16string& fileName);

    MovieFiles& files_;
    std::uint64_t sizeLimit_;          // of the present file; without a thread: of the last that was opened
    std::uint64_t position_ = 0;       // where the next byte of the present file goes
    std::uint64_t projectedSize_ = 0;  // of the present file, if it were closed now
    std::uint32_t compressor_ = 0;
    bool encoderOrdersColors_ = false;  // the layout takes red first as well

  private:
    enum class End { Stopped, FileDone };
    struct FileEnd {
        End end;
        Status lastWrite;
    };

    std::unique_ptr<FileRecord> nextFile();
    void takeLimit(const FileRecord& record, bool isFirst);
    std::uint64_t limitOfVolume(const std::u16string& fileName) const;
    FileEnd writeFrames(FileRecord& record);
    void swapRedBlue(std::uint8_t* image) const;

    const std::uint64_t largestSize_;           // where nothing of the volume is known
    std::optional<std::uint64_t> volumeLimit_;  // of the file that was opened last
    PointerQueue<FileRecord> fileQueue_;
    Status result_;
    platform::Event ended_{platform::Event::Reset::Manual, true};
};

}  // namespace tavra::movie
