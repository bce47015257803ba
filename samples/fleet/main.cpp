// Makes fleets: many modules of every kind, each a little different, some outside the others, some images damaged, and
// beside them what was done.

#include "../Samples.h"

#include <travik/service/Seal.h>
#include <travik/service/Values.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using Json = nlohmann::json;
using Travik::Field;
using Travik::ImageBlock;
using Travik::ModuleImage;
using Travik::Stored;

// Of stored numbers: what the modules differ by, what the tables of one block drift by over the whole fleet, and how
// far outside a value is put. The noise is bounded, so that nothing is outside by chance.
constexpr int noise = 3;
constexpr double wholeDrift = 20;
constexpr int outside = 500;

/// An element of a table that is varied.
struct Element {
    std::size_t offset; // in the image
    unsigned int width;
    std::int64_t base;
    unsigned int number; // in its field
};

struct Table {
    std::string key;
    std::string field;
    std::vector<Element> elements;
};

/// One kind of module: its image, and what is varied in it.
struct Kind {
    std::string name;
    std::vector<char> image;
    std::vector<Table> tables;
    const Table* outlying = nullptr;
    const Table* drifting = nullptr;
    std::size_t serialNumber = 0; // offsets
    std::size_t wear = 0;         // of the first high-power counter; 0: none
};

std::int64_t load(const std::vector<char>& image, std::size_t offset, unsigned int width) {
    std::int32_t wide = 0;
    std::int16_t narrow = 0;
    if (width == sizeof wide) {
        std::memcpy(&wide, image.data() + offset, sizeof wide);
        return wide;
    }
    std::memcpy(&narrow, image.data() + offset, sizeof narrow);
    return narrow;
}

void store(std::vector<char>& image, std::size_t offset, unsigned int width, std::int64_t value) {
    std::memcpy(image.data() + offset, &value, width); // little-endian
}

/// The elements of a field that leave room to be varied, whatever their sign.
std::vector<Element> elementsOf(const std::vector<char>& image, const ImageBlock& block,
                                const Travik::FieldValues& values) {
    const Field& field = *values.field;
    std::vector<Element> elements;
    const bool isInteger = field.stored == Stored::I16 || field.stored == Stored::U16 || field.stored == Stored::I32 ||
                           field.stored == Stored::U32;
    if (field.role != Travik::Role::Value || values.dimensions.empty() || !isInteger || field.bits > 0)
        return elements;
    for (unsigned int i = 0; i < field.elements(); ++i) {
        const Element element{block.offset + field.elementOffset(i), field.width,
                              load(image, block.offset + field.elementOffset(i), field.width), i};
        constexpr std::int64_t least = 50;
        constexpr std::int64_t most = 30000;
        if (values.isUsed(i) && std::abs(element.base) >= least && std::abs(element.base) <= most)
            elements.push_back(element);
    }
    return elements;
}

Kind kindOf(std::string name, std::vector<char> image) {
    Kind kind{std::move(name), std::move(image), {}};
    const ModuleImage module(kind.image);
    const Travik::ImageValues values(module);
    for (const ImageBlock& block : module.blocks()) {
        constexpr unsigned short ident = 2;
        constexpr unsigned short highPower = 11302;
        const Travik::BlockValues read = values.read(block);
        if (block.id == ident)
            kind.serialNumber = block.offset + read.find("serial_number")->field->offset;
        if (block.id == highPower)
            kind.wear = block.offset + read.fields.back().field->offset;
        if (block.isSecondEdition || block.id == ident || block.id == highPower)
            continue;
        for (const Travik::FieldValues& field : read.fields) {
            std::vector<Element> elements = elementsOf(kind.image, block, field);
            if (!elements.empty())
                kind.tables.push_back({read.key, field.field->name, std::move(elements)});
        }
    }
    return kind;
}

