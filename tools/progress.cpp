#include "progress.h"

#include <unistd.h>

#include <iostream>

namespace tavra::tool {

LiveLine::LiveLine() : terminal_(isatty(STDERR_FILENO) != 0) {}

void LiveLine::show(const std::string& text) {
    if (!terminal_) {
        std::cerr << text << std::endl;
        return;
    }
    const std::size_t blank = shownLength_ > text.size() ? shownLength_ - text.size() : 0;
    std::cerr << '\r' << text << std::string(blank, ' ') << std::flush;
    shownLength_ = text.size();
}

void LiveLine::note(const std::string& text) {
    if (terminal_ && shownLength_ > 0) std::cerr << '\r' << std::string(shownLength_, ' ') << '\r';
    shownLength_ = 0;
    std::cerr << text << std::endl;
}

void LiveLine::finish() {
    if (terminal_ && shownLength_ > 0) std::cerr << std::endl;
    shownLength_ = 0;
}

}  // namespace tavra::tool
