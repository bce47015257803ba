#pragma once

#include "Support.h"

#include <cstring>

/// What the tests of the board tables share.
namespace BoardTables {

using Travik::HwDatablock;

/// A line of a text, counted from 0; its end for a negative number: -1 is the last.
inline std::string lineOf(const std::string& text, int number) {
    std::vector<std::string> lines;
    std::istringstream is(text);
    for (std::string line; std::getline(is, line);)
        lines.push_back(line);
    const auto index = static_cast<std::size_t>(number < 0 ? static_cast<int>(lines.size()) + number : number);
    return index < lines.size() ? lines[index] : "(no line " + std::to_string(number) + ')';
}

inline long linesOf(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

/// Stores a 32-bit word of the image and refreshes the checksum.
inline void poke(HwDatablock& block, std::size_t offset, unsigned int word) {
    std::memcpy(block.getData() + offset, &word, sizeof word);
    block.setChecksum(block.computeChecksum());
}

/// A record of the block's class with another identifier, a count of 5, sign-extended 16-bit values and a right
/// checksum.
template <class Block>
typename Block::Record sealedRecord(Block& block) {
    typename Block::Record record{};
    const std::size_t size = block.getBlockSize();
    auto* bytes = reinterpret_cast<char*>(&record);
    for (std::size_t at = 8; at + 4 <= size; at += 4) {
        const int word = at == 8 ? 5 : static_cast<int>(at * 37 % 4001) - 2000;
        std::memcpy(bytes + at, &word, sizeof word);
    }
    record.id = 777;
    record.blockSize = 999;
    record.alignment = 3;
    record.checksum = 0;
    record.checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(&record), block.getBlockSize());
    return record;
}

} // namespace BoardTables
