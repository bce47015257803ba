#include <travik/fleet/FleetRows.h>
#include <travik/registry/ModuleInfo.h>
#include <travik/service/BlockTables.h>
#include <travik/service/JsonText.h>
#include <travik/service/ValueText.h>
#include <travik/service/Values.h>

#include <QCryptographicHash>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <tuple>

namespace Travik {

namespace {

template <class T>
FleetCell cell(const std::optional<T>& value) {
    if (!value)
        return std::monostate();
    if constexpr (std::is_integral_v<T>)
        return static_cast<std::int64_t>(*value);
    else
        return *value;
}

FleetCell cell(const std::optional<ModuleInfo::Date>& date) { return date ? FleetCell(isoDate(*date)) : FleetCell(); }

template <std::integral T>
FleetCell whole(T value) {
    return static_cast<std::int64_t>(value);
}

FleetCell finite(double number) { return std::isfinite(number) ? FleetCell(number) : FleetCell(); }

/// Numbers of a field as the decimals that a person would write: 0.3 of three steps of 0.1, whose product is not quite
/// that. By default whole numbers are brief.
class NumberWriter {
public:
    NumberWriter() = default;
    explicit NumberWriter(const Field& field) {
        decimals_ = -1;
        if (field.isFloating() || field.zero != 0 || field.width > 4)
            return;
        if (field.scale == std::round(field.scale))
            decimals_ = 0;
        for (const auto& [scale, decimals] :
             {std::pair(0.1, 1), std::pair(0.01, 2), std::pair(0.001, 3), std::pair(0.0001, 4)}) {
            if (std::abs(field.scale) == scale) {
                decimals_ = decimals;
                factor_ = std::round(1 / scale);
            }
        }
    }

    double decimal(double value) const {
        long long steps = 0;
        return isDecimal(value, steps) ? static_cast<double>(steps) / factor_ : value;
    }

    void operator()(JsonText& json, double value) const {
        long long steps = 0;
        if (!isDecimal(value, steps))
            json.number(value);
        else if (decimals_ == 0)
            json.whole(steps);
        else
            json.decimal(steps, static_cast<unsigned int>(decimals_));
    }

private:
    int decimals_ = 0;
    double factor_ = 1;

    bool isDecimal(double value, long long& steps) const {
        constexpr double most = 1e14; // all of its steps are exact
        constexpr double half = 0.5;
        constexpr double rounding = 4e-16;
        if (decimals_ < 0 || !(std::abs(value) < most))
            return false;
        steps = static_cast<long long>(value * factor_ + (value < 0 ? -half : half));
        const double nearest = static_cast<double>(steps) / factor_;
        return decimals_ == 0 ? nearest == value : std::abs(nearest - value) <= rounding * std::abs(value);
    }
};

template <class Range, class Write>
ArrayText arrayOf(const Range& items, Write write) {
    JsonText json;
    json.raw('[');
    bool isFirst = true;
    for (const auto& item : items) {
        if (!isFirst)
            json.raw(',');
        isFirst = false;
        write(json, item);
    }
    json.raw(']');
    return {json.take()};
}

ArrayText textsOf(const std::vector<std::string>& texts) {
    return arrayOf(texts, [](JsonText& json, const std::string& text) { json.string(text); });
}

std::string_view checksumOf(const ImageBlock& block) {
    if (block.isEnd())
        return "-";
    if (block.checksumChecked)
        return block.checksumHolds ? "ok" : "wrong";
    return block.checksumHolds ? "not checked" : "cut off";
}

/// The labels of the points as texts: mostly many curves have the same.
class AxisTexts {
public:
    /// The first `count` labels at an index of the array's first dimension.
    const ArrayText& of(const std::shared_ptr<const Axis>& axis, std::size_t row, std::size_t count) {
        const auto [known, isNew] = texts_.try_emplace({axis, row, count});
        if (isNew && axis) {
            const std::span<const double> labels = axis->at(row);
            known->second = arrayOf(labels.first(std::min(labels.size(), count)), NumberWriter());
        }
        return known->second;
    }

private:
    std::map<std::tuple<std::shared_ptr<const Axis>, std::size_t, std::size_t>, ArrayText> texts_;
};

/// The rows of one block.
class BlockRows {
public:
    BlockRows(ImageRows& rows, const ImageBlock& block, std::int64_t number, const BlockValues& values, AxisTexts& axes)
        : rows_(rows), block_(block), number_(number), values_(values), axes_(axes) {}

