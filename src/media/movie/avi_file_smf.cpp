#include "media/movie/avi_file_smf.h"

#include <algorithm>
#include <array>
#include <new>

#include "base/little_endian.h"

namespace tavra::movie {
namespace {

static_assert(SmfHeader::kBytes == CAVIFile::kHeaderBytes);

constexpr std::uint16_t kRawBits = 8;

}  // namespace

std::uint32_t CAVIFileSMF::GetMovieHeader(std::uint8_t* block) const {
    std::copy_n(header_.data(), SmfHeader::kBytes, block);
    return 0;
}

std::uint32_t CAVIFileSMF::SetMovieHeader(const std::uint8_t* block) {
    std::copy_n(block, SmfHeader::kBytes, header_.data());
    return 0;
}

Status CAVIFileSMF::OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) {
    std::unique_ptr<FileRecord> opened(new (std::nothrow) FileRecord);
    if (opened == nullptr) return Status(error::kOutOfMemory);
    opened->name = name;
    limitSizeByVolume(name);
    if (!files_.create(name, opened->file).ok()) return Status(error::kFileStream);
    record = std::move(opened);
    return {};
}

// The header waits for the first frame: until the start of the recording its settings may still come.
Status CAVIFileSMF::WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                               std::uint32_t tag) {
    std::array<std::uint8_t, SmfHeader::kFrameHeaderBytes> frameHeader{};
    storeLe32(&frameHeader[0], index);
    storeLe32(&frameHeader[4], tag);
    if (position_ == 0) TAVRA_RETURN_IF_ERROR(writeHeader(record));
    TAVRA_RETURN_IF_ERROR(append(record, frameHeader.data(), frameHeader.size()));
    TAVRA_RETURN_IF_ERROR(append(record, image, settings.imageBytes));
    projectedSize_ = position_;
    return {};
}

// A file that got no frame is a header alone.
Status CAVIFileSMF::CloseFile(FileRecord& record) {
    if (record.firstFailure.ok() && position_ == 0) (void)writeHeader(record);
    (void)record.keep(record.file->close());
    return record.firstFailure;
}

Status CAVIFileSMF::writeHeader(FileRecord& record) {
    completeHeader();
    return append(record, header_.data(), SmfHeader::kBytes);
}

Status CAVIFileSMF::append(FileRecord& record, const void* data, std::size_t size) {
    TAVRA_RETURN_IF_ERROR(record.keep(record.file->write(position_, data, size)));
    position_ += size;
    return {};
}

void CAVIFileSMF::completeHeader() {
    using Field = SmfHeader::Field;
    const auto width = static_cast<std::uint32_t>(settings.image.width);
    const auto height = static_cast<std::uint32_t>(settings.image.height);
    header_.set(Field::Magic, SmfHeader::kMagic);
    header_.set(Field::HeaderSize, SmfHeader::kBytes);
    header_.set(Field::Width, width);
    header_.set(Field::Height, height);
    header_.set(Field::RowPixels, width);
    header_.setBits(kRawBits, settings.image.bitCount);
    header_.set(Field::Rate, settings.rate);
    header_.set(Field::Scale, settings.scale);
    header_.set(Field::FrameHeaderSize, SmfHeader::kFrameHeaderBytes);
    header_.set(Field::FrameDataSize, width * height);
    header_.set(Field::Compressor, compressor_);
    header_.set(Field::FramesPerFile, settings.framesPerFile);
    header_.set(Field::Quality, settings.quality);
    header_.set(Field::FrameSizeShift, 0);
}

}  // namespace tavra::movie
