#include "content/idle_loader.h"

#include <algorithm>

#include "base/trace.h"
#include "content/content_bank.h"

namespace stratovane {

namespace {

using Version = ContentItem::Version;

constexpr int waits = 99, freedItem = 256, loadedEco = 512, freedEco = 1024, loadedSamples = 2048,
              freedSample = 4096;
constexpr std::int64_t samplesPerStep = 0x800000;
constexpr std::uint32_t emptyItemBytes = 4;  // items up to here are not counted

class BankStep {
  public:
    BankStep(ContentBank& bank, LoaderState& state, Trace& trace)
        : bank_{bank}, state_{state}, trace_{trace} {}

    int run() {
        if (bank_.stamp > state_.pass) return waits;
        const std::uint32_t requests = bank_.requests;
        const bool withSamples = bank_.sampleCount() > 0;
        if (loadItems(&ContentItem::normal, emptyItemBytes) && bank_.code() != 0)
            return bank_.code();
        if (withSamples) {
            if (loadItems(&ContentItem::eco, 0)) return bank_.code() + loadedEco;
            if (loadSamples()) return bank_.code() + loadedSamples;
            if (freeSample()) return bank_.code() + freedSample;
        }
        if (state_.keepItems) return 0;
        if (withSamples && freeItem(&ContentItem::eco)) return bank_.code() + freedEco;
        if (freeItem(&ContentItem::normal)) return bank_.code() + freedItem;
        bank_.done = requests;
        return 0;
    }

  private:
    using Which = Version ContentItem::*;

    template <class Visit>
    void forEachItem(Visit visit) {
        for (int i = 0; i < itemsPerBank; ++i)
            if (ContentItem* item = bank_.item(i)) visit(i, *item);
    }

    bool loadItems(Which which, std::uint32_t uncounted) {
        bool due = false;
        forEachItem([&](int number, ContentItem& item) {
            Version& version = item.*which;
            if (version.references == 0 || version.data) return;
            due = true;
            ContentFault fault;
            version.data = bank_.load(item, version, fault);
            if (!version.data) {
                trace_.write(TraceLevel::warning, "%s, item %d, byte %d: %s", bank_.path().c_str(),
                             number, fault.offset, fault.sentence);
                version.references = 0;  // or it would be tried for ever
                return;
            }
            if (version.range.size > uncounted) state_.memoryInUse += version.range.size;
            if (SampleSet* set = setOf(version)) findSamples(*set);
            version.slot.publish(version.data.get());
        });
        return due;
    }

    SampleSet* setOf(const Version& version) const {
        return bank_.kind() == ContentKind::samples ? static_cast<SampleSet*>(version.data.get())
                                                    : nullptr;
    }

    void findSamples(SampleSet& set) {
        for (Zone& zone : set.zones) {
            ContentSample* sample = bank_.sample(zone.sampleNumber);
            if (sample == nullptr || sample->range.size == 0) continue;
            sample->references = sample->references + 1;
            zone.sample = &sample->slot;
            if (sample->data) findLoopStart(zone, *sample->data);
        }
    }

    static void findLoopStart(Zone& zone, const SampleData& data) {
        const std::int32_t loop = zone.playedLoop(data);
        if (data.format() != SampleFormat::delta || loop == 0) return;
        for (int channel = 0; channel < data.channels(); ++channel)
            zone.loopStart[static_cast<std::size_t>(channel)] =
                data.stateAt(zone.playedFrames(data) - loop, channel);
    }

    bool loadSamples() {
        const std::int64_t before = state_.memoryInUse;
        bool due = false;
        for (int i = 1; i <= bank_.sampleCount(); ++i) {
            ContentSample& sample = *bank_.sample(i);
            if (sample.references == 0 || sample.data || sample.failed) continue;
            due = true;
            ContentFault fault;
            sample.data = bank_.load(sample, fault);
            if (!sample.data) {
                trace_.write(TraceLevel::warning, "%s, sample %d, byte %d: %s",
                             bank_.path().c_str(), i, fault.offset, fault.sentence);
                sample.failed = true;
                continue;
            }
            // The zones' loops come first: who finds the sample finds them.
            forEachItem([&](int, ContentItem& item) {
                for (const Version* version : {&item.normal, &item.eco})
                    if (SampleSet* set = setOf(*version))
                        for (Zone& zone : set->zones)
                            if (zone.sample == &sample.slot) findLoopStart(zone, *sample.data);
            });
            sample.slot.publish(sample.data.get());
            state_.memoryInUse += sample.range.size;
            if (state_.memoryInUse > before + samplesPerStep) break;
        }
        return due;
    }

    bool freeSample() {
        for (int i = 1; i <= bank_.sampleCount(); ++i) {
            ContentSample& sample = *bank_.sample(i);
            if (sample.references != 0 || !sample.data) continue;
            sample.slot.publish(nullptr);
            sample.data.reset();
            state_.memoryInUse -= sample.range.size;
            return true;
        }
        return false;
    }

    bool freeItem(Which which) {
        for (int i = 0; i < itemsPerBank; ++i) {
            ContentItem* item = bank_.item(i);
            if (item == nullptr) continue;
            Version& version = item->*which;
            if (version.references != 0 || !version.data) continue;
            version.slot.publish(nullptr);
            if (const SampleSet* set = setOf(version)) dropSamples(*set);
            version.data.reset();
            const std::uint32_t uncounted = which == &ContentItem::normal ? emptyItemBytes : 0;
            if (version.range.size > uncounted) state_.memoryInUse -= version.range.size;
            return true;
        }
        return false;
    }

    void dropSamples(const SampleSet& set) {
        for (const Zone& zone : set.zones) {
            ContentSample* sample =
                zone.sample != nullptr ? bank_.sample(zone.sampleNumber) : nullptr;
            if (sample == nullptr) continue;
            sample->references = std::max(sample->references - 1, 0);
            if (sample->references == 0) sample->failed = false;
        }
    }

    ContentBank& bank_;
    LoaderState& state_;
    Trace& trace_;
};

}  // namespace

int runBankStep(ContentBank& bank, LoaderState& state, Trace& trace) {
    return BankStep{bank, state, trace}.run();
}

}  // namespace stratovane
