// Writes the tree of the host parameters to standard output; the build embeds and installs it.

#include <cstdio>

#include "automation/parameter_structure.h"

int main() {
    const std::string text = stratovane::parameterStructure();
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
