// Asks the user for the content folder while there is no library.
#pragma once

#include <string_view>

namespace stratovane {

class Instrument;

/// Threads: UI thread.
class ContentChooser {
  public:
    static constexpr const char* title = "Please locate the Stratovane 2 Content folder";

    explicit ContentChooser(Instrument& instrument) : instrument_{instrument} {}

    /// Whether the user is to be asked: while no library is there, and at most twice in a row.
    bool asks() const;
    /// The user chose a folder; it, or else the one around it, is where the content lives. Answers
    /// whether a library is there.
    bool choose(std::string_view path);
    /// The user may be asked twice again.
    void startOver() { asked_ = 0; }

  private:
    Instrument& instrument_;
    int asked_ = 0;
};

}  // namespace stratovane
