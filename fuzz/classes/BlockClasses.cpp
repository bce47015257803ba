#include "BlockClasses.h"

#include <travik/registry/Catalogue.h>
#include <travik/registry/ModuleImage.h>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Fuzz {

namespace {

/// Enters what every block has into the other classes, unless they have it by that name themselves.
template <class Entry>
void inherit(std::vector<Entry>& own, const std::vector<Entry>& inherited, const char* Entry::*name) {
    const std::size_t count = own.size();
    for (const Entry& entry : inherited) {
        const auto isOwn = [&](const Entry& each) { return std::string_view(each.*name) == entry.*name; };
        if (std::none_of(own.begin(), own.begin() + static_cast<std::ptrdiff_t>(count), isOwn))
            own.push_back(entry);
    }
}

void complete() {
    const BlockClass* const base = classOf(Travik::HwDatablock(false));
    for (BlockClass& each : blockClasses()) {
        if (&each == base)
            continue;
        inherit(each.accessors, base->accessors, &Accessor::name);
        inherit(each.couples, base->couples, &Couple::setter);
    }
    for (BlockClass& each : blockClasses()) {
        for (Couple& couple : each.couples)
            couple.rule = ruleOf(each.name, couple.setter);
    }
}

std::vector<Subject> allSubjects() {
    complete();
    std::vector<Subject> all;
    for (const Travik::CatalogueEntry& entry : Travik::catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id)
            all.push_back({id, classOf(*entry.create(entry, id))});
    }
    std::vector<const BlockClass*> further;
    for (const BlockClass& each : blockClasses()) {
        if (each.make && std::ranges::find(all, &each, &Subject::blockClass) == all.end())
            further.push_back(&each);
    }
    std::ranges::sort(further, {}, [](const BlockClass* each) { return std::string_view(each->name); });
    for (const BlockClass* each : further)
        all.push_back({-1, each});
    return all;
}

} // namespace

std::vector<BlockClass>& blockClasses() {
    static std::vector<BlockClass> classes;
    return classes;
}

BlockClass& enterClass(const char* name, const std::type_info& type,
                       bool (*isBaseOf)(const Travik::HwDatablock& block)) {
    return blockClasses().emplace_back(BlockClass{.name = name,
                                                  .type = type,
                                                  .recordSize = 0,
                                                  .isBaseOf = isBaseOf,
                                                  .make = nullptr,
                                                  .takeOver = nullptr,
                                                  .accessors = {},
                                                  .couples = {}});
}

void enterAccessor(BlockClass& table, const char* name, bool changes, void (*call)(Surroundings& with)) {
    table.accessors.push_back({name, changes, call});
}

void enterCouple(BlockClass& table, const char* setter, const char* getter,
                 void (*check)(Surroundings& with, const Rule& rule)) {
    table.couples.push_back({setter, getter, {}, check});
}

const BlockClass* classOf(const Travik::HwDatablock& block) {
    const std::type_index type = typeid(block);
    const auto found = std::ranges::find(std::as_const(blockClasses()), type, &BlockClass::type);
    return found == blockClasses().end() ? nullptr : &*found;
}

std::unique_ptr<Travik::HwDatablock> Subject::make() const {
    if (id < 0)
        return std::unique_ptr<Travik::HwDatablock>(blockClass->make());
    const Travik::CatalogueEntry& entry = *Travik::findEntry(id);
    return entry.create(entry, id);
}

const std::vector<Subject>& subjects() {
    static const std::vector<Subject> all = allSubjects();
    return all;
}

} // namespace Fuzz
