// Makes bank files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "content/bytes.h"

namespace stratovane {

struct BankFileSource {
    struct Item {
        std::string name{}, secondName{};  // at most 255 characters
        Bytes normal{}, eco{};             // an empty normal version: no such item
    };
    std::int8_t code = 0;
    std::string secondName{};
    std::vector<Item> items{};     // by number; at most 128 can be chosen
    std::vector<Bytes> samples{};  // number 1 on: samples[0] is sample 1
    Bytes sharedTable{};           // its first byte is the slot, below 16; empty: none
};

/// The whole file; nothing (empty) when it would pass 2 GiB. Any thread but the audio thread.
Bytes writeBankFile(const BankFileSource& bank);

}  // namespace stratovane
