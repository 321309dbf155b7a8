// Content for tests of voices: recordings in memory, and a part over a library of its own.
#pragma once

#include <filesystem>
#include <numbers>

#include "content/bank_file_writer.h"
#include "content/content_library.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "part_fixture.h"
#include "support/temporary_folder.h"
#include "voice/sample/sample_voice.h"

namespace stratovane {

inline std::vector<float> sine(double periodFrames, int frames, double amplitude = 0.5) {
    std::vector<float> x(static_cast<std::size_t>(frames));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(
            amplitude * std::sin(2 * std::numbers::pi * static_cast<double>(i) / periodFrames));
    return x;
}

/// A sample and its zone.
struct Recording {
    std::unique_ptr<SampleData> data;
    SampleSlot slot;
    Zone zone{.key = Zone::last, .sampleNumber = 1, .frames = 1 << 30};

    Recording(const std::vector<float>& values, SampleFormat format, int loopFrames = 0,
              int channels = 1, int rateHz = 44100) {
        ContentFault fault;
        data = readSampleData(
            writeSampleData({.values = values, .channels = channels, .rateHz = rateHz}, format),
            fault);
        slot.publish(data.get());
        zone.sample = &slot;
        setLoop(loopFrames);
    }
    /// As the library does when it loads the sample.
    void setLoop(int frames) {
        zone.loopFrames = frames;
        if (data->format() != SampleFormat::delta || frames == 0) return;
        for (int c = 0; c < data->channels(); ++c)
            zone.loopStart[static_cast<std::size_t>(c)] =
                data->stateAt(zone.playedFrames(*data) - zone.playedLoop(*data), c);
    }
    ZoneChoice choice() const { return {&zone, data.get()}; }
};

/// A content folder, a library over it, and a part that selects from there.
class ContentPart {
  public:
    static constexpr int sampleBank = 20, kitBank = 5;

    void put(const std::string& path, ByteView bytes) {
        std::filesystem::create_directories(std::filesystem::path{folder_ / path}.parent_path());
        folder_.put(path, std::string{bytes.text()});
    }
    void put(const std::string& path, const BankFileSource& bank) {
        put(path, ByteView{writeBankFile(bank)});
    }
    /// One set of one zone in the sample bank.
    void putSample(const SampleSource& source, SampleFormat format, Zone zone) {
        zone.key = Zone::last;
        zone.sampleNumber = 1;
        const auto text = writeSampleData(source, format);
        put("Samples/020 Test.bank",
            BankFileSource{.items = {{"Set", "", writeSampleSet({&zone, 1}), {}}},
                           .samples = {text}});
    }
    void load() {
        for (int i = 0; library.busy() && i < 1000; ++i) library.idle();
    }
    /// Makes an element play item 0 of a bank, unfiltered, without attack, at full sustain.
    static void choose(Patch& patch, int element, ElementType type, int bank = sampleBank) {
        patch.initElement(element, type);
        patch.set(element, elementIndex::bank, entry(bank, 128.9f));
        patch.set(element, elementIndex::item, 0);
        for (const int index : {tone::randomStart, tone::attack, tone::click, tone::muteFade, 103})
            patch.set(element, index, 0);
        patch.set(element, tone::sustain, 1);
    }
    void start(ElementType type, int bank = sampleBank, double rate = 44100) {
        part.reset();
        library.close();
        ASSERT_TRUE(library.open(root()));
        part = std::make_unique<TestPart>(1, rate);
        part->state.patch.setPlace({.library = &library});
        choose(part->state.patch, 1, type, bank);
        load();
    }

    std::string root() const { return folder_ / ""; }

  private:
    TemporaryFolder folder_;
    Trace trace_;

  public:
    ContentLibrary library{trace_};
    std::unique_ptr<TestPart> part;
};

}  // namespace stratovane
