#pragma once

#include <travik/tables/CountedTables.h>

namespace Travik {

/// A kind of block that exists once a path: instance 0 to 3 for the paths A to D, added to the identifier of path A.
template <class Block>
class PathBlock : public Block {
public:
    explicit PathBlock(int instance, bool stopConversionOnError = false)
        : Block(static_cast<unsigned short>(Block::Record::table.name.id + instance), stopConversionOnError),
          instance_(instance) {}
    /// A flag is no instance: true would be path B.
    template <std::same_as<bool> Flag>
    explicit PathBlock(Flag instance, bool stopConversionOnError = false) = delete;

    /// The instance that the block was made with, whatever identifier it took over since.
    int getInstance() const { return instance_; }

private:
    int instance_;
};

/// The frequency points of a path.
template <class R>
class PathFrequencies : public PathBlock<ListBlock<R>> {
public:
    using PathFrequencies::PathBlock::PathBlock;
    using typename PathFrequencies::ListBlock::Value;

    unsigned int getNumberOfFrequency() const { return this->count(); }
    void setNumberOfFrequency(unsigned int count) { this->storeCount(count); }
    Value getFrequencyValue(unsigned int k) const { return this->value(k); }
    void setFrequencyValue(Value value, unsigned int k) { this->storeValue(value, k); }
};

} // namespace Travik
