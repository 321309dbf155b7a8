// What ends the program early: an exit code and a sentence.
#pragma once

#include <string>

namespace stratovane::render {

enum class Exit { ok = 0, usage = 1, input = 2, plugIn = 3, output = 4 };

struct Failure {
    Exit exit = Exit::usage;
    std::string sentence;
};

}  // namespace stratovane::render
