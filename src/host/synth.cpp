// Construction, identification of the host, the delayed start and changes of rate.

#include "host/synth.h"

#include <cctype>
#include <string>

#include "engine/engine.h"
#include "platform/platform.h"

namespace stratovane {

namespace {

constexpr std::int32_t programCount = 1;

bool contains(std::string text, std::string part) {
    for (std::string* s : {&text, &part})
        for (char& c : *s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text.find(part) != std::string::npos;
}

}  // namespace

Synth::Synth(HostCallback host) : HostPluginBase{host, programCount, hostParameters} {
    trace_.setSink(debugOutput);
    const std::uint32_t mask = readTraceMask(store_);
    trace_.setMask(mask);
    if (mask > 1)
        trace_.write(TraceLevel::lifecycle, "**** Stratovane 2 **** 2.0.0.600 (04 Oct 2005) ****");
    trace_.write(TraceLevel::lifecycle, "Synth");
    identifyHost();

    settings_.read(store_, Settings::Which::all, followsPlayback_ ? 2 : 1);
    shared_.liftCompensation = Lift{}.set(settings_.lift, sampleRate_);
    trace_.write(TraceLevel::content, "content path: %s", settings_.contentLocation.c_str());

    outputs_ = settings_.outputs;
    record_.outputCount = 2 * outputs_.pairs();
    parameters_.setOutputPairs(outputs_.pairs());
    record_.flags = canRenderReplacing | stateIsChunk | isInstrument;
    record_.uniqueId = fourCharacters("QvRR");
    record_.version = 1;

    if ((contentFound_ = openLibrary(contentFolder()))) updateMidiLists();
    library_.setPreloadMode(settings_.combiPreload);
    parameters_.set(0, settings_.masterVolume);
    if (host_ != nullptr) callHost(HostRequest::needIdle);
}

Synth::~Synth() {
    trace_.write(TraceLevel::lifecycle, "~Synth");
    trace_.flush();
    engine_.reset();
    trace_.write(TraceLevel::lifecycle, "~Synth ok!");
}

std::string Synth::contentFolder() const {
    return Settings::asContentLocation(settings_.contentLocation);
}

bool Synth::openLibrary(const std::string& folder) {
    return library_.open(folder, trace_.on(TraceLevel::content) ? ContentLibrary::Tracing::on
                                                                : ContentLibrary::Tracing::off);
}

void Synth::identifyHost() {
    char vendor[256] = {}, product[256] = {};
    callHost(HostRequest::productString, 0, 0, product);
    const auto version = static_cast<std::int32_t>(callHost(HostRequest::vendorVersion));
    callHost(HostRequest::vendorString, 0, 0, vendor);
    vendor[sizeof vendor - 1] = product[sizeof product - 1] = '\0';
    trace_.write(TraceLevel::lifecycle, "Host name: %s", static_cast<const char*>(product));
    trace_.write(TraceLevel::lifecycle, "Host Version %d", version);
    trace_.write(TraceLevel::lifecycle, "Host vendor: %s", static_cast<const char*>(vendor));

    struct Old {
        const char* product;
        std::int32_t before;
        const char* warning;
    };
    static constexpr Old oldHosts[] = {
        {"Tessaline MRX", 8100,
         "The inspector will not update during playback in this Tessaline SX version!"},
        {"Orvanta", 3100, "The inspector will not update during playback in this Orvanta version!"},
    };
    for (const Old& old : oldHosts) {
        if (!contains(product, old.product) || version >= old.before) continue;
        followsPlayback_ = false;
        trace_.write(TraceLevel::warning, old.warning);
    }
    hidesParameters_ = contains(vendor, "Microsoft Corporation") || contains(vendor, "is-");
    resumesItself_ = contains(product, "MRX Relay Slave");
}

void Synth::finishConstruction() {
    if (resumesItself_) resume();  // such a host never asks for it
    trace_.write(TraceLevel::lifecycle, "Synth - ok!");
}

void Synth::lazyInit(const char* caller) {
    if (!lazyInitPending_) return;
    lazyInitPending_ = false;
    trace_.write(TraceLevel::lifecycle, "init (called from %s)", caller);
    engine_ = std::make_unique<Engine>(shared_, trace_, outputs_.pairs(), &library_);
    library_.setRenderPassed([this](std::uint32_t stamp) { return shared_.epoch.passed(stamp); });
    engine_->setLift(settings_.lift);
    parameters_.refreshMasterGain();
    parameters_.attach(*engine_);
    constexpr int ecoMode = 1;
    for (int part = 0; part < parts; ++part) {
        engine_->patch(part).store(0, ecoMode, settings_.memoryUse);
        PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
        setup.location = 0;
        setup.pendingProgram.store(0);
        setup.bankSelect = 0;
        setup.parameterNumber = 0;
        setup.linked = false;
        for (auto& knob : setup.knobs) knob = 0.5f;
    }
    status_.clear();
    trace_.write(TraceLevel::lifecycle, "init ok!");
}

Engine& Synth::startedEngine() {
    lazyInit("editor");
    return *engine_;
}

void Synth::resume() {
    trace_.write(TraceLevel::lifecycle, "resume()");
    lazyInit("resume");
    if (!contentFound_ && (contentFound_ = openLibrary(contentFolder()))) updateMidiLists();
    if (multi_.defaultPatchWanted) multi_.programRequests.bump();
    chunk_ = Bytes{};
    {
        const RenderGate::Hold hold{gate_};
        const double rate = static_cast<double>(sampleRate_);
        transport_.setSampleRate(rate);
        engine_->setSampleRate(rate, blockSize_);
        engine_->setLift(settings_.lift);
        parameters_.refreshMasterGain();
        midi_.clear();
        commands_.drop();
        resumed_ = true;
    }
    callHost(HostRequest::needIdle);
    callHost(HostRequest::wantMidi, 0, 1);
}

void Synth::updateMidiLists() {
    const int entries = programs_.rebuild({.combis = settings_.midiCombis != CombiUse::off,
                                           .gmBanks = (settings_.inspector & 1) != 0,
                                           .banks80to89 = (settings_.inspector & 2) != 0});
    trace_.write(TraceLevel::content, "updateMidiLists: %d patches in inspector", entries);
    if (followsPlayback_) programs_.markAllChanged();
    publishPresence();
}

void Synth::publishPresence() {
    constexpr int kits = 79;
    for (int bank = kits; bank < 128; bank = bank == kits ? bankOf(firstCombi) : bank + 1)
        for (int program = 0; program < 128; ++program)
            presence_.set(bank, program, !library_.programName(bank, program).empty());
}

bool Synth::setContentLocation(std::string_view path) {
    const std::string folder = Settings::asContentLocation(path);
    if (!contentFound_) {
        contentFound_ = openLibrary(folder);
        if (!contentFound_) {
            trace_.write(TraceLevel::warning, "content not found: %s", folder.c_str());
            return false;
        }
    }
    settings_.contentLocation = folder;
    settings_.writeContentLocation(store_);
    updateMidiLists();
    return true;
}

}  // namespace stratovane
