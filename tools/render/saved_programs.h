// The bank and preset files that are kept of a song's end.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "content/bytes.h"
#include "failure.h"
#include "options.h"
#include "plugin_host.h"
#include "shared/new_file.h"

namespace stratovane::render {

/// No file is left behind unless `commit` succeeded.
class SavedPrograms {
  public:
    /// Before the song, so that a place that takes no file is told in time.
    std::optional<Failure> open(const Options& options);
    /// Asks the plug-in for its state and writes it. An empty part has none.
    std::optional<Failure> write(PluginHost& plugIn);
    std::optional<Failure> commit();

  private:
    struct File {
        std::optional<int> part;  // 0..15; none: the bank
        NewFile file;
    };

    std::vector<std::unique_ptr<File>> files_;
};

}  // namespace stratovane::render
