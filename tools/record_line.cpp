#include "record_line.h"

#include <cstdio>

#include "movie_text.h"

namespace tavra::tool {

std::string RecordLine::text() const {
    char start[160];
    std::snprintf(start, sizeof start, "%7.1f s  %llu frames  %.2f fps  %llu lost", seconds,
                  static_cast<unsigned long long>(seen.frames), fps,
                  static_cast<unsigned long long>(seen.lost));
    std::string line = start;
    if (queue) line += "  queue " + std::to_string(*queue);
    line += "  disk " + bytesText(diskBytes) + "/s";
    if (!freeBytes) return line;
    const auto free = static_cast<double>(*freeBytes);
    line += ", " + bytesText(free) + " free";
    if (diskBytes > 0) line += ", enough for " + durationText(free / diskBytes);
    return line;
}

nlohmann::json RecordLine::json() const {
    nlohmann::json line = {{"event", "progress"},    {"seconds", seconds},
                           {"file", file},           {"seen", seen.frames},
                           {"lost", seen.lost},      {"fps", fps},
                           {"fileBytes", fileBytes}, {"diskMegabytesPerSecond", diskBytes / 1e6}};
    line["queue"] = queue ? nlohmann::json(*queue) : nlohmann::json();
    line["freeBytes"] = freeBytes ? nlohmann::json(*freeBytes) : nlohmann::json();
    return line;
}

}  // namespace tavra::tool
