#pragma once

// What the system tells about a running process.

namespace host {

/// In KiB; zeros when there is no such process.
struct ProcessMemory {
    long peakResident = 0;
    /// The part of the resident memory that belongs to no file.
    long anonymous = 0;
};

ProcessMemory memoryOf(int processId);

}  // namespace host
