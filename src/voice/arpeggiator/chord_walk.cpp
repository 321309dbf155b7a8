#include "voice/arpeggiator/chord_walk.h"

#include <algorithm>
#include <string_view>

namespace stratovane {

namespace {

// The commands, by the note that gives them.
enum : int {
    toLowest = 36,
    toSecond = 37,
    toHighest = 38,
    toSecondHighest = 39,
    up = 40,              // by one, by two
    down = 42,            // by one, by two
    upOverLowest = 44,    // by one, by two
    downOverLowest = 46,  // by one, by two
    shuffle = 48,         // four orders
    anyKey = 52,
    anyButLowest = 53,
    octaveUp = 54,
    octaveDown = 55,
    setTranspose = 56,
    clearTranspose = 57,
    bounce = 58,
    withNext = 60,  // twice, like those below
    withNextUnwrapped = 62,
    withNextButOne = 64,
    withNextOverLowest = 66,
    withNextButOneOverLowest = 68,
    withLowest = 70,
    withHighest = 72,
    allKeys = 74,
    allButLowest = 75,
    firstNumbered = 84,
    lastNumbered = 94,
    highest = 95,
};

// By number of keys, then by order: four key indices taken in turn.
constexpr std::string_view shuffleOrders[10][4] = {
    {"0000", "0000", "0000", "0000"}, {"0000", "1111", "1111", "1111"},
    {"0000", "1111", "1111", "2222"}, {"0000", "1111", "1212", "3333"},
    {"0000", "1111", "1212", "3434"}, {"0101", "1111", "2323", "4545"},
    {"0101", "1111", "2343", "5656"}, {"0101", "1111", "2343", "5676"},
    {"0121", "1212", "3454", "6787"}, {"0121", "1212", "3456", "7898"},
};

constexpr int wrapped(int i, int n) { return ((i % n) + n) % n; }

/// Moves an index within 1..keys - 1; from the lowest key it counts as standing on 1. A single key
/// is all there is.
constexpr int overLowest(int i, int by, int keys) {
    return keys == 1 ? 0 : 1 + wrapped(std::max(i, 1) - 1 + by, keys - 1);
}

/// Upwards the lowest key counts as standing below 1.
constexpr int upFromLowest(int i, int by, int keys) {
    return keys == 1 ? 0 : 1 + wrapped(i - 1 + by, keys - 1);
}

}  // namespace

int ChordWalk::shuffled(int order, int keys) {
    const auto row = static_cast<std::size_t>((keys - 1) % 10);
    const auto column = static_cast<std::size_t>(order);
    int& cursor = cursors_[column];
    const int index = shuffleOrders[row][column][static_cast<std::size_t>(cursor)] - '0';
    cursor = (cursor + 1) % 4;
    return index;
}

int ChordWalk::bounced(int keys) {
    if (keys == 1) return 0;
    if (index_ + direction_ < 0 || index_ + direction_ >= keys) direction_ = -direction_;
    return index_ + direction_;
}

/// Whether the command moves the index to a key that then sounds alone.
bool ChordWalk::walk(int number, int keys, Random& random) {
    switch (number) {
        case toLowest:
            index_ = 0;
            return true;
        case toSecond:
            index_ = keys < 2 ? 0 : 1;
            return true;
        case toHighest:
            index_ = keys - 1;
            return true;
        case toSecondHighest:
            index_ = std::max(keys - 2, 0);
            return true;
        case up:
        case up + 1:
            index_ = wrapped(index_ + number - up + 1, keys);
            return true;
        case down:
        case down + 1:
            index_ = wrapped(index_ - (number - down + 1), keys);
            return true;
        case upOverLowest:
        case upOverLowest + 1:
            index_ = upFromLowest(index_, number - upOverLowest + 1, keys);
            return true;
        case downOverLowest:
        case downOverLowest + 1:
            index_ = overLowest(index_, -(number - downOverLowest + 1), keys);
            return true;
        case shuffle:
        case shuffle + 1:
        case shuffle + 2:
        case shuffle + 3:
            index_ = shuffled(number - shuffle, keys);
            return true;
        case anyKey:
            index_ = random.draw() % keys;
            return true;
        case anyButLowest: {
            const int drawn = random.draw();
            index_ = keys < 2 ? 0 : 1 + drawn % (keys - 1);
            return true;
        }
        case bounce:
            index_ = bounced(keys);
            return true;
        default:
            return false;
    }
}

ChordNotes ChordWalk::command(int number, int value, int keys, Random& random) {
    constexpr int widestTranspose = 24, centre = 64;
    ChordNotes notes;
    index_ = std::min(index_, keys - 1);
    if (walk(number, keys, random)) {
        notes.add(index_);
        return notes;
    }
    const auto playFrom = [&](int first) {
        for (int i = first; i < keys; ++i) notes.add(i);
    };
    if (number >= firstNumbered && number <= lastNumbered) {
        if (number - firstNumbered < keys) notes.add(number - firstNumbered);
        return notes;
    }
    switch (number) {
        case octaveUp:
            octaveShift_ = std::min(octaveShift_ + 1, 1);
            break;
        case octaveDown:
            octaveShift_ = std::max(octaveShift_ - 1, -1);
            break;
        case setTranspose:
            transpose_ = std::clamp(value - centre, -widestTranspose, widestTranspose);
            break;
        case clearTranspose:
            transpose_ = 0;
            break;
        case withNext:
        case withNext + 1:
            notes.add(index_);
            notes.add(wrapped(index_ + 1, keys));
            break;
        case withNextUnwrapped:
        case withNextUnwrapped + 1:
            notes.add(index_);
            if (index_ + 1 < keys) notes.add(index_ + 1);
            break;
        case withNextButOne:
        case withNextButOne + 1:
            notes.add(index_);
            notes.add(wrapped(index_ + 2, keys));
            break;
        case withNextOverLowest:
        case withNextOverLowest + 1:
            notes.add(overLowest(index_, 0, keys));
            notes.add(overLowest(index_, 1, keys));
            break;
        case withNextButOneOverLowest:
        case withNextButOneOverLowest + 1:
            notes.add(overLowest(index_, 0, keys));
            notes.add(overLowest(index_, 2, keys));
            break;
        case withLowest:
        case withLowest + 1:
            notes.add(index_);
            notes.add(0);
            break;
        case withHighest:
        case withHighest + 1:
            notes.add(index_);
            notes.add(keys - 1);
            break;
        case allKeys:
            playFrom(0);
            break;
        case allButLowest:
            playFrom(1);
            break;
        case highest:
            notes.add(keys - 1);
            break;
        default:
            break;
    }
    return notes;
}

}  // namespace stratovane
