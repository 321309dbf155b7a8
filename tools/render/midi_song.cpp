#include "midi_song.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t largestFile = std::uintmax_t{256} << 20;
constexpr double longestSongSeconds = 24 * 3600;
constexpr int drumChannel = 9;
constexpr std::uint8_t noteOff = 0x80, noteOn = 0x90, controller = 0xB0, programChange = 0xC0;
constexpr std::uint8_t bankMsb = 0, bankLsb = 32, volume = 7;
constexpr std::uint8_t sustain = 64, sostenuto = 66, allNotesOff = 123;

Failure input(const std::string& path, const std::string& sentence) {
    return {Exit::input, path + ": " + sentence};
}

/// Whether a message says which patch plays.
bool choosesProgram(const std::array<std::uint8_t, 3>& bytes) {
    const std::uint8_t command = bytes[0] & 0xF0;
    return command == programChange ||
           (command == controller && (bytes[1] == bankMsb || bytes[1] == bankLsb));
}

/// Folds all channels into one. A note that several channels hold ends with the last of them.
class OneChannel {
  public:
    explicit OneChannel(int channel) : channel_{channel} {}

    /// False when the message is left out.
    bool accept(std::array<std::uint8_t, 3>& bytes) {
        const int from = bytes[0] & 15;
        const std::uint8_t command = bytes[0] & 0xF0;
        if (from == drumChannel) return false;
        bytes[0] = static_cast<std::uint8_t>(command | channel_);
        if (command == noteOn || command == noteOff) return acceptNote(bytes, from);
        // Its volume belongs to the mix of a song whose channels are played apart; turned up for
        // one melody it would overdrive all of them.
        return from == channel_ && (command != controller || bytes[1] != volume);
    }

  private:
    bool acceptNote(const std::array<std::uint8_t, 3>& bytes, int from) {
        std::uint16_t& holders = holders_[bytes[1]];
        const auto bit = static_cast<std::uint16_t>(1u << from);
        if ((bytes[0] & 0xF0) == noteOn && bytes[2] > 0) {
            holders |= bit;
            return true;
        }
        holders &= static_cast<std::uint16_t>(~bit);
        return holders == 0;
    }

    int channel_;
    std::array<std::uint16_t, 128> holders_{};  // a bit for each channel, by note
};

/// The channel messages in an escape's bytes; what else it carries is for other devices.
void appendEscape(const MidiFileEvent& event, std::vector<std::array<std::uint8_t, 3>>& messages) {
    std::size_t at = 0;
    while (at < event.bytes.size()) {
        const std::uint8_t status = event.bytes[at];
        if (status < 0x80 || status >= 0xF0) return;
        const std::size_t size = (status & 0xE0) == 0xC0 ? 2 : 3;
        if (event.bytes.size() - at < size) return;
        std::array<std::uint8_t, 3> bytes{};
        for (std::size_t i = 0; i < size; ++i) bytes[i] = event.bytes[at + i];
        if (bytes[1] >= 0x80 || bytes[2] >= 0x80) return;
        messages.push_back(bytes);
        at += size;
    }
}

void appendEnding(Song& song) {
    std::array<bool, 16> used{};
    for (const SongEvent& event : song.events)
        if (event.exclusive.empty()) used[static_cast<std::size_t>(event.channel())] = true;
    for (std::uint8_t channel = 0; channel < 16; ++channel) {
        if (!used[channel]) continue;
        const auto status = static_cast<std::uint8_t>(controller | channel);
        for (const std::uint8_t number : {sustain, sostenuto, allNotesOff})
            song.events.push_back({song.frames, {status, number, 0}, {}});
    }
}

Song arrange(const MidiFile& file, int rate, const SongFilter& filter) {
    const MidiTempoMap map{file};
    const auto frameAt = [rate](double seconds) { return std::llround(seconds * rate); };
    Song song;
    song.rate = rate;
    song.frames = frameAt(map.seconds(file.endTick()));
    for (const MidiTempoMap::Stretch& stretch : map.stretches())
        song.transport.push_back({frameAt(stretch.seconds), stretch});

    std::optional<OneChannel> fold;
    if (filter.channel) fold.emplace(*filter.channel);
    std::vector<std::array<std::uint8_t, 3>> messages;
    for (const MidiFileEvent* event : mergeTracks(file)) {
        const std::int64_t frame = frameAt(map.seconds(event->tick));
        const bool exclusive =
            !event->bytes.empty() &&
            (event->status == MidiFileEvent::exclusive || event->status == MidiFileEvent::escape) &&
            event->bytes[0] == MidiFileEvent::exclusive;
        if (exclusive) {
            const bool chooses =
                fold || generalMidiMessage(event->bytes) != GeneralMidiMessage::none;
            if (!filter.leaveOutPrograms || !chooses)
                song.events.push_back({frame, {}, event->bytes});
            continue;
        }
        messages.clear();
        if (event->isChannelMessage())
            messages.push_back({event->status, event->data1, event->data2});
        else if (event->status == MidiFileEvent::escape)
            appendEscape(*event, messages);
        for (auto& bytes : messages) {
            if (filter.leaveOutPrograms && choosesProgram(bytes)) continue;
            if (!fold || fold->accept(bytes)) song.events.push_back({frame, bytes, {}});
        }
    }
    appendEnding(song);
    return song;
}

}  // namespace

GeneralMidiMessage generalMidiMessage(std::span<const std::uint8_t> exclusive) {
    constexpr std::array<std::uint8_t, 4> toAll{0xF0, 0x7E, 0x7F, 0x09};
    if (exclusive.size() <= toAll.size() ||
        !std::equal(toAll.begin(), toAll.end(), exclusive.begin()))
        return GeneralMidiMessage::none;
    switch (exclusive[toAll.size()]) {
        case 1:
        case 3:  // level 2
            return GeneralMidiMessage::on;
        case 2:
            return GeneralMidiMessage::off;
        default:
            return GeneralMidiMessage::none;
    }
}

bool Song::resets() const {
    return std::any_of(events.begin(), events.end(), [](const SongEvent& event) {
        return generalMidiMessage(event.exclusive) != GeneralMidiMessage::none;
    });
}

double Song::beatsAt(std::int64_t frame) const {
    const auto behind =
        std::find_if(transport.begin() + 1, transport.end(),
                     [frame](const Transport& change) { return change.frame > frame; });
    return std::prev(behind)->beatsAt(static_cast<double>(frame) / rate);
}

std::variant<Song, Failure> readSong(const std::string& path, int rate, const SongFilter& filter) {
    std::error_code error;
    if (!fs::exists(path, error)) return input(path, "there is no such file");
    if (!fs::is_regular_file(path, error)) return input(path, "this is no file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > largestFile) return input(path, "the file is larger than 256 MB");
    std::ifstream stream{path, std::ios::binary};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!stream) return input(path, "the file cannot be read");

    const MidiFile file = readMidiFile(bytes);
    if (file.fault)
        return input(path, "damaged at byte " + std::to_string(file.fault->offset) + ": " +
                               file.fault->sentence);
    if (MidiTempoMap{file}.seconds(file.endTick()) > longestSongSeconds)
        return input(path, "the song lasts longer than a day");
    return arrange(file, rate, filter);
}

}  // namespace stratovane::render
