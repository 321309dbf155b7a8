#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>
#include <set>

#include "bank_kind.h"
#include "bank_spec.h"
#include "content/bank_file.h"
#include "content/file_bytes.h"
#include "content/sample_set.h"
#include "content/tone_wheels.h"
#include "content/wavetable.h"
#include "failure.h"
#include "json_node.h"
#include "output_file.h"
#include "shared/windows_1252.h"
#include "sound.h"

namespace stratovane::content_tool {

namespace {

std::string numbered(int number, const char* behind) {
    char text[32];
    std::snprintf(text, sizeof text, "%03d%s", number, behind);
    return text;
}

class Extraction {
  public:
    Extraction(const std::string& path, const std::string& folder) : path_{path}, folder_{folder} {}

    void run() {
        std::optional<ContentFault> fault;
        bank_ = readBankFile(path_, fault);
        if (fault) refuse(*fault, 0);
        const auto kind = kindOfBank(path_, bank_);
        const auto* row = std::find_if(std::begin(bankKindNames), std::end(bankKindNames),
                                       [&](const BankKindName& each) { return each.kind == kind; });
        if (row == std::end(bankKindNames))
            throw Failure{Exit::input, path_ + " is no bank of samples, wavetables or drawbars"};
        makeFolder(folder_);
        Json json;
        json["kind"] = row->name;
        json["second"] = utf8FromWindows1252(bank_.secondName);
        json["code"] = bank_.code;
        if (*kind == ContentKind::samples) {
            writeSamples();
            json["format"] = formatName(bankFormat());
        }
        if (!bank_.sharedTable.empty()) {
            writeWhole(folder_ + "/shared.bin", bank_.sharedTable);
            json["shared"] = "shared.bin";
        }
        json["items"] = Json::array();
        if (bank_.items.size() > itemsPerBank)
            std::cerr << path_ << ": items from 128 on cannot be chosen and are left out\n";
        for (int i = 0;
             i < static_cast<int>(std::min<std::size_t>(bank_.items.size(), itemsPerBank)); ++i)
            if (bank_.items[static_cast<std::size_t>(i)].normal.size != 0)
                json["items"].push_back(item(i, *kind));
        writeWhole(folder_ + "/bank.json", json.dump(1) + "\n");
    }

  private:
    [[noreturn]] void refuse(const ContentFault& fault, std::uint64_t start) const {
        throw Failure{Exit::input, path_ + ", byte " + std::to_string(start + fault.offset) + ": " +
                                       fault.sentence};
    }
    Bytes read(FileRange range) const {
        auto bytes = readFilePart(path_, range.offset, range.size);
        if (!bytes) refuse({0, "what the tables tell leaves the file"}, range.offset);
        return std::move(*bytes);
    }

    Json item(int number, ContentKind kind) {
        const BankFile::Item& entry = bank_.items[static_cast<std::size_t>(number)];
        Json json;
        json["number"] = number;
        json["name"] = utf8FromWindows1252(entry.name);
        if (!entry.secondName.empty()) json["second"] = utf8FromWindows1252(entry.secondName);
        if (kind == ContentKind::samples) {
            json["zones"] = zones(entry.normal);
            if (entry.eco.size != 0) {
                const SampleFormat format = commonFormat(formatsOf(entry.eco));
                if (format == bankFormat())
                    json["eco"] = zones(entry.eco);
                else
                    json["eco"] = {{"format", formatName(format)}, {"zones", zones(entry.eco)}};
            }
            return json;
        }
        if (entry.eco.size != 0)
            std::cerr << path_ << ", item " << number << ": the small version is left out\n";
        if (kind == ContentKind::wavetables)
            json["file"] = writeWaves(number, entry.normal);
        else
            writeLoops(number, entry.normal, json);
        return json;
    }

    // Samples.

    std::vector<Zone> readZones(FileRange range) const {
        ContentFault fault;
        const auto set = readSampleSet(read(range), fault);
        if (!set) refuse(fault, range.offset);
        return set->zones;
    }

    Json zones(FileRange range) const {
        Json list = Json::array();
        const auto all = readZones(range);
        for (const Zone& zone : all) {
            const bool hasSample = frames_.contains(zone.sampleNumber);
            const bool closesList = &zone == &all.back() && zone.sampleNumber == 0;
            if (closesList && all.size() > 1) continue;  // comes back by itself
            Json json;
            if (hasSample) json["file"] = numbered(zone.sampleNumber, ".wav");
            json["highKey"] = std::clamp(zone.key >> 24, 0, 127);
            json["highVelocity"] = std::clamp(zone.key >> 16 & 255, 0, 127);
            json["root"] = zone.rootKey;
            if (zone.rootFromKeyRange) json["rootFromKeyRange"] = true;
            const int most = hasSample ? frames_.at(zone.sampleNumber) : 0;
            json["length"] = std::clamp(zone.frames, 0, most);
            json["loop"] = std::clamp(zone.loopFrames, 0, json["length"].get<int>());
            json["tune"] = shortNumber(zone.tuneSemitones);
            if (zone.loopTuneSemitones != 0) json["loopTune"] = shortNumber(zone.loopTuneSemitones);
            if (zone.pan != 0) json["pan"] = shortNumber(zone.pan);
            if (zone.level != 1) json["level"] = shortNumber(zone.level);
            list.push_back(json);
        }
        return list;
    }

