#pragma once

namespace Travik {

/// The error codes that blocks signal to the instrument's error manager.
enum ErrorCode : int {
    InvalidChecksum = 1040000,    ///< the data of a block has an invalid checksum
    DownloadDenied = 1040001,     ///< a record with a bad checksum was refused
    WriteToEepromFailed = 1040002 ///< a single value could not be stored
};

} // namespace Travik
