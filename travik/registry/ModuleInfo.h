#pragma once

#include <travik/registry/ModuleImage.h>

#include <chrono>
#include <iosfwd>

namespace Travik {

/// The facts of a module that its blocks hold between them: who it is, what was done to it, how worn it is.
///
/// A value that the image does not hold, or that was never set, is empty: a truncated block's, an erased one (all
/// ones), a number 0 where 0 stands for "not set". Counts and operating hours may be 0. Where a block occurs more than
/// once the first whose checksum holds speaks, else the first. A block that is shorter than its record by its own size
/// word is read as far as it goes, counters and operating hours apart. Texts are UTF-8.
struct ModuleInfo {
    using Date = std::chrono::year_month_day;
    using Number = std::optional<unsigned int>;
    using Text = std::optional<std::string>;

    /// From the ident block.
    struct Identity {
        Text name;
        Text partNumber; ///< "1141.3000.02", the last group being the variant
        Number variant;
        Number serialNumber;
        std::optional<Date> productionDate;
        Number hardwareCode;
        Text productIndex; ///< "02.04"
        bool checksumHolds = true;
    };

    /// From the blocks that only a main board has.
    struct Instrument {
        Text model;
        Number serialNumber;
        Text macAddress; ///< "00:90:b8:12:34:56"
        bool checksumsHold = true;
    };

    /// From the ident block of an option.
    struct FurtherIdent {
        int block;
        std::string_view name;  ///< for a script, stable
        std::string_view label; ///< for a person
        Identity identity;
    };

    struct Vco {
        Number serialNumber;
        Number jobNumber;
        Number lotNumber;
        bool checksumHolds = true;
    };

    struct TimeMonitoring {
        Text date; ///< as it was stored
        bool checksumHolds = true;
    };

    struct Service {
        int block = 0; ///< identifier
        std::optional<Date> date;
        Text department;
        Number operatingHours; ///< at the service; 0 only where the date is set
        Number turnOnCount;    ///< the same
        Number repairNumber;
        Number serviceCode;
        bool checksumHolds = true;
    };

    struct Modification {
        unsigned int position; ///< 1 to 10
        unsigned int circularNumber;
        unsigned int action;
    };

    /// A counter or statistic, and its backup, which modules keep in a block of its own.
    struct Counter {
        int block;              ///< identifiers
        int backupBlock;        ///< 0: no backup is kept
        std::string_view name;  ///< for a script, stable
        std::string_view label; ///< for a person
        /// What is counted; of a statistic, which is not interpreted, the length in bytes. Empty where the image has no
        /// such block.
        std::vector<Number> values;
        std::vector<Number> backup;
        /// Whether the two differ, a statistic in any byte in use; empty unless the image has both.
        std::optional<bool> differs;
        bool checksumsHold = true;
    };

    std::optional<Identity> identity;
    std::optional<Instrument> instrument;
    std::vector<FurtherIdent> furtherIdents; ///< those that the image has
    std::optional<Vco> vco;
    std::optional<TimeMonitoring> timeMonitoring;
    /// Those that were recorded, one an identifier, the latest last; those whose checksum does not hold before all
    /// others.
    std::vector<Service> services;
    std::optional<std::vector<Modification>> modifications; ///< those that are set
    bool modificationsChecksumHolds = true;
    Number operatingHours;
    bool operatingHoursChecksumHolds = true;
    std::vector<Counter> wearCounters; ///< those that the image has, or a backup of
    std::vector<Counter> statistics;   ///< the same

    std::size_t blocks = 0;          ///< the end block apart
    std::size_t uncheckedBlocks = 0; ///< of them those whose checksum passes unread
    std::vector<int> wrongChecksums; ///< identifiers of the blocks whose checksum does not hold or is cut off with them
    std::vector<ImageFinding> problems; ///< the damage of the image
};

/// "2018-11-15".
TRAVIK_DATABLOCK_EXPORT std::string isoDate(ModuleInfo::Date date);

/// Collects the facts.
TRAVIK_DATABLOCK_EXPORT ModuleInfo moduleInfo(const ModuleImage& image);

/// Writes the facts for a person, as UTF-8, on about one screen. Control characters of texts are shown as "?".
TRAVIK_DATABLOCK_EXPORT void printModuleInfo(const ModuleInfo& info, std::ostream& os);

} // namespace Travik