    /// The first zone that plays a sample tells what the WAV file says of pitch and loop.
    std::vector<std::optional<Zone>> firstZones() const {
        std::vector<std::optional<Zone>> first(bank_.samples.size());
        for (const auto& entry : bank_.items)
            for (const FileRange range : {entry.normal, entry.eco}) {
                if (range.size == 0) continue;
                for (const Zone& zone : readZones(range)) {
                    const auto number = static_cast<std::size_t>(zone.sampleNumber);
                    if (zone.sampleNumber > 0 && number < first.size() && !first[number])
                        first[number] = zone;
                }
            }
        return first;
    }

    void writeSamples() {
        const auto zones = firstZones();
        for (std::size_t i = 1; i < bank_.samples.size(); ++i) {
            if (bank_.samples[i].size == 0) continue;
            ContentFault fault;
            const auto data = readSampleData(read(bank_.samples[i]), fault);
            if (!data) refuse(fault, bank_.samples[i].offset);
            const int number = static_cast<int>(i);
            frames_[number] = data->frames();
            formats_[number] = data->format();
            writeSample(number, *data, zones[i]);
        }
        if (formatsOfAll().size() > 1)
            std::cerr << path_ << ": the samples have different formats; bank.json says float\n";
    }

    using Formats = std::set<SampleFormat>;

    Formats formatsOf(FileRange range) const {
        Formats formats;
        if (range.size == 0) return formats;
        for (const Zone& zone : readZones(range))
            if (const auto found = formats_.find(zone.sampleNumber); found != formats_.end())
                formats.insert(found->second);
        return formats;
    }
    Formats formatsOfAll() const {
        Formats formats;
        for (const auto& item : bank_.items) formats.merge(formatsOf(item.normal));
        return formats;
    }
    /// Floats hold what every other format holds.
    static SampleFormat commonFormat(const Formats& formats) {
        if (formats.size() > 1) return SampleFormat::float32;
        return formats.empty() ? SampleFormat::pcm16 : *formats.begin();
    }
    SampleFormat bankFormat() const { return commonFormat(formatsOfAll()); }

    void writeSample(int number, const SampleData& data, const std::optional<Zone>& zone) const {
        Sound sound;
        sound.rateHz = data.rateHz();
        sound.channels = data.channels();
        if (zone) {
            sound.rootKey = zone->rootKey;
            sound.tuneSemitones = zone->tuneSemitones;
            const std::int32_t end = zone->playedFrames(data), loop = zone->playedLoop(data);
            if (loop > 0) sound.loop = Sound::Loop{end - loop, loop, true};
        }
        const auto channels = static_cast<std::size_t>(data.channels());
        const auto values = static_cast<std::size_t>(data.frames()) * channels;
        sound.values.resize(values);
        if (data.format() == SampleFormat::float32) {
            std::copy_n(data.float32(), values, sound.values.begin());
        } else if (data.format() == SampleFormat::pcm16) {
            std::transform(data.pcm16(), data.pcm16() + values, sound.values.begin(),
                           [](std::int16_t value) { return static_cast<float>(value) / 32768.0f; });
        } else {
            for (std::size_t c = 0; c < channels; ++c) {
                DeltaState state = data.startState(0, static_cast<int>(c));
                for (std::size_t i = c; i < values; i += channels) {
                    sound.values[i] = state.value;
                    state.advance(data.delta()[i]);
                }
            }
        }
        writeWav(folder_ + "/" + numbered(number, ".wav"), sound,
                 data.format() == SampleFormat::pcm16 ? WavFormat::pcm16 : WavFormat::float32);
    }

    // Wavetables and tone wheels.

    std::string writeWaves(int number, FileRange range) const {
        ContentFault fault;
        const auto table = readWavetable(read(range), fault);
        if (!table) refuse(fault, range.offset);
        constexpr float fullScale = 32767;  // the maker's
        Sound sound;
        for (int w = 0; w < Wavetable::waves; ++w) {
            const std::int16_t* wave = table->wave(0, w);
            for (int i = 0; i < Wavetable::size(0) - 1; ++i)
                sound.values.push_back(static_cast<float>(wave[i]) / fullScale);
        }
        const std::string name = numbered(number, ".wav");
        writeWav(folder_ + "/" + name, sound, WavFormat::float32);
        return name;
    }

    void writeLoops(int number, FileRange range, Json& json) const {
        ContentFault fault;
        const auto wheels = readToneWheels(read(range), fault);
        if (!wheels) refuse(fault, range.offset);
        json["tuning"] = shortNumber(wheels->tuning);
        json["loops"] = Json::array();
        for (std::size_t k = 0; k < ToneWheels::pitchClasses; ++k) {
            Sound sound;
            sound.channels = ToneWheels::octaves;
            const std::int16_t* from = wheels->values.data() + wheels->start[k];
            std::transform(from, from + wheels->length[k], std::back_inserter(sound.values),
                           [](std::int16_t value) { return static_cast<float>(value) / 32768.0f; });
            char behind[16];
            std::snprintf(behind, sizeof behind, "-%02d.wav", static_cast<int>(k));
            const std::string name = numbered(number, behind);
            writeWav(folder_ + "/" + name, sound, WavFormat::pcm16);
            json["loops"].push_back(name);
        }
    }

    const std::string path_, folder_;
    BankFile bank_;
    // Of the samples there are.
    std::map<int, int> frames_;
    std::map<int, SampleFormat> formats_;
};

}  // namespace

void extractBank(const std::string& bankPath, const std::string& folder) {
    Extraction{bankPath, folder}.run();
}

}  // namespace stratovane::content_tool
