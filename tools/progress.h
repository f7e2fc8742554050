// A line that is written over while something long goes on.
#pragma once

#include <string>

namespace tavra::tool {

// On a terminal the line is replaced each time; in a file or pipe each text is a line of its own. Written to
// standard error, so that results on standard output stay clean. One thread.
class LiveLine {
  public:
    LiveLine();
    ~LiveLine() { finish(); }

    void show(const std::string& text);
    // A text that stays, above the live line.
    void note(const std::string& text);
    // Leaves the last text standing.
    void finish();

  private:
    bool terminal_;
    std::size_t shownLength_ = 0;
};

}  // namespace tavra::tool
