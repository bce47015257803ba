#include "Support.h"

#include <BlockClasses.h>

#include <cstring>

using namespace Travik;
using namespace Fuzz;

namespace {

/// Runs a check of a table with given bytes.
void check(HwDatablock& block, const Couple& couple, const std::string& bytes) {
    Input input(bytes);
    HwDatablock other(false);
    Surroundings with{input, block, other};
    couple.check(with, couple.rule);
}

std::string named(const Subject& subject) {
    return std::string(subject.blockClass->name) + ' ' + std::to_string(subject.id);
}

// Whatever is registered, and whatever a header defines, is driven by the fuzz target.
TEST(BlockClasses, AreAllInTheTable) {
    HwDatablockOldStyleInterpreter interpreter;
    for (const auto& [id, prototype] : interpreter.dictionary())
        EXPECT_NE(classOf(*prototype), nullptr) << id << ": the build did not find the class among the headers";
    for (const CatalogueEntry& entry : catalogue())
        EXPECT_NE(classOf(*entry.create(entry, entry.first)), nullptr) << entry.className;
    for (const BlockClass& each : blockClasses()) {
        EXPECT_TRUE(
            std::ranges::any_of(subjects(), [&](const Subject& subject) { return each.isBaseOf(*subject.make()); }))
            << each.name
            << " is a class of a header that no block is of: register it, or let it be made without arguments";
    }
}

TEST(BlockClasses, HaveTheirOperations) {
    for (const Subject& subject : subjects()) {
        const BlockClass& each = *subject.blockClass;
        EXPECT_GT(each.accessors.size(), 20U) << named(subject);
        const bool takesRecords = each.recordSize > 0;
        EXPECT_EQ(takesRecords, subject.id >= 0) << named(subject);
        EXPECT_TRUE(!takesRecords || each.recordSize == subject.make()->getByteArrayData().size()) << named(subject);
    }
}

bool has(const std::vector<Accessor>& accessors, std::string_view name) {
    return std::ranges::any_of(accessors, [&](const Accessor& each) { return each.name == name; });
}

// A setter has a getter that answers in its terms, or it is known that it has none.
TEST(BlockClasses, SettersHaveGetters) {
    const BlockClass& base = *classOf(HwDatablock(false));
    std::set<std::string> alone;
    for (const Subject& subject : subjects()) {
        const BlockClass& each = *subject.blockClass;
        for (const Accessor& accessor : each.accessors) {
            const std::string_view name = accessor.name;
            const auto isOfCouple = [&](const Couple& couple) { return couple.setter == name; };
            if (name.starts_with("set") && !has(base.accessors, name) && std::ranges::none_of(each.couples, isOfCouple))
                alone.insert(std::string(each.name) + ' ' + accessor.name);
        }
    }
    EXPECT_THAT(alone, testing::ElementsAreArray(settersWithoutGetter()));
}

TEST(BlockClasses, RulesAreInUse) {
    for (const Rule& rule : rules()) {
        const bool isUsed = std::ranges::any_of(subjects(), [&](const Subject& subject) {
            const BlockClass& each = *subject.blockClass;
            return (rule.className.empty() || rule.className == each.name) &&
                   std::ranges::any_of(each.couples,
                                       [&](const Couple& couple) { return couple.setter == rule.setter; });
        });
        EXPECT_TRUE(isUsed) << rule.className << ' ' << rule.setter;
        EXPECT_FALSE(rule.why.empty()) << rule.className << ' ' << rule.setter;
    }
}

// Every setter of a new block stores something at its first element: a setter that did nothing would keep to every
// rule.
TEST(BlockClasses, SettersStore) {
    const Support::DebugOutput silent; // of odd sizes
    for (const Subject& subject : subjects()) {
        for (const Couple& couple : subject.blockClass->couples) {
            bool stores = false;
            // A number, the largest of any type; as a length, that of a text.
            for (const std::string_view start : {"\1", "\1A", "\xF1", ""}) {
                const auto block = subject.make();
                const std::string before = Support::bytesOf(*block);
                check(*block, couple, std::string(start) + std::string(100, '\0'));
                stores = stores || Support::bytesOf(*block) != before;
            }
            EXPECT_TRUE(stores || subject.id == 0xFFFF ||
                        std::ranges::count(storesNoImage, std::string_view(couple.setter)) > 0)
                << named(subject) << ' ' << couple.setter;
        }
    }
}

} // namespace
