// A place for movies that takes every write and keeps nothing: what a test counts there costs neither memory
// nor time.
#pragma once

#include <limits>
#include <memory>
#include <string>

#include "media/movie/movie_files.h"

namespace tavra::test {

class NoFiles final : public movie::MovieFiles {
    struct File final : movie::MovieFile {
        Status write(std::uint64_t, const void*, std::size_t) override { return {}; }
        Status close() override { return {}; }
    };
    struct Unbuffered final : movie::UnbufferedMovieFile {
        Status startWrite(std::uint64_t, const void*, std::size_t) override { return {}; }
        Status wait() override { return {}; }
        Status close() override { return {}; }
    };

  public:
    Status create(const std::u16string&, std::unique_ptr<movie::MovieFile>& file) override {
        file = std::make_unique<File>();
        return {};
    }
    Status createUnbuffered(const std::u16string&,
                            std::unique_ptr<movie::UnbufferedMovieFile>& file) override {
        file = std::make_unique<Unbuffered>();
        return {};
    }
    Status openAgain(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) override {
        return create(name, file);
    }
    Status volumeKind(const std::u16string&, platform::VolumeKind&) override { return {}; }
    Status freeBytes(const std::u16string&, std::uint64_t& bytes) override {
        bytes = std::numeric_limits<std::uint64_t>::max();
        return {};
    }
    Status fileSize(const std::u16string&, std::uint64_t&) override { return Status(2); }
};

}  // namespace tavra::test
