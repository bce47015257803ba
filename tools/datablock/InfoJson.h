#pragma once

#include <travik/registry/ModuleInfo.h>

#include <nlohmann/json.hpp>

/// The facts of a module for production scripts. Keys are stable: further ones may come, none changes its meaning.
/// What is not recorded is null.
namespace Tool {

using Json = nlohmann::ordered_json;

namespace detail {

template <class T>
Json json(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

inline Json json(const std::optional<Travik::ModuleInfo::Date>& date) {
    return date ? Json(Travik::isoDate(*date)) : Json();
}

inline Json json(const std::vector<Travik::ModuleInfo::Number>& values) {
    if (values.empty())
        return {};
    Json array = Json::array();
    for (const Travik::ModuleInfo::Number& value : values)
        array.push_back(json(value));
    return array;
}

inline Json json(const Travik::ModuleInfo::Identity& identity) {
    return {{"name", json(identity.name)},
            {"part_number", json(identity.partNumber)},
            {"variant", json(identity.variant)},
            {"serial_number", json(identity.serialNumber)},
            {"production_date", json(identity.productionDate)},
            {"hardware_code", json(identity.hardwareCode)},
            {"product_index", json(identity.productIndex)},
            {"checksum_ok", identity.checksumHolds}};
}

inline Json json(const Travik::ModuleInfo::Instrument& instrument) {
    return {{"model", json(instrument.model)},
            {"serial_number", json(instrument.serialNumber)},
            {"mac_address", json(instrument.macAddress)},
            {"checksums_ok", instrument.checksumsHold}};
}

inline Json json(const Travik::ModuleInfo::FurtherIdent& ident) {
    return {{"name", ident.name}, {"block", ident.block}, {"identity", json(ident.identity)}};
}

inline Json json(const Travik::ModuleInfo::Vco& vco) {
    return {{"serial_number", json(vco.serialNumber)},
            {"job_number", json(vco.jobNumber)},
            {"lot_number", json(vco.lotNumber)},
            {"checksum_ok", vco.checksumHolds}};
}

inline Json json(const Travik::ModuleInfo::TimeMonitoring& monitoring) {
    return {{"date", json(monitoring.date)}, {"checksum_ok", monitoring.checksumHolds}};
}

inline Json json(const Travik::ModuleInfo::Service& service) {
    return {{"block", service.block},
            {"date", json(service.date)},
            {"department", json(service.department)},
            {"operating_hours", json(service.operatingHours)},
            {"turn_on_count", json(service.turnOnCount)},
            {"repair_number", json(service.repairNumber)},
            {"service_code", json(service.serviceCode)},
            {"checksum_ok", service.checksumHolds}};
}

inline Json json(const Travik::ModuleInfo::Modification& modification) {
    return {{"position", modification.position},
            {"circular_number", modification.circularNumber},
            {"action", modification.action}};
}

/// Whether the numbers are values, or the lengths of statistics that are not interpreted.
inline Json json(const Travik::ModuleInfo::Counter& counter, bool isStatistic) {
    const auto numbers = [&](const std::vector<Travik::ModuleInfo::Number>& values) {
        return !isStatistic ? json(values) : values.empty() ? Json() : json(values.front());
    };
    return {{"name", counter.name},
            {"block", counter.block},
            {isStatistic ? "length" : "values", numbers(counter.values)},
            {"backup_block", counter.backupBlock == 0 ? Json() : Json(counter.backupBlock)},
            {isStatistic ? "backup_length" : "backup_values", numbers(counter.backup)},
            {"differs", json(counter.differs)},
            {"checksums_ok", counter.checksumsHold}};
}

inline Json json(const Travik::ImageFinding& problem) {
    return {{"offset", problem.offset}, {"block", json(problem.id)}, {"text", problem.text}};
}

} // namespace detail

/// One image.
inline Json toJson(const std::string& imageName, const Travik::ModuleInfo& info) {
    using detail::json;
    const auto array = [](const auto& items, auto... arguments) {
        Json all = Json::array();
        for (const auto& item : items)
            all.push_back(json(item, arguments...));
        return all;
    };
    return {{"image", imageName},
            {"identity", info.identity ? json(*info.identity) : Json()},
            {"instrument", info.instrument ? json(*info.instrument) : Json()},
            {"further_idents", array(info.furtherIdents)},
            {"vco", info.vco ? json(*info.vco) : Json()},
            {"time_monitoring", info.timeMonitoring ? json(*info.timeMonitoring) : Json()},
            {"last_service", info.services.empty() ? Json() : json(info.services.back())},
            {"services_recorded", info.services.size()},
            {"modifications", info.modifications ? array(*info.modifications) : Json()},
            {"modifications_checksum_ok", info.modificationsChecksumHolds},
            {"operating_hours", json(info.operatingHours)},
            {"operating_hours_checksum_ok", info.operatingHoursChecksumHolds},
            {"wear_counters", array(info.wearCounters, false)},
            {"statistics", array(info.statistics, true)},
            {"blocks", info.blocks},
            {"checksums_ok", info.wrongChecksums.empty()},
            {"unchecked_blocks", info.uncheckedBlocks},
            {"problems", array(info.problems)}};
}

/// The document of several images. A file name that is no UTF-8 has its strange bytes replaced.
inline std::string toText(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace Tool
