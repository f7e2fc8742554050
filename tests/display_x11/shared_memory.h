// The shared memory that this process has with an X server: what of it still exists.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace tavra::test {

// Segments that this process has made and that still exist.
inline std::size_t segmentsMade() {
    std::ifstream table("/proc/sysvipc/shm");
    std::size_t count = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        long long key = 0, id = 0, mode = 0, size = 0, maker = 0;
        if (words >> key >> id >> mode >> size >> maker && maker == getpid()) ++count;
    }
    return count;
}

// Segments in the memory of this process.
inline std::size_t segmentsAttached() {
    std::ifstream maps("/proc/self/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
        if (line.find("/SYSV") != std::string::npos) ++count;
    }
    return count;
}

// The server lets go of the last segment when it reads that it shall.
inline bool noSegmentStays() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (segmentsMade() != 0 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
    return segmentsMade() == 0;
}

}  // namespace tavra::test
