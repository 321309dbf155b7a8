// The object the host gets: the synthesizer together with its editor.
#pragma once

#include <memory>

#include "editor/editor.h"
#include "host/synth.h"

namespace stratovane {

class SynthPlugin final : public Synth {
  public:
    explicit SynthPlugin(HostCallback host);

    /// The editor's control follows the value.
    void setParameter(std::int32_t index, float value) override;

  protected:
    void setProgram(std::int32_t program) override;
    std::intptr_t editorRequest(Opcode opcode, std::int32_t index, std::intptr_t value,
                                void* pointer, float number) override;
    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer,
                                 float number) override;

  private:
    std::unique_ptr<Editor> editor_;
};

}  // namespace stratovane
