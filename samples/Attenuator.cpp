#include "Samples.h"

#include <array>
#include <chrono>

namespace Samples {

namespace {

using namespace std::chrono;

struct Service {
    const char* department; ///< six characters
    year_month_day date;
    unsigned int hours;
    unsigned int turnOns;
    unsigned short repairNumber;
    unsigned short code;
};

constexpr std::array services{
    Service{"1ES3  ", 2019y / March / 7, 1210, 148, 0, 12},
    Service{"SRV-MU", 2022y / October / 24, 8123, 1034, 4711, 31},
    Service{"SRV-SG", 2021y / June / 1, 5560, 702, 3390, 22}, // not stored in the order of their dates
};

Travik::HwDatablockServiceData service(int id, const Service& data) {
    Travik::HwDatablockServiceData block(id);
    block.setDepartment(data.department);
    block.setServiceDate(Travik::packDate(data.date));
    block.setOpTimeHours(data.hours);
    block.setOpTimeTurnOn(data.turnOns);
    block.setRepairNumber(data.repairNumber);
    block.setServiceCode(data.code);
    return block;
}

Travik::HwDatablockSAttCCounter counter(int id, unsigned int first, unsigned int second) {
    Travik::HwDatablockSAttCCounter block(id);
    block.setCounterValue(first, 0);
    block.setCounterValue(second, 1);
    return block;
}

Travik::HwDatablockCommonStatisticData statistic(int id, unsigned int count) {
    std::array<unsigned char, 16> data{};
    for (std::size_t i = 0; i < sizeof count; ++i)
        data[i] = static_cast<unsigned char>(count >> (8 * i));
    Travik::HwDatablockCommonStatisticData block(id);
    block.setCommonStatisticData(data.data(), data.size());
    return block;
}

} // namespace

std::vector<char> stepAttenuator() {
    Image image("SATT6C", 11422100, 5, 100912);
    Travik::HwDatablockModification modification;
    modification.setCircularNr(1203, 0);
    modification.setAction(1, 0);
    modification.setCircularNr(1288, 1);
    modification.setAction(2, 1);
    image.add(modification);
    // Every module has all ten; those behind the services done are as new.
    for (int id = 200; id <= 209; ++id) {
        const auto n = static_cast<std::size_t>(id - 200);
        image.add(n < services.size() ? service(id, services[n]) : Travik::HwDatablockServiceData(id));
    }
    Travik::HwDatablockStatistic statistics;
    statistics.setOpHours(10456);
    image.add(statistics);
    for (const int n : {0, 1}) {
        Travik::HwDatablockSAtt6OWLDCounter overload(n);
        overload.setCounterValue(n == 0 ? 57 : 3);
        image.add(overload);
    }
    image.add(counter(11300, 412, 17)).add(counter(11301, 412, 17));
    image.add(counter(11302, 91, 6)).add(counter(11303, 91, 5)); // the backup was written one event earlier
    image.add(statistic(11310, 1377)).add(statistic(11311, 1377));
    image.add(statistic(11312, 10456)).add(statistic(11313, 10455));
    return image.finish();
}

} // namespace Samples
