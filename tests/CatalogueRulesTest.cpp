// What every class of the catalogue keeps to, whatever its family: checked over the whole catalogue, so that a new
// class has no test of these to write.
#include "Support.h"

#include <cmath>
#include <map>

namespace CatalogueRulesTest {

using namespace Travik;
using namespace Support;

/// Calls the function with every identifier, the list of its fields, and a name for failures.
template <class Function>
void forEveryList(Function function) {
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id)
            function(id, entry.fields(entry, id), std::string(entry.className) + ' ' + std::to_string(id));
    }
}

template <class Function>
void forEveryField(Function function) {
    forEveryList([&](int, const FieldList& fields, const std::string& block) {
        for (const Field& field : fields)
            function(field, block + ' ' + field.name);
    });
}

TEST(CatalogueRules, AFamilysTestsHoldEveryClass) {
    for (const CatalogueEntry& entry : catalogue()) {
        const auto held = Held::all().lower_bound(entry.first);
        EXPECT_TRUE(held != Held::all().end() && *held <= entry.last)
            << entry.className << ' ' << entry.first
            << " is in no table of the families' tests; see docs/architecture.md";
    }
    for (const int id : Held::all())
        EXPECT_TRUE(findEntry(id)) << id << " is in a table of the families' tests, but in no row of the catalogue";
}

TEST(CatalogueRules, AnAxisIsAFieldOfThatExtentInTheBlockNamed) {
    unsigned int axes = 0;
    forEveryList([&](int id, const FieldList& fields, const std::string& block) {
        for (const Field& field : fields) {
            for (unsigned int d = 0; d < Field::maxRank; ++d) {
                const Dimension& dimension = field.dimensions[d];
                if (dimension.axisBlock == 0)
                    continue;
                ++axes;
                SCOPED_TRACE(block + ' ' + field.name + " is labelled by " + std::to_string(dimension.axisBlock));
                EXPECT_LT(d, field.rank);
                EXPECT_NE(dimension.axisBlock, id);
                const CatalogueEntry* const entry = findEntry(dimension.axisBlock);
                ASSERT_TRUE(entry);
                const FieldList labels = entry->fields(*entry, dimension.axisBlock);
                EXPECT_TRUE(std::ranges::any_of(labels, [&](const Field& label) {
                    return label.role == Role::Axis &&
                           (label.elements() == dimension.extent ||
                            label.dimensions.at(label.rank - 1U).extent == dimension.extent);
                }));
            }
        }
    });
    EXPECT_GT(axes, 100U);
}

// Tables that exist once a path are labelled by the block of the same path, others by the one that there is.
TEST(CatalogueRules, LabelsBelongToTheInstance) {
    for (const auto& [id, labels] : std::map<int, int>{{12060, 12050},
                                                       {12063, 12053},
                                                       {12096, 12091},
                                                       {12143, 12103},
                                                       {12202, 12192},
                                                       {12231, 12211},
                                                       {12243, 12213},
                                                       {12272, 12262},
                                                       {12293, 12291},
                                                       {10303, 10302},
                                                       {10314, 10302},
                                                       {10316, 10302},
                                                       {14400, 13500},
                                                       {14800, 13900},
                                                       {15604, 15600},
                                                       {12043, 12040}}) {
        const CatalogueEntry& entry = *findEntry(id);
        const Field field = entry.fields(entry, id).back();
        EXPECT_EQ(field.dimensions.at(field.rank - 1U).axisBlock, labels) << id << ' ' << field.name;
    }
}

TEST(CatalogueRules, DatesHaveTheirRole) {
    forEveryField([](const Field& field, const std::string& name) {
        const bool isDate =
            field.stored == Stored::U16 && std::string_view(field.name).find("date") != std::string::npos;
        EXPECT_EQ(field.role == Role::Date, isDate) << name;
        EXPECT_EQ(field.role == Role::Text, field.stored == Stored::Text) << name;
    });
}

TEST(CatalogueRules, UnitsAreUnits) {
    const std::set<std::string> units{"",   "Hz",  "kHz", "MHz", "GHz",  "s",     "h",
                                      "dB", "dBm", "V",   "mV",  "byte", "DAC/mW"};
    forEveryField([&](const Field& field, const std::string& name) {
        EXPECT_TRUE(units.contains(field.unit)) << name << ": " << field.unit;
        EXPECT_TRUE(std::isnormal(field.scale) && std::isfinite(field.zero)) << name;
        EXPECT_TRUE(field.role == Role::Value || field.role == Role::Axis || field.scale == 1.0) << name;
    });
}

/// Words of lower-case letters and digits, joined by single underscores; the first character is a letter.
bool isStableName(std::string_view name) {
    const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isPart = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; };
    return !name.empty() && isLetter(name.front()) && name.back() != '_' && name.find("__") == std::string_view::npos &&
           std::ranges::all_of(name, isPart);
}

TEST(CatalogueRules, FieldsHaveStableNames) {
    forEveryField([](const Field& field, const std::string& name) {
        EXPECT_TRUE(isStableName(field.name)) << name;
        for (unsigned int d = 0; d < field.rank; ++d) {
            const std::string_view dimension = field.dimensions.at(d).name;
            EXPECT_TRUE(dimension.empty() || isStableName(dimension)) << name << ' ' << dimension;
        }
    });
}

TEST(CatalogueRules, KeysAreUnique) {
    struct Shared {
        const char* key;
        std::set<int> identifiers;
        const char* reason;
    };
    const Shared allowed[] = {
        {"IDENT_2", {2, 10}, "the second ident block prints as the first"},
        {"IQOP3_RFM_CALIB_DATA",
         {10303, 10304, 10305, 10306, 10307, 10308, 10309, 10310, 10311, 10312, 10313, 10314},
         "one block an operating state, which the number behind BZ tells apart"},
        {"LIMITER_MAX_VOLTAGE", {12313, 12314, 15021}, "three generations of the limiter; they differ in scale"},
        {"WEN_ANALOG_IMBALANCE_DATA",
         {15601, 15602, 15603, 15604},
         "gain and phase, I and Q: the comment tells them apart"},
    };
    std::map<std::string, std::set<int>> identifiers;
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id) {
            if (std::string key = entry.key(entry, id); !key.empty())
                identifiers[std::move(key)].insert(id);
        }
    }
    for (const auto& [key, ids] : identifiers) {
        const auto shared = std::ranges::find(allowed, key, &Shared::key);
        if (shared != std::end(allowed))
            EXPECT_EQ(ids, shared->identifiers) << key << ": " << shared->reason;
        else
            EXPECT_EQ(ids.size(), 1U) << key << " is the key of " << testing::PrintToString(ids);
    }
}

} // namespace CatalogueRulesTest
