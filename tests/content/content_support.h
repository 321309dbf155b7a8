// A content folder that tests fill, and a library over it.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/trace.h"
#include "content/bank_file_writer.h"
#include "content/content_library.h"
#include "content/sample_data.h"
#include "content/sample_set.h"
#include "support/temporary_folder.h"

namespace stratovane::content_test {

/// Lines traced since the last call.
std::vector<std::string> takeTraces();

std::string asText(ByteView bytes);

/// A zone for all velocities up to a note.
Zone zoneUpTo(int note, int sample, int velocity = 127);
/// The zones of a set whose samples play for equal ranges of the keyboard.
Bytes sampleSetOf(const std::vector<int>& samples);
/// A 16-bit mono sample whose file range has exactly `bytes` bytes.
Bytes sampleOfBytes(std::size_t bytes);
std::vector<float> randomWave(std::size_t values, unsigned seed);

struct ContentFixture {
    ContentFixture();

    void put(const std::string& path, const std::string& text) const;
    void put(const std::string& path, ByteView bytes) const { put(path, asText(bytes)); }
    bool open() { return library.open(folder / "", ContentLibrary::Tracing::on); }
    /// Idle calls until nothing is left to do; what they answered.
    std::vector<std::int32_t> idleUntilDone();

    TemporaryFolder folder;
    Trace trace;
    ContentLibrary library{trace};
};

}  // namespace stratovane::content_test