/// Chooses the tables that lie outside in some modules, and those that drift: of keys that no other kind has.
void choose(std::vector<Kind>& kinds) {
    for (Kind& kind : kinds) {
        for (const Table& table : kind.tables) {
            constexpr std::size_t fewest = 8;
            const auto isOthers = [&](const Kind& other) {
                return &other != &kind && std::ranges::any_of(other.tables, [&](const Table& candidate) {
                    return candidate.key == table.key;
                });
            };
            if (table.elements.size() < fewest || std::ranges::any_of(kinds, isOthers))
                continue;
            if (!kind.outlying) {
                kind.outlying = &table;
            } else if (table.key != kind.outlying->key) {
                kind.drifting = &table;
                break;
            }
        }
    }
}

void seal(std::vector<char>& image, const ModuleImage& module) {
    for (const ImageBlock& block : module.blocks()) {
        if (!block.isEnd() && !block.isSecondEdition)
            Travik::sealBlock({image.data() + block.offset, block.bytes.size()}, Travik::Crc32::None);
    }
}

class Fleet {
public:
    Fleet(std::string folder, std::size_t count, unsigned int seed)
        : folder_(std::move(folder)), count_(count), firstSerial_(1'000'000 * (seed % 4000 + 1)), random_(seed) {
        kinds_ = {kindOf("synthesizer-loop", Samples::synthesizerLoop()),
                  kindOf("detector-board", Samples::detectorBoard()),
                  kindOf("rf-board", Samples::rfBoard()),
                  kindOf("vector-board", Samples::vectorBoard()),
                  kindOf("main-board", Samples::mainBoard()),
                  kindOf("main-board-identity", Samples::mainBoardIdentity()),
                  kindOf("dac-board", Samples::dacBoard()),
                  kindOf("baseband-input-board", Samples::basebandInputBoard()),
                  kindOf("step-attenuator", Samples::stepAttenuator()),
                  kindOf("iq-modulator", Samples::iqModulator()),
                  kindOf("iq-modulator-v20", Samples::iqModulatorV20()),
                  kindOf("iqop6-board", Samples::iqOp6Board()),
                  kindOf("microwave-module", Samples::microwaveModule()),
                  kindOf("synthesizer", Samples::synthesizer()),
                  kindOf("second-edition", Samples::secondEdition())};
        choose(kinds_);
    }

    void make() {
        for (const Kind& kind : kinds_)
            std::filesystem::create_directories(folder_ + '/' + kind.name);
        for (const Kind& kind : kinds_) {
            if (kind.drifting)
                drifts_.push_back({{"key", kind.drifting->key},
                                   {"field", kind.drifting->field},
                                   {"stored_numbers_a_serial_number", perModule()}});
        }
        for (std::size_t i = 0; i < count_; ++i)
            makeModule(kinds_[i % kinds_.size()], i);
    }

    Json truth() const {
        return {
            {"modules", count_}, {"outliers", outliers_}, {"damaged", damaged_}, {"drifts", drifts_}, {"worn", worn_}};
    }

private:
    std::string folder_;
    std::size_t count_;
    unsigned int firstSerial_; // fleets of different seeds have no module in common
    std::mt19937_64 random_;
    std::vector<Kind> kinds_;
    Json outliers_ = Json::array();
    Json damaged_ = Json::array();
    Json drifts_ = Json::array();
    Json worn_ = Json::array();

    double perModule() const { return wholeDrift / static_cast<double>(std::max<std::size_t>(count_, 1)); }

    void makeModule(const Kind& kind, std::size_t number) {
        const auto serial = static_cast<unsigned int>(firstSerial_ + number);
        const std::string file = kind.name + '/' + std::to_string(serial) + ".bin";
        std::vector<char> image = kind.image;
        vary(kind, image, number);
        store(image, kind.serialNumber, 4, serial);
        // Of sixty modules of a kind one lies outside, one is worn, and two are damaged.
        const std::size_t ofKind = number / kinds_.size();
        constexpr std::size_t period = 60;
        const std::size_t fate = (ofKind + 7 * (number % kinds_.size())) % period;
        if (fate == 10 && kind.outlying)
            putOutside(*kind.outlying, image, file, serial);
        if (kind.wear != 0) {
            const bool isWorn = fate == 20;
            constexpr int often = 100000;
            store(image, kind.wear, 4, isWorn ? often : 10 + static_cast<int>(random_() % 50));
            if (isWorn)
                worn_.push_back(file);
        }
        seal(image, ModuleImage(kind.image));
        if (fate == 30)
            damageSum(image, file);
        else if (fate == 40)
            cut(image, file);
        write(file, image);
    }

