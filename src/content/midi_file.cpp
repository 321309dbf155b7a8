#include "content/midi_file.h"

#include <algorithm>
#include <utility>

namespace stratovane {

namespace {

using Kind = MidiFileFault::Kind;

constexpr std::size_t smallestFile = 22;  // header and one track's head
constexpr std::size_t chunkHead = 8;      // tag and length
constexpr std::size_t headerData = 6;     // format, tracks, division
constexpr std::uint8_t endOfExclusive = 0xF7;

constexpr bool isStatus(std::uint8_t byte) { return byte >= 0x80; }
/// Data bytes behind a channel message's status.
constexpr std::size_t dataBytes(std::uint8_t status) {
    return (status & 0xE0) == 0xC0 ? 1 : 2;  // program change and channel pressure have one
}

std::uint32_t bigEndian(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value << 8 | bytes[at + i];
    return value;
}

bool tagIs(std::span<const std::uint8_t> bytes, std::size_t at, std::string_view tag) {
    return at <= bytes.size() && bytes.size() - at >= tag.size() &&
           std::equal(tag.begin(), tag.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

/// Reads the events of one track; never looks outside its bytes.
class TrackReader {
  public:
    TrackReader(std::span<const std::uint8_t> bytes, std::size_t fileOffset)
        : bytes_{bytes}, fileOffset_{fileOffset} {}

    MidiFileTrack read() {
        while (at_ < bytes_.size() && !fault && !ended_) readEvent();
        std::erase_if(track_, [](const MidiFileEvent& event) { return event.status == taken; });
        return std::move(track_);
    }

    std::optional<MidiFileFault> fault;

  private:
    static constexpr std::uint8_t taken = 0;  // an exclusive message that went on in a later piece
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void fail(Kind kind, std::size_t at, const char* sentence) {
        fault = MidiFileFault{kind, fileOffset_ + at, sentence};
    }

    /// A number in groups of seven bits, four at most.
    std::uint32_t number() {
        std::uint32_t value = 0;
        for (int group = 0; group < 4; ++group) {
            if (at_ >= bytes_.size()) {
                fail(Kind::eventBeyondTrack, at_, "the track ends inside a number");
                return 0;
            }
            const std::uint8_t byte = bytes_[at_++];
            value = value << 7 | (byte & 0x7Fu);
            if (!isStatus(byte)) return value;
        }
        fail(Kind::longNumber, at_, "a number has more than four bytes");
        return 0;
    }

    /// The bytes behind a length; empty with a fault when they leave the track.
    std::span<const std::uint8_t> block() {
        const std::size_t lengthAt = at_;
        const std::uint32_t length = number();
        if (fault) return {};
        if (length > bytes_.size() - at_) {
            fail(Kind::eventBeyondTrack, lengthAt, "an event is longer than the rest of its track");
            return {};
        }
        const auto found = bytes_.subspan(at_, length);
        at_ += length;
        return found;
    }

    void readEvent() {
        tick_ += number();
        if (fault) return;
        if (at_ >= bytes_.size())
            return fail(Kind::eventBeyondTrack, at_,
                        "the track ends behind a time, before its event");
        const std::uint8_t first = bytes_[at_];
        if (first == MidiFileEvent::meta) {
            readMeta();
        } else if (first == MidiFileEvent::exclusive || first == MidiFileEvent::escape) {
            readExclusive(first);
        } else if (first >= 0xF0) {
            fail(Kind::unknownStatus, at_, "no event of a file begins with this byte");
        } else {
            readChannelMessage(first);
        }
    }

    MidiFileEvent& append(std::uint8_t status) {
        MidiFileEvent& event = track_.emplace_back();
        event.tick = tick_;
        event.status = status;
        return event;
    }

    void readMeta() {
        if (++at_ >= bytes_.size())
            return fail(Kind::eventBeyondTrack, at_, "the track ends before a meta event's type");
        const std::uint8_t type = bytes_[at_++];
        const auto data = block();
        if (fault) return;
        MidiFileEvent& event = append(MidiFileEvent::meta);
        event.data1 = type;
        event.bytes.assign(data.begin(), data.end());
        ended_ = type == MidiFileEvent::endOfTrack;
    }

    void readExclusive(std::uint8_t status) {
        ++at_;
        const auto data = block();
        if (fault) return;
        const bool complete = !data.empty() && data.back() == endOfExclusive;
        const bool continues = status == MidiFileEvent::escape && open_ != none;
        std::vector<std::uint8_t> message;
        if (continues) {
            message = std::move(track_[open_].bytes);
            track_[open_].status = taken;
        } else if (status == MidiFileEvent::exclusive) {
            message.push_back(MidiFileEvent::exclusive);
        }
        message.insert(message.end(), data.begin(), data.end());
        MidiFileEvent& event = append(continues ? std::uint8_t{MidiFileEvent::exclusive} : status);
        event.bytes = std::move(message);
        if (event.status == MidiFileEvent::exclusive) open_ = complete ? none : track_.size() - 1;
    }

    void readChannelMessage(std::uint8_t first) {
        if (isStatus(first)) {
            running_ = first;
            ++at_;
        } else if (running_ == 0) {
            return fail(Kind::noStatus, at_,
                        "a data byte stands here, and no status came before it");
        }
        const std::size_t count = dataBytes(running_);
        std::uint8_t data[2] = {};
        for (std::size_t i = 0; i < count; ++i, ++at_) {
            if (at_ >= bytes_.size())
                return fail(Kind::eventBeyondTrack, at_, "the track ends inside a channel message");
            if (isStatus(bytes_[at_]))
                return fail(Kind::badData, at_, "a data byte of a channel message is above 127");
            data[i] = bytes_[at_];
        }
        MidiFileEvent& event = append(running_);
        event.data1 = data[0];
        event.data2 = data[1];
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t fileOffset_;
    std::size_t at_ = 0;
    std::int64_t tick_ = 0;
    std::uint8_t running_ = 0;
    bool ended_ = false;
    std::size_t open_ = none;  // place of an exclusive message that waits for its next piece
    MidiFileTrack track_;
};

void keepFirst(std::optional<MidiFileFault>& first, MidiFileFault fault) {
    if (!first) first = std::move(fault);
}

/// False when no track can be read.
bool readHeader(std::span<const std::uint8_t> bytes, MidiFile& file) {
    if (bytes.size() < smallestFile) {
        file.fault = {Kind::tooShort, bytes.size(), "the file ends before a first track can begin"};
        return false;
    }
    if (!tagIs(bytes, 0, "MThd")) {
        file.fault = {Kind::noHeader, 0, "a MIDI file begins with \"MThd\", this one does not"};
        return false;
    }
    file.format = static_cast<int>(bigEndian(bytes, 8, 2));
    file.declaredTracks = static_cast<int>(bigEndian(bytes, 10, 2));
    if (file.format > 2)
        keepFirst(file.fault, {Kind::unknownFormat, 8,
                               "the format is " + std::to_string(file.format) + ", not 0, 1 or 2"});
    if (isStatus(bytes[12])) {
        const int rate = 256 - bytes[12];
        file.smpte = MidiFile::Smpte{rate == 29 ? 30000.0 / 1001.0 : rate, bytes[13]};
        file.pulsesPerQuarter = bytes[13] * 15;
        if (rate != 24 && rate != 25 && rate != 29 && rate != 30)
            keepFirst(file.fault,
                      {Kind::unknownFrameRate, 12,
                       std::to_string(rate) + " frames a second, not 24, 25, 29 or 30"});
    } else {
        file.pulsesPerQuarter = static_cast<int>(bigEndian(bytes, 12, 2));
    }
    if (file.pulsesPerQuarter == 0) {
        keepFirst(file.fault, {Kind::noDivision, 12, "the division is 0 ticks"});
        return false;
    }
    return true;
}

}  // namespace

std::optional<std::uint32_t> MidiFileEvent::microsecondsPerQuarter() const {
    if (!isMeta(tempo) || bytes.size() < 3) return {};
    const std::uint32_t value = bigEndian(bytes, 0, 3);
    return value == 0 ? std::nullopt : std::optional{value};
}

std::optional<MidiFileEvent::Signature> MidiFileEvent::timeSignature() const {
    if (!isMeta(signature) || bytes.size() < 2 || bytes[0] == 0 || bytes[1] > 6) return {};
    return Signature{bytes[0], 1 << bytes[1]};
}

std::int64_t MidiFile::endTick() const {
    std::int64_t last = 0;
    for (const MidiFileTrack& track : tracks)
        if (!track.empty()) last = std::max(last, track.back().tick);
    return last;
}

MidiFile readMidiFile(std::span<const std::uint8_t> bytes, int maxTracks) {
    MidiFile file;
    if (!readHeader(bytes, file)) return file;
    std::size_t at = chunkHead + std::max<std::size_t>(bigEndian(bytes, 6, 2), headerData);
    const int count = std::min(file.declaredTracks, maxTracks);
    for (int track = 0; track < count; ++track) {
        const std::string name =
            "track " + std::to_string(track + 1) + " of " + std::to_string(file.declaredTracks);
        if (!tagIs(bytes, at, "MTrk")) {
            keepFirst(file.fault, {Kind::noTrackHeader, std::min(at, bytes.size()),
                                   name + " should begin here with \"MTrk\""});
            return file;
        }
        const std::size_t left = bytes.size() - at;
        const std::size_t length = left < chunkHead ? 0 : bigEndian(bytes, at + 4, 4);
        if (left < chunkHead || length > left - chunkHead) {
            keepFirst(file.fault, {Kind::trackBeyondEnd, at + 4,
                                   name + " is longer than the rest of the file"});
            return file;
        }
        at += chunkHead;
        TrackReader reader{bytes.subspan(at, length), at};
        file.tracks.push_back(reader.read());
        if (reader.fault) {
            reader.fault->sentence = name + ": " + reader.fault->sentence;
            keepFirst(file.fault, std::move(*reader.fault));
        }
        at += length;
    }
    file.leftoverOffset = at;
    file.leftoverBytes = bytes.size() - std::min(at, bytes.size());
    return file;
}

std::vector<const MidiFileEvent*> mergeTracks(const MidiFile& file) {
    std::vector<const MidiFileEvent*> merged;
    for (const MidiFileTrack& track : file.tracks)
        for (const MidiFileEvent& event : track)
            if (!event.isMeta(MidiFileEvent::endOfTrack)) merged.push_back(&event);
    std::stable_sort(merged.begin(), merged.end(),
                     [](const auto* a, const auto* b) { return a->tick < b->tick; });
    return merged;
}

}  // namespace stratovane
