#include "content/bytes.h"

namespace stratovane {

void ByteWriter::append(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void ByteWriter::zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }

void ByteWriter::fillTo(std::size_t wanted) { bytes_.resize(std::max(wanted, bytes_.size())); }

}  // namespace stratovane
