#include "Module.h"

#include <travik/registry/ModuleInfo.h>

#include <pybind11/stl.h>

#include <sstream>

namespace pybind11::detail {

/// A date of the calendar is a datetime.date.
template <>
struct type_caster<std::chrono::year_month_day> {
    PYBIND11_TYPE_CASTER(std::chrono::year_month_day, const_name("datetime.date"));
    static handle cast(const std::chrono::year_month_day& date, return_value_policy /*policy*/, handle /*parent*/) {
        const object type = module_::import("datetime").attr("date");
        return type(static_cast<int>(date.year()), static_cast<unsigned int>(date.month()),
                    static_cast<unsigned int>(date.day()))
            .release();
    }
    static bool load(handle /*source*/, bool /*convert*/) { return false; }
};

} // namespace pybind11::detail

namespace Python {

namespace {

namespace py = pybind11;
using Travik::ModuleInfo;

/// The text of every class here: what its attributes are.
template <class T>
class Facts : public MadeHere<T> {
public:
    using MadeHere<T>::MadeHere;

    template <class Member>
    Facts& fact(const char* name, Member member, const char* documentation = "") {
        this->def_readonly(name, member, documentation);
        names_.emplace_back(name);
        return *this;
    }
    void end() {
        this->def("__repr__", [names = std::move(names_)](const py::object& self) {
            std::string text;
            for (const std::string& name : names)
                text += (text.empty() ? "" : ", ") + name + '=' + std::string(py::repr(self.attr(name.c_str())));
            return std::string(py::str(py::type::of(self).attr("__name__"))) + '(' + text + ')';
        });
    }

private:
    std::vector<std::string> names_;
};

void defineFacts(py::module_& module) {
    Facts<ModuleInfo::Identity>(module, "Identity", "What an ident block says.")
        .fact("name", &ModuleInfo::Identity::name)
        .fact("part_number", &ModuleInfo::Identity::partNumber, "\"1141.3000.02\", the last group being the variant.")
        .fact("variant", &ModuleInfo::Identity::variant)
        .fact("serial_number", &ModuleInfo::Identity::serialNumber)
        .fact("production_date", &ModuleInfo::Identity::productionDate)
        .fact("hardware_code", &ModuleInfo::Identity::hardwareCode)
        .fact("product_index", &ModuleInfo::Identity::productIndex)
        .fact("checksum_ok", &ModuleInfo::Identity::checksumHolds)
        .end();
    Facts<ModuleInfo::Instrument>(module, "Instrument", "What only a main board knows: the instrument.")
        .fact("model", &ModuleInfo::Instrument::model)
        .fact("serial_number", &ModuleInfo::Instrument::serialNumber)
        .fact("mac_address", &ModuleInfo::Instrument::macAddress)
        .fact("checksums_ok", &ModuleInfo::Instrument::checksumsHold)
        .end();
    Facts<ModuleInfo::FurtherIdent>(module, "FurtherIdent", "The ident block of an option.")
        .fact("name", &ModuleInfo::FurtherIdent::name)
        .fact("block", &ModuleInfo::FurtherIdent::block)
        .fact("identity", &ModuleInfo::FurtherIdent::identity)
        .end();
    Facts<ModuleInfo::Vco>(module, "Vco", "The oscillator of a synthesizer.")
        .fact("serial_number", &ModuleInfo::Vco::serialNumber)
        .fact("job_number", &ModuleInfo::Vco::jobNumber)
        .fact("lot_number", &ModuleInfo::Vco::lotNumber)
        .fact("checksum_ok", &ModuleInfo::Vco::checksumHolds)
        .end();
    Facts<ModuleInfo::TimeMonitoring>(module, "TimeMonitoring", "")
        .fact("date", &ModuleInfo::TimeMonitoring::date, "As it was stored.")
        .fact("checksum_ok", &ModuleInfo::TimeMonitoring::checksumHolds)
        .end();
    Facts<ModuleInfo::Service>(module, "Service", "A service that was recorded.")
        .fact("block", &ModuleInfo::Service::block)
        .fact("date", &ModuleInfo::Service::date)
        .fact("department", &ModuleInfo::Service::department)
        .fact("operating_hours", &ModuleInfo::Service::operatingHours)
        .fact("turn_on_count", &ModuleInfo::Service::turnOnCount)
        .fact("repair_number", &ModuleInfo::Service::repairNumber)
        .fact("service_code", &ModuleInfo::Service::serviceCode)
        .fact("checksum_ok", &ModuleInfo::Service::checksumHolds)
        .end();
    Facts<ModuleInfo::Modification>(module, "Modification", "A modification that was made.")
        .fact("position", &ModuleInfo::Modification::position)
        .fact("circular_number", &ModuleInfo::Modification::circularNumber)
        .fact("action", &ModuleInfo::Modification::action)
        .end();
    Facts<ModuleInfo::Counter>(module, "Counter", "A wear counter, or a statistic, of which the lengths are told.")
        .fact("name", &ModuleInfo::Counter::name)
        .fact("block", &ModuleInfo::Counter::block)
        .fact("values", &ModuleInfo::Counter::values)
        .fact("backup_values", &ModuleInfo::Counter::backup)
        .fact("differs", &ModuleInfo::Counter::differs, "Whether the backup says another thing; None without one.")
        .fact("checksums_ok", &ModuleInfo::Counter::checksumsHold)
        .end();
}

/// A fact of the identity, None where there is no ident block.
template <class T>
auto ofIdentity(T ModuleInfo::Identity::*member) {
    return [member](const ModuleInfo& info) { return info.identity ? (*info.identity).*member : T(); };
}

void defineModuleInfo(py::module_& module) {
    using Identity = ModuleInfo::Identity;
    MadeHere<ModuleInfo>(module, "ModuleInfo", R"(Who a module is, what was done to it, how worn it is.

What the image does not hold, or what was never set, is None. print() shows it as the tool does.)")
        .def_property_readonly("name", ofIdentity(&Identity::name))
        .def_property_readonly("part_number", ofIdentity(&Identity::partNumber), "\"1141.3000.02\".")
        .def_property_readonly("variant", ofIdentity(&Identity::variant))
        .def_property_readonly("serial_number", ofIdentity(&Identity::serialNumber))
        .def_property_readonly("production_date", ofIdentity(&Identity::productionDate), "A datetime.date.")
        .def_property_readonly("hardware_code", ofIdentity(&Identity::hardwareCode))
        .def_property_readonly("product_index", ofIdentity(&Identity::productIndex), "\"02.04\".")
        .def_readonly("identity", &ModuleInfo::identity, "The same facts together, with the state of their checksum.")
        .def_readonly("instrument", &ModuleInfo::instrument)
        .def_readonly("further_idents", &ModuleInfo::furtherIdents)
        .def_readonly("vco", &ModuleInfo::vco)
        .def_readonly("time_monitoring", &ModuleInfo::timeMonitoring)
        .def_readonly("services", &ModuleInfo::services, "The latest last.")
        .def_property_readonly("last_service",
                               [](const ModuleInfo& info) {
                                   return info.services.empty() ? std::nullopt : std::optional(info.services.back());
                               })
        .def_readonly("modifications", &ModuleInfo::modifications)
        .def_readonly("operating_hours", &ModuleInfo::operatingHours)
        .def_readonly("wear_counters", &ModuleInfo::wearCounters)
        .def_readonly("statistics", &ModuleInfo::statistics)
        .def_readonly("blocks", &ModuleInfo::blocks, "How many, the end block apart.")
        .def_readonly("unchecked_blocks", &ModuleInfo::uncheckedBlocks)
        .def_readonly("wrong_checksums", &ModuleInfo::wrongChecksums, "Identifiers of the blocks.")
        .def("__repr__", [](const ModuleInfo& info) {
            std::ostringstream text;
            Travik::printModuleInfo(info, text);
            return text.str();
        });
}

} // namespace

void defineInfo(py::module_& module) {
    MadeHere<Travik::ImageFinding>(module, "Finding",
                                   "Something that was found out about an image. str() is a line of text.")
        .def_readonly("offset", &Travik::ImageFinding::offset, "Where, in bytes.")
        .def_readonly("block", &Travik::ImageFinding::id,
                      "Identifier of the block; None where it is of the whole image.")
        .def_readonly("text", &Travik::ImageFinding::text)
        .def_property_readonly(
            "kind", [](const Travik::ImageFinding& found) { return std::string(Travik::nameOf(found.finding)); },
            "\"wrong checksum\" and the like: always the same words.")
        .def_property_readonly(
            "is_problem", [](const Travik::ImageFinding& found) { return found.grade() == Travik::Grade::Damage; },
            "Whether it is damage, and not only worth a look.")
        .def("__str__",
             [](const Travik::ImageFinding& found) {
                 return "offset " + std::to_string(found.offset) +
                        (found.id ? ", block " + std::to_string(*found.id) : "") + ": " + found.text;
             })
        .def("__repr__", [](const py::object& self) { return "<Finding: " + std::string(py::str(self)) + '>'; });
    defineFacts(module);
    defineModuleInfo(module);
}

} // namespace Python
