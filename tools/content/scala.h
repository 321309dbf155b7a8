// Scala scales and keyboard mappings as tuning tables.
#pragma once

#include <memory>
#include <string>

#include "content/tuning_table.h"

namespace stratovane::content_tool {

/// Without a mapping (an empty path) degree 0 is middle C (60) and note 69 has 440 Hz. Notes that a
/// mapping leaves out keep equal temperament.
std::unique_ptr<TuningTable> tuningFromScala(const std::string& scalePath,
                                             const std::string& mappingPath);

}  // namespace stratovane::content_tool
