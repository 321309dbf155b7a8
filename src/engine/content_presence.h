// Which drum kits and combis the library has, for the thread that must not ask it.
#pragma once

#include <array>
#include <cstdint>

#include "base/shared.h"

namespace stratovane {

/// One bit a program of bank 79 and banks 120..127. Published by the UI thread after a scan; any
/// thread reads.
class ContentPresence {
  public:
    void set(int bank, int program, bool there) {
        if (const int row = rowOf(bank); row >= 0) {
            SharedBits& word =
                bits_[static_cast<std::size_t>(row)][static_cast<std::size_t>(program >> 5)];
            const std::uint32_t bit = 1u << (program & 31);
            there ? word.set(bit) : static_cast<void>(word.clear(bit));
        }
    }
    bool has(int bank, int program) const {
        const int row = rowOf(bank);
        return row >= 0 && program >= 0 && program < 128 &&
               (bits_[static_cast<std::size_t>(row)][static_cast<std::size_t>(program >> 5)]
                        .get() >>
                    (program & 31) &
                1) != 0;
    }

  private:
    static constexpr int rowOf(int bank) {
        return bank == 79 ? 0 : bank >= 120 && bank <= 127 ? bank - 119 : -1;
    }
    std::array<std::array<SharedBits, 4>, 9> bits_;
};

}  // namespace stratovane
