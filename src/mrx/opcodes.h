// Numbers of the requests between host and plug-in.
#pragma once

#include <cstdint>

namespace stratovane {

/// Host to plug-in, through the effect record's request function.
enum class Opcode : std::int32_t {
    open = 0,
    close = 1,
    setProgram = 2,
    getProgram = 3,
    setProgramName = 4,
    getProgramName = 5,
    getParameterLabel = 6,
    getParameterDisplay = 7,
    getParameterName = 8,
    getMeterLevel = 9,
    setSampleRate = 10,
    setBlockSize = 11,
    mainsChanged = 12,
    editorRectangle = 13,
    editorOpen = 14,
    editorClose = 15,
    editorIdle = 19,
    identify = 22,
    getChunk = 23,
    setChunk = 24,
    processEvents = 25,
    canBeAutomated = 26,
    categoryCount = 28,
    programNameIndexed = 29,
    copyProgram = 30,
    getOutputProperties = 34,
    plugCategory = 35,
    effectName = 45,
    vendorString = 47,
    productString = 48,
    vendorVersion = 49,
    vendorSpecific = 50,
    canDo = 51,
    idle = 53,
    keysRequired = 57,
    interfaceVersion = 58,
    editorKeyDown = 59,
    editorKeyUp = 60,
    editorKnobMode = 61,
    getMidiProgramName = 62,
    getCurrentMidiProgram = 63,
    getMidiProgramCategory = 64,
    hasMidiProgramsChanged = 65,
};

/// Plug-in to host, through the callback given to the entry.
enum class HostRequest : std::int32_t {
    automate = 0,
    version = 1,
    wantMidi = 6,
    getTime = 7,
    sendEvents = 8,
    needIdle = 14,
    vendorString = 32,
    productString = 33,
    vendorVersion = 34,
    updateDisplay = 42,
};

}  // namespace stratovane
