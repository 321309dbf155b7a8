// A host in the test tree: loads the built library and drives it through its entry point.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "mrx/effect_record.h"
#include "mrx/events.h"
#include "mrx/host_records.h"
#include "mrx/opcodes.h"

namespace stratovane {

/// One plug-in instance in a host of stated name, with settings of its own. What the plug-in asks
/// of the host is recorded. One instance of this class at a time: the boundary gives the callback
/// no other way to find it before the effect record exists.
class TestHost {
  public:
    struct Identity {
        std::string product = "Test Host", vendor = "Stratovane";
        std::int32_t version = 1000;
        bool answers = true;
    };

    /// `settings`: lines `Name=Value`.
    explicit TestHost(const std::string& settings = {}) : TestHost{settings, Identity{}} {}
    TestHost(const std::string& settings, const Identity& identity);
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    EffectRecord* record = nullptr;
    TimeInfo time;
    bool givesTime = true;
    std::vector<std::int32_t> requests;  // opcodes the plug-in sent, in order, from either thread
    std::vector<std::vector<std::uint8_t>> echoed;  // three bytes each
    std::vector<std::vector<float>> outputs;

    std::intptr_t ask(Opcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                      void* pointer = nullptr, float number = 0) const;
    std::string text(Opcode opcode, std::int32_t index = 0) const;
    void start(float rate = 44100, std::int32_t block = 256);
    /// Blocks of no frames and idle calls until the plug-in has nothing left to load.
    void settle();
    void midi(std::vector<MidiEvent> events) const;
    /// A whole message of the bytes between 0xF0 and 0xF7.
    void exclusive(std::vector<std::uint8_t> bytes, std::int32_t frame = 0) const;
    void render(std::int32_t frames);
    float peak(std::size_t output) const;
    void set(std::int32_t index, float value) const { record->setParameter(record, index, value); }
    float get(std::int32_t index) const { return record->getParameter(record, index); }
    int sent(HostRequest request) const;
    std::string settingsFile() const { return settingsPath_; }

  private:
    static std::intptr_t callback(EffectRecord*, std::int32_t, std::int32_t, std::intptr_t, void*,
                                  float);

    Identity identity_;
    std::string settingsPath_;
    void* library_ = nullptr;
    mutable std::mutex requestsMutex_;
    static TestHost* current_;
};

/// A channel message at a frame.
MidiEvent message(int status, int data1, int data2 = 0, std::int32_t frame = 0);

}  // namespace stratovane
