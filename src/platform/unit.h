#pragma once

// Numbered files: the only code of the library that touches the file system.
//
// A unit is an int32 identity that a file is connected to. Which units are connected is process-wide state
// that callers can see: a log that stays open is appended to, and a write to a unit without a file connects
// the default file "fort.<n>" in the current directory, which then stays connected.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

enum class OpenStatus {
  Old,      // an existing file, for reading
  Replace,  // a new empty file, for writing; an existing one is emptied
};

// Connects a file. A unit that has another file is closed first. A file that cannot be opened, that is no
// regular file, or that another unit is connected to (unless both read it) ends the process.
void OpenUnit(int32_t unit, std::string_view name, OpenStatus status);

// Closes a unit; one without a file is left alone. Output that cannot be written out ends the process.
void CloseUnit(int32_t unit);

bool IsConnected(int32_t unit);
bool IsConnected(std::string_view name);  // to any unit

// Reads the next record, without its line end (LF or CR LF), as a view that lives until the unit is closed.
// False at the end of the file, which counts as one more record to step back over.
bool ReadRecord(int32_t unit, std::string_view& record);

// What an input file still holds behind the place of the next read: a bound for what reading on can bring.
std::size_t BytesLeft(int32_t unit);

// Steps back by one record; at the beginning of the file nothing happens.
void StepBack(int32_t unit);

// Writes one record and its line end. A unit without a file is connected to its default file, emptied, first.
void WriteRecord(int32_t unit, std::string_view record);

}  // namespace platform
