// The items of the three kinds of banks, made from their JSON.
#pragma once

#include "bank_spec.h"
#include "content/bank_file_writer.h"
#include "json_node.h"
#include "sample_pool.h"

namespace stratovane::content_tool {

/// Zones of a sample set, and its small version when the JSON asks for one.
void buildSampleSet(const JsonNode& item, SampleFormat format, SamplePool& pool,
                    BankFileSource::Item& out);
/// A wavetable from 64 cycles in one file or in 64.
Bytes buildWavetable(const JsonNode& item, const std::string& folder);
/// Twelve loops of eight channels each.
Bytes buildToneWheels(const JsonNode& item, const std::string& folder);

SampleFormat sampleFormat(const JsonNode& node);

}  // namespace stratovane::content_tool
