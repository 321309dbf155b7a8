// What ends the program early: an exit code and a sentence, thrown past whatever is under way.
#pragma once

#include <stdexcept>
#include <string>

namespace stratovane::content_tool {

enum class Exit { ok = 0, faults = 1, usage = 1, input = 2, output = 4 };

class Failure : public std::runtime_error {
  public:
    Failure(Exit exit, const std::string& sentence) : std::runtime_error{sentence}, exit_{exit} {}
    Exit exit() const { return exit_; }

  private:
    Exit exit_;
};

}  // namespace stratovane::content_tool
