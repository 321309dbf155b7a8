// The page of combi slots.
#pragma once

#include <cstdint>
#include <string>

namespace stratovane {

class CombiChain;
class Instrument;

/// Slots are 0..127; others do nothing. Threads: UI thread.
class CombiCommands {
  public:
    explicit CombiCommands(Instrument& instrument) : instrument_{instrument} {}

    void set(int slot, std::int32_t location);  // of a combi; -1 empties it
    void clear(int slot);
    void copy(int from, int to);
    void move(int from, int to);
    std::string label(int slot) const;
    /// Makes it the current slot and loads its combi, if it has one.
    void select(int slot);

    static constexpr const char *saveTitle = "Save Combichain", *loadTitle = "Load Combichain",
                                *filterName = "Stratovane Combichain", *filter = "*.s2c";
    std::string defaultPath() const;
    /// Both tell the user what went wrong and answer false then.
    bool write(const std::string& path) const;
    bool read(const std::string& path);

  private:
    CombiChain& chain() const;

    Instrument& instrument_;
};

}  // namespace stratovane
