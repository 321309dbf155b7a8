// The plug-in's side of the host boundary: a dispatcher and a default answer for every request.
#pragma once

#include <cstdint>

#include "mrx/effect_record.h"
#include "mrx/events.h"
#include "mrx/host_records.h"
#include "mrx/opcodes.h"

namespace stratovane {

/// A derived class overrides what it answers itself. Texts are written into the host's buffers, of
/// the sizes below; a null pointer where a request needs one answers 0 and touches nothing, and so
/// does a request that nobody knows. Nothing is thrown into the host. Threads:
/// the host's audio thread calls process, processReplacing, processEvents and may call
/// setParameter; everything else is its UI thread's.
class HostPluginBase {
  public:
    HostPluginBase(HostCallback host, std::int32_t programs, std::int32_t parameters);
    virtual ~HostPluginBase() = default;
    HostPluginBase(const HostPluginBase&) = delete;
    HostPluginBase& operator=(const HostPluginBase&) = delete;

    EffectRecord* record() { return &record_; }

    virtual void setParameter(std::int32_t index, float value);
    virtual float getParameter(std::int32_t index);
    virtual void process(float** inputs, float** outputs, std::int32_t frames);
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames);
    /// Sets a parameter and lets the host record the change. UI thread.
    void setParameterAutomated(std::int32_t index, float value);

  protected:
    static constexpr std::int32_t nameSize = 24, displaySize = 8, programNameSize = 32;

    // Requests; sizes of text buffers are the constants above, 64 for strings.
    virtual void open();
    virtual void close();                           // the instance ends afterwards
    virtual void setProgram(std::int32_t program);  // 0: there is no other
    virtual void setProgramName(const char* name);
    virtual void getProgramName(char* name);
    virtual void getParameterLabel(std::int32_t index, char* label);
    virtual void getParameterDisplay(std::int32_t index, char* text);
    virtual void getParameterName(std::int32_t index, char* text);
    virtual void setSampleRate(float hertz);         // 2000..768000 Hz, others never arrive
    virtual void setBlockSize(std::int32_t frames);  // 1 and above, likewise
    virtual void suspend();
    virtual void resume();
    virtual std::intptr_t editorRequest(Opcode, std::int32_t index, std::intptr_t value,
                                        void* pointer, float number);
    virtual std::int32_t getChunk(void** data, bool preset);
    virtual std::int32_t setChunk(const void* data, std::int32_t size, bool preset);  // size >= 0
    virtual std::int32_t processEvents(const EventList* events);
    virtual bool canBeAutomated(std::int32_t index);
    virtual std::int32_t getProgramNameIndexed(std::int32_t category, std::int32_t index,
                                               char* name);
    virtual bool copyProgram(std::int32_t destination);
    virtual bool getOutputProperties(std::int32_t index, OutputProperties* properties);
    virtual std::int32_t getPlugCategory();
    virtual bool getEffectName(char* text);
    virtual bool getVendorString(char* text);
    virtual bool getProductString(char* text);
    virtual std::int32_t getVendorVersion();
    virtual std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer,
                                         float number);
    virtual std::int32_t canDo(const char* text);
    virtual std::int32_t fxIdle();
    virtual std::int32_t keysRequired();
    virtual std::int32_t getMidiProgramName(std::int32_t channel, MidiProgramName* program);
    virtual std::int32_t getCurrentMidiProgram(std::int32_t channel, MidiProgramName* program);
    virtual std::int32_t getMidiProgramCategory(std::int32_t channel,
                                                MidiProgramCategory* category);
    virtual bool hasMidiProgramsChanged(std::int32_t channel);

    /// Asks the host; 0 without one. The thread the request belongs to.
    std::intptr_t callHost(HostRequest request, std::int32_t index = 0, std::intptr_t value = 0,
                           void* pointer = nullptr, float number = 0) const;
    /// Called before every dispatcher request but processEvents: the calling thread is the UI
    /// thread.
    virtual void onUserInterfaceRequest() {}

    float sampleRate_ = 44100.0f;
    HostCallback host_ = nullptr;
    std::int32_t program_ = 0;
    std::int32_t blockSize_ = 1024;
    EffectRecord record_;

  private:
    static std::intptr_t requestEntry(EffectRecord*, std::int32_t, std::int32_t, std::intptr_t,
                                      void*, float);
    static void processEntry(EffectRecord*, float**, float**, std::int32_t);
    static void processReplacingEntry(EffectRecord*, float**, float**, std::int32_t);
    static void setParameterEntry(EffectRecord*, std::int32_t, float);
    static float getParameterEntry(EffectRecord*, std::int32_t);
    std::intptr_t dispatch(Opcode opcode, std::int32_t index, std::intptr_t value, void* pointer,
                           float number);
};

}  // namespace stratovane
