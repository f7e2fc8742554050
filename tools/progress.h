// A line that is written over while something long goes on.
#pragma once

#include <iosfwd>
#include <string>

namespace tavra::tool {

// On a terminal the line is replaced each time; in a file or pipe each text is a line of its own. One thread.
class LiveLine {
  public:
    // Progress goes to standard error, so that results on standard output stay clean; a line that is the
    // result itself goes there.
    enum class Purpose { Progress, Result };

    explicit LiveLine(Purpose purpose = Purpose::Progress);
    ~LiveLine() { finish(); }

    void show(const std::string& text);
    // A text that stays, above the live line.
    void note(const std::string& text);
    // Leaves the last text standing.
    void finish();

  private:
    std::ostream& stream_;
    bool terminal_;
    std::string shown_;  // on a terminal
};

}  // namespace tavra::tool
