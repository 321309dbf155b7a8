// The object the host gets: the synthesizer together with its editor.
#pragma once

#include <memory>

#include "editor/editor.h"
#include "host/synth.h"

namespace stratovane {

class SynthPlugin final : public Synth, private HostParameterObserver {
  public:
    explicit SynthPlugin(HostCallback host);

    Editor& editor() { return *editor_; }

  protected:
    void setProgram(std::int32_t program) override;
    std::intptr_t editorRequest(Opcode opcode, std::int32_t index, std::intptr_t value,
                                void* pointer, float number) override;
    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer,
                                 float number) override;

  private:
    /// The editor's control follows the value, whoever sets it.
    void hostParameterSet(int index) override;

    std::unique_ptr<Editor> editor_;
};

}  // namespace stratovane
