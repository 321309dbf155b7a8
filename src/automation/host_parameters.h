// The host's view of the instrument: 2528 values, their names and displays.
#pragma once

#include <array>
#include <cstdint>

#include "automation/host_rows.h"
#include "base/engine_shared.h"
#include "base/published.h"
#include "base/shared.h"
#include "base/text_out.h"
#include "base/trace.h"

namespace stratovane {

class CommandRing;
class Engine;
class Patch;
struct MultiSetup;

/// Told of every value that is set, by whichever thread sets it.
class HostParameterObserver {
  public:
    virtual void hostParameterSet(int index) = 0;

  protected:
    ~HostParameterObserver() = default;
};

/// Most values live in the parts' patches; the others, and the last value set of each, are held
/// here. Threads: set and get from any; names and displays on the UI thread.
class HostParameters {
  public:
    HostParameters(EngineShared& shared, MultiSetup& multi, CommandRing& commands);

    /// From now on values reach the engine's patches; the master effects' 96 values are pushed at
    /// once. UI thread.
    void attach(Engine& engine);

    /// How many output pairs displays know, until there is an engine to tell. Construction.
    void setOutputPairs(int pairs) { outputPairs_ = pairs; }

    /// Who is told of what is set; null for nobody. Construction.
    void observe(HostParameterObserver* observer) { observer_ = observer; }

    /// Limited to 0..1; an index that does not exist is ignored.
    void set(int index, float value);
    /// What set stored, or the patch's own value where a part parameter is mapped; 0 for no
    /// parameter.
    float get(int index) const;
    void showName(TextOut& out, int index) const;
    void showValue(TextOut& out, int index) const;

    /// Notes what a patch brought with it, and only that.
    void remember(int index, float value) { values_[static_cast<std::size_t>(index)] = value; }
    /// Likewise from the part's insert effect.
    void rememberInsert(const HostAddress& insert);
    /// Likewise the 24 values of a master effect, slot 0..3.
    void rememberMaster(int slot);
    /// After the editor changed a part's patch: what differs from the value last set counts as set
    /// to what the patch says now. UI thread.
    void refreshPart(int part);
    /// After an effect was loaded or changed: its 24 values count as set to what it says now. Slot
    /// 0..3. UI thread.
    void refreshInsert(int part, int slot);
    void refreshMaster(int slot);
    /// The editor is about to work on a parameter of a part's patch (see hostIndexOf): when the
    /// host shows it, it counts as set. UI thread.
    void touch(int part, int element, int index);
    /// Whether a part's patch has neither name nor elements.
    bool partIsEmpty(int part) const;

    /// Sets the master gain from the master volume and the output enhancer's compensation.
    void refreshMasterGain();
    /// The value last set, whatever the patch says.
    float stored(int index) const { return values_[static_cast<std::size_t>(index)]; }

  private:
    void setStrip(const HostAddress& address, float value);
    void keepKnob(const HostAddress& address, float value);
    void countAsSet(int index, float value);
    void refreshEffect(HostAddress effect, const Patch& patch);
    bool mapped(const HostAddress& address) const;
    void showOwn(TextOut& out, const HostAddress& address, float value) const;

    EngineShared& shared_;
    MultiSetup& multi_;
    CommandRing& commands_;
    HostParameterObserver* observer_ = nullptr;
    int outputPairs_ = maxOutputPairs;
    Published<Engine> engine_;
    std::array<Shared<float>, hostParameters> values_;
};

}  // namespace stratovane
