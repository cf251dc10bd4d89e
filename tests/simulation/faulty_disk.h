#pragma once

// The disk below the settings store, which can be made to fail.

namespace simulation {

enum class DiskFault { none, busy, full, unreadable };

/// From now on SQLite opens its files through a layer that fails as `setDiskFault` says. Nothing sleeps in
/// it.
void installFaultyDisk();
void setDiskFault(DiskFault fault);

}  // namespace simulation