    void add(std::int64_t problems) {
        rows_.of(Relation::Blocks)
            .push_back({number_, whole(block_.offset), whole(block_.id), toUtf8(values_.key), values_.className,
                        whole(block_.sizeWord), std::string(checksumOf(block_)),
                        std::string(block_.crcHolds          ? "ok"
                                    : block_.isSecondEdition ? "wrong"
                                                             : "-"),
                        problems});
        for (const FieldValues& field : values_.fields) {
            if (field.field->role == Role::Reserved)
                continue;
            if (field.dimensions.empty())
                scalar(field, 0, field.field->name);
            else if (!field.texts.empty())
                texts(field);
            else
                curves(field);
        }
    }

private:
    ImageRows& rows_;
    const ImageBlock& block_;
    std::int64_t number_;
    const BlockValues& values_;
    AxisTexts& axes_;

    void scalar(const FieldValues& field, std::size_t element, std::string name) {
        if (element >= field.size() || !isInside(field, element))
            return;
        FleetCell number;
        FleetCell text;
        if (!field.texts.empty() && (field.isText() || !field.texts[element].empty()))
            text = field.texts[element];
        else
            number = finite(NumberWriter(*field.field).decimal(field.values[element]));
        rows_.of(Relation::Scalars)
            .push_back({number_, toUtf8(values_.key), std::move(name), std::move(number), std::move(text),
                        std::string(field.field->unit)});
    }

    // Of a block that is cut off only what there is.
    bool isInside(const FieldValues& field, std::size_t element) const {
        return field.isWhole ||
               bytes::inside(block_.bytes.size(), field.field->elementOffset(static_cast<unsigned int>(element)),
                             field.field->width);
    }

    void texts(const FieldValues& field) {
        for (std::size_t i = 0; i < field.size(); ++i) {
            if (field.isUsed(i))
                scalar(field, i, std::string(field.field->name) + '[' + std::to_string(i) + ']');
        }
    }

    void curves(const FieldValues& field) {
        const FieldValues* const one[] = {&field};
        std::int64_t row = 0;
        for (const BlockTable& table : tablesOf(one, false)) {
            const bool isAlone = table.places.empty() && (!table.columnDimension || table.columnDimension->extent == 1);
            for (const TableColumn& column : table.columns)
                curve(field, table, column, row++, isAlone ? std::string() : labelOf(table, column));
        }
    }

    static std::string labelOf(const BlockTable& table, const TableColumn& column) {
        std::string label = table.columnDimension ? table.columnLabel(column) : std::string();
        for (const BlockTable::Place& place : table.places)
            label.append(label.empty() ? "" : ", ")
                .append(place.dimension)
                .append(place.dimension.empty() ? "" : " ")
                .append(std::to_string(place.index));
        return label;
    }

