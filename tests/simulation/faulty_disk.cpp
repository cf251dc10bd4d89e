#include "tests/simulation/faulty_disk.h"

#include <sqlite3.h>

#include <cstdlib>

namespace simulation {
namespace {

DiskFault current = DiskFault::none;
sqlite3_vfs* system = nullptr;

/// An open file; the system's own follows it in the same block of memory.
struct File {
    sqlite3_file base;

    sqlite3_file* own() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* own(sqlite3_file* file) { return reinterpret_cast<File*>(file)->own(); }

template <auto Method, typename... Arguments>
int pass(sqlite3_file* file, Arguments... arguments) {
    return (own(file)->pMethods->*Method)(own(file), arguments...);
}

int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    if (current == DiskFault::unreadable) return SQLITE_IOERR_READ;
    return own(file)->pMethods->xRead(own(file), bytes, count, offset);
}

int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    if (current == DiskFault::full) return SQLITE_FULL;
    return own(file)->pMethods->xWrite(own(file), bytes, count, offset);
}

int lockShared(sqlite3_file* file, int offset, int count, int flags) {
    if (current == DiskFault::busy && (flags & SQLITE_SHM_LOCK) != 0) return SQLITE_BUSY;
    return own(file)->pMethods->xShmLock(own(file), offset, count, flags);
}

void barrier(sqlite3_file* file) { own(file)->pMethods->xShmBarrier(own(file)); }

const sqlite3_io_methods methods{
    .iVersion = 3,
    .xClose = pass<&sqlite3_io_methods::xClose>,
    .xRead = readFile,
    .xWrite = writeFile,
    .xTruncate = pass<&sqlite3_io_methods::xTruncate, sqlite3_int64>,
    .xSync = pass<&sqlite3_io_methods::xSync, int>,
    .xFileSize = pass<&sqlite3_io_methods::xFileSize, sqlite3_int64*>,
    .xLock = pass<&sqlite3_io_methods::xLock, int>,
    .xUnlock = pass<&sqlite3_io_methods::xUnlock, int>,
    .xCheckReservedLock = pass<&sqlite3_io_methods::xCheckReservedLock, int*>,
    .xFileControl = pass<&sqlite3_io_methods::xFileControl, int, void*>,
    .xSectorSize = pass<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = pass<&sqlite3_io_methods::xShmMap, int, int, int, void volatile**>,
    .xShmLock = lockShared,
    .xShmBarrier = barrier,
    .xShmUnmap = pass<&sqlite3_io_methods::xShmUnmap, int>,
    .xFetch = pass<&sqlite3_io_methods::xFetch, sqlite3_int64, int, void**>,
    .xUnfetch = pass<&sqlite3_io_methods::xUnfetch, sqlite3_int64, void*>,
};

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    auto* opened = reinterpret_cast<File*>(file);
    opened->base.pMethods = nullptr;
    const int code = system->xOpen(system, name, opened->own(), flags, outFlags);
    if (code == SQLITE_OK) opened->base.pMethods = &methods;
    return code;
}

/// As if the time had passed.
int doNotSleep(sqlite3_vfs*, int microseconds) { return microseconds; }

}  // namespace

void installFaultyDisk() {
    system = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs layer = *system;
    layer.zName = "faulty";
    layer.szOsFile = static_cast<int>(sizeof(File)) + system->szOsFile;
    layer.xOpen = openFile;
    layer.xSleep = doNotSleep;
    sqlite3_vfs_register(&layer, /*makeDflt=*/1);
}

void setDiskFault(DiskFault fault) { current = fault; }

}  // namespace simulation
