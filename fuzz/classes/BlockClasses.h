#pragma once

#include "Arguments.h"
#include "Rules.h"

#include <travik/datablock/HwDatablock.h>

#include <memory>
#include <string_view>
#include <typeindex>
#include <vector>

namespace Fuzz {

/// A public operation of a class, called with whatever the input makes of its parameters.
struct Accessor {
    const char* name;
    /// Whether it may change the image: the others are held to leave it alone.
    bool changes;
    void (*call)(Surroundings& with);
};

/// A setter with the getter that gives back what it stored.
struct Couple {
    const char* setter;
    const char* getter;
    Rule rule;
    /// Sets and gets with what the input makes of the parameters, and holds the outcome to the rule.
    void (*check)(Surroundings& with, const Rule& rule);
};

/// What the build found out about a class.
struct BlockClass {
    const char* name;
    std::type_index type;
    std::size_t recordSize; ///< 0 where it has no record
    /// Whether the block is of the class or of one derived from it.
    bool (*isBaseOf)(const Travik::HwDatablock& block);
    /// The caller's; null for a class that is not made without arguments.
    Travik::HwDatablock* (*make)();
    /// Takes a record over that the input makes up; null for a class without.
    void (*takeOver)(Surroundings& with);
    std::vector<Accessor> accessors;
    std::vector<Couple> couples;
};

/// Every class that the headers define, and the tables of the catalogue without one, in no order.
std::vector<BlockClass>& blockClasses();
/// Enter into the table what a header's file knows. Functions of their own, so that the compiler does not write them
/// out once for each of thousands of operations. A class is valid until the next one is entered.
BlockClass& enterClass(const char* name, const std::type_info& type,
                       bool (*isBaseOf)(const Travik::HwDatablock& block));
void enterAccessor(BlockClass& table, const char* name, bool changes, void (*call)(Surroundings& with));
void enterCouple(BlockClass& table, const char* setter, const char* getter,
                 void (*check)(Surroundings& with, const Rule& rule));

const BlockClass* classOf(const Travik::HwDatablock& block);

/// Every kind of block there is: one for each identifier of the catalogue, then one for each class that no identifier
/// has and that is made without arguments. Always in the same order.
struct Subject {
    int id; ///< negative: none
    const BlockClass* blockClass;
    std::unique_ptr<Travik::HwDatablock> make() const;
};
const std::vector<Subject>& subjects();

} // namespace Fuzz