    void curve(const FieldValues& field, const BlockTable& table, const TableColumn& column, std::int64_t row,
               std::string label) {
        std::vector<double> points;
        points.reserve(table.rows);
        for (unsigned int i = 0; i < table.rows; ++i) {
            const std::size_t element = column.element(i);
            if (!isInside(field, element))
                break;
            points.push_back(field.values[element]);
        }
        const ValueDimension& along = *table.rowDimension;
        const bool isLabelled = along.axis && along.axis->texts.empty();
        const bool isPlaced = !table.places.empty() && table.places.front().number == 0;
        const ArrayText& labels =
            axes_.of(isLabelled ? along.axis : nullptr, isPlaced ? table.places.front().index : 0, points.size());
        rows_.of(Relation::Curves)
            .push_back({number_, toUtf8(values_.key), std::string(field.field->name), row, std::move(label),
                        std::string(field.field->unit), field.field->isFloating() ? 0.0 : std::abs(field.field->scale),
                        whole(points.size()), along.axis ? axisName(along, block_.id) : std::string(),
                        isLabelled ? along.axis->unit : std::string(), labels,
                        arrayOf(points, NumberWriter(*field.field))});
    }
};

void addWear(std::vector<std::string>& names, std::vector<double>& values,
             std::span<const ModuleInfo::Counter> counters) {
    for (const ModuleInfo::Counter& counter : counters) {
        for (std::size_t i = 0; i < counter.values.size(); ++i) {
            names.push_back(std::string(counter.name) + '[' + std::to_string(i) + ']');
            values.push_back(counter.values[i] ? *counter.values[i] : std::nan(""));
        }
    }
}

std::string lineOf(const ImageFinding& finding) {
    std::string line = "offset " + std::to_string(finding.offset);
    if (finding.id)
        line += ", block " + std::to_string(*finding.id);
    return line + ": " + finding.text;
}

FleetRow imageRow(const std::string& path, const FileStamp& stamp, const std::string& hash, const std::string& readAt,
                  const ModuleInfo& info, std::size_t notes) {
    const ModuleInfo::Identity who = info.identity.value_or(ModuleInfo::Identity());
    const ModuleInfo::Instrument instrument = info.instrument.value_or(ModuleInfo::Instrument());
    const ModuleInfo::Service service = info.services.empty() ? ModuleInfo::Service() : info.services.back();
    std::vector<std::string> wearNames;
    std::vector<double> wearValues;
    addWear(wearNames, wearValues, info.wearCounters);
    const auto differs = std::ranges::count_if(
        info.wearCounters, [](const ModuleInfo::Counter& counter) { return counter.differs.value_or(false); });
    std::vector<std::string> problems;
    for (const ImageFinding& problem : info.problems)
        problems.push_back(lineOf(problem));
    return {path,
            hash,
            stamp.size,
            stamp.modifiedNs,
            stamp.inode,
            readAt,
            cell(who.name),
            cell(who.partNumber),
            cell(who.variant),
            cell(who.serialNumber),
            cell(who.productionDate),
            cell(who.hardwareCode),
            cell(who.productIndex),
            info.identity ? FleetCell(std::int64_t{who.checksumHolds}) : FleetCell(),
            cell(instrument.model),
            cell(instrument.serialNumber),
            cell(instrument.macAddress),
            cell(info.operatingHours),
            static_cast<std::int64_t>(info.services.size()),
            cell(service.date),
            cell(service.operatingHours),
            cell(service.repairNumber),
            textsOf(wearNames),
            arrayOf(wearValues, NumberWriter()),
            std::int64_t{differs},
            static_cast<std::int64_t>(info.blocks),
            static_cast<std::int64_t>(info.uncheckedBlocks),
            static_cast<std::int64_t>(info.problems.size()),
            static_cast<std::int64_t>(notes),
            textsOf(problems)};
}

std::string hexHash(const QByteArray& data, QCryptographicHash::Algorithm algorithm) {
    return QCryptographicHash::hash(data, algorithm).toHex().toStdString();
}

} // namespace

std::string ImageRows::key() const {
    const std::string both = contentHash + path;
    return hexHash(QByteArray::fromRawData(both.data(), static_cast<qsizetype>(both.size())),
                   QCryptographicHash::Blake2b_256)
        .substr(0, 32);
}

std::string contentHash(std::span<const char> bytes) {
    return hexHash(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())),
                   QCryptographicHash::Blake2b_256);
}

ImageRows imageRows(const std::string& path, const FileStamp& stamp, const std::string& hash, const std::string& readAt,
                    const ModuleImage& image) {
    ImageRows rows;
    rows.path = path;
    rows.stamp = stamp;
    rows.contentHash = hash;
    const ModuleInfo info = moduleInfo(image);
    std::size_t notes = 0;
    image.visitFindings([&](const ImageFinding& finding) { notes += finding.grade() == Grade::Note ? 1U : 0U; });
    rows.problems = static_cast<std::int64_t>(info.problems.size());
    if (!info.problems.empty())
        rows.firstProblem = lineOf(info.problems.front());
    const bool isKnown = info.identity && info.identity->partNumber && info.identity->serialNumber;
    rows.module =
        isKnown ? *info.identity->partNumber + '/' + std::to_string(*info.identity->serialNumber) : rows.key();
    rows.of(Relation::Images).push_back(imageRow(path, stamp, hash, readAt, info, notes));
    const ImageValues values(image);
    AxisTexts axes;
    std::int64_t number = 0;
    for (const ImageBlock& block : image.blocks()) {
        const BlockValues read = values.read(block);
        BlockRows(rows, block, number++, read, axes).add(std::ssize(image.problems(block)));
    }
    return rows;
}

std::string whyNoImage(std::span<const char> bytes, const ModuleImage& image) {
    const std::vector<ImageBlock>& blocks = image.blocks();
    if (blocks.empty())
        return bytes.empty() ? "empty" : "";
    const auto isKnown = [](const ImageBlock& block) { return block.entry || block.isSecondEdition; };
    const auto isSound = [&](const ImageBlock& block) {
        return isKnown(block) && block.endsKnown && (block.checksumHolds || block.isEnd());
    };
    if (isKnown(blocks.front()) || std::ranges::any_of(blocks, isSound))
        return {};
    return "no block of it is known";
}

} // namespace Travik