    void vary(const Kind& kind, std::vector<char>& image, std::size_t number) {
        constexpr std::uint64_t span = 2 * noise + 1;
        std::uint64_t bits = 0;
        int left = 0;
        for (const Table& table : kind.tables) {
            const auto drift = &table == kind.drifting ? std::llround(perModule() * static_cast<double>(number)) : 0;
            for (const Element& element : table.elements) {
                if (left-- == 0) {
                    bits = random_();
                    left = 7;
                }
                const auto own = static_cast<std::int64_t>((bits & 0xFFU) * span / 256) - noise;
                bits >>= 8U;
                store(image, element.offset, element.width, element.base + drift + own);
            }
        }
    }

    /// A few neighbouring values of a table, away from 0, whose other side the type may not have.
    void putOutside(const Table& table, std::vector<char>& image, const std::string& file, unsigned int serial) {
        const std::size_t first = random_() % (table.elements.size() - 3);
        Json elements = Json::array();
        for (std::size_t i = first; i < first + 3; ++i) {
            const Element& element = table.elements[i];
            const std::int64_t value = load(image, element.offset, element.width);
            store(image, element.offset, element.width, value + (value < 0 ? -outside : outside));
            elements.push_back(element.number);
        }
        outliers_.push_back({{"file", file},
                             {"serial_number", serial},
                             {"key", table.key},
                             {"field", table.field},
                             {"elements", std::move(elements)}});
    }

    /// The checksum word of a block: its values stay.
    void damageSum(std::vector<char>& image, const std::string& file) {
        std::vector<std::size_t> offsets;
        const ModuleImage module(image);
        for (const ImageBlock& block : module.blocks()) {
            if (block.checksumChecked && block.offset > 0)
                offsets.push_back(block.offset);
        }
        if (offsets.empty())
            return;
        image[offsets[random_() % offsets.size()] + 4] ^= 0x55;
        damaged_.push_back({{"file", file}, {"how", "checksum"}});
    }

    /// Behind the ident block, within a block.
    void cut(std::vector<char>& image, const std::string& file) {
        std::vector<std::size_t> ends;
        const ModuleImage module(image);
        for (const ImageBlock& block : module.blocks()) {
            if (block.offset > 0 && !block.isEnd())
                ends.push_back(block.offset + block.bytes.size() / 2);
        }
        if (ends.empty())
            return;
        image.resize(ends[random_() % ends.size()]);
        damaged_.push_back({{"file", file}, {"how", "cut"}});
    }

    void write(const std::string& file, const std::vector<char>& image) const {
        std::ofstream out(folder_ + '/' + file, std::ios::binary);
        out.write(image.data(), static_cast<std::streamsize>(image.size()));
        if (!out.flush())
            throw std::runtime_error(folder_ + '/' + file + ": cannot be written");
    }
};

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    unsigned int seed = 0;
    const auto isNumber = [](const std::string& text, auto& number) {
        const char* const end = text.data() + text.size();
        const auto [next, error] = std::from_chars(text.data(), end, number);
        return error == std::errc() && next == end;
    };
    if (argc != 5 || !isNumber(argv[3], count) || !isNumber(argv[4], seed)) {
        std::cerr
            << "usage: travik-fleet-samples FOLDER TRUTH COUNT SEED\n"
               "Makes COUNT module images below FOLDER, 59 KB on average, and writes to TRUTH, as JSON, which of\n"
               "them lie outside, drift, are worn or damaged. The same SEED makes the same.\n";
        return 2;
    }
    try {
        Fleet fleet(argv[1], count, seed);
        fleet.make();
        std::ofstream truth(argv[2]);
        truth << fleet.truth().dump(1) << '\n';
        if (!truth.flush())
            throw std::runtime_error(std::string(argv[2]) + ": cannot be written");
    } catch (const std::exception& error) {
        std::cerr << "travik-fleet-samples: " << error.what() << '\n';
        return 2;
    }
    return 0;
}
