#include "faultyvfs.h"

#include <sqlite3.h>

#include <atomic>
#include <cstring>

namespace {

struct State
{
    std::atomic<bool> armed{false};
    std::atomic<int> calls{0};
    std::atomic<int> failures{0};
    faultyvfs::Fault fault;
};

State g_state;
sqlite3_vfs* g_real = nullptr;
sqlite3_vfs g_layer;

/// Whether the current operation is one that must fail.
bool fails(faultyvfs::Operation operation)
{
    if (!g_state.armed || operation != g_state.fault.operation) {
        return false;
    }
    const int call = ++g_state.calls;
    if (call != g_state.fault.nth && !(g_state.fault.lasting && call > g_state.fault.nth)) {
        return false;
    }
    ++g_state.failures;
    return true;
}

/// A file of this layer; the real one follows in the same block of memory.
struct LayerFile
{
    sqlite3_file base;
};

sqlite3_file* real(sqlite3_file* file)
{
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<LayerFile*>(file) + 1);
}

int closeFile(sqlite3_file* file)
{
    return real(file)->pMethods->xClose(real(file));
}

int readFile(sqlite3_file* file, void* buffer, int count, sqlite3_int64 offset)
{
    return real(file)->pMethods->xRead(real(file), buffer, count, offset);
}

int writeFile(sqlite3_file* file, const void* buffer, int count, sqlite3_int64 offset)
{
    const auto write = real(file)->pMethods->xWrite;
    if (!fails(faultyvfs::Operation::Write)) {
        return write(real(file), buffer, count, offset);
    }
    if (g_state.fault.torn) {
        write(real(file), buffer, count / 2, offset);
    }
    return g_state.fault.result;
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size)
{
    return real(file)->pMethods->xTruncate(real(file), size);
}

int syncFile(sqlite3_file* file, int flags)
{
    if (fails(faultyvfs::Operation::Sync)) {
        return g_state.fault.result;
    }
    return real(file)->pMethods->xSync(real(file), flags);
}

int fileSize(sqlite3_file* file, sqlite3_int64* size)
{
    return real(file)->pMethods->xFileSize(real(file), size);
}

int lockFile(sqlite3_file* file, int level)
{
    return real(file)->pMethods->xLock(real(file), level);
}

int unlockFile(sqlite3_file* file, int level)
{
    return real(file)->pMethods->xUnlock(real(file), level);
}

int checkReservedLock(sqlite3_file* file, int* result)
{
    return real(file)->pMethods->xCheckReservedLock(real(file), result);
}

int fileControl(sqlite3_file* file, int operation, void* argument)
{
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
}

int sectorSize(sqlite3_file* file)
{
    return real(file)->pMethods->xSectorSize(real(file));
}

int deviceCharacteristics(sqlite3_file* file)
{
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
}

int mapShared(sqlite3_file* file, int region, int size, int extend, void volatile** memory)
{
    return real(file)->pMethods->xShmMap(real(file), region, size, extend, memory);
}

int lockShared(sqlite3_file* file, int offset, int count, int flags)
{
    return real(file)->pMethods->xShmLock(real(file), offset, count, flags);
}

void sharedBarrier(sqlite3_file* file)
{
    real(file)->pMethods->xShmBarrier(real(file));
}

int unmapShared(sqlite3_file* file, int deleteFlag)
{
    return real(file)->pMethods->xShmUnmap(real(file), deleteFlag);
}

int fetchPage(sqlite3_file* file, sqlite3_int64 offset, int count, void** page)
{
    return real(file)->pMethods->xFetch(real(file), offset, count, page);
}

int unfetchPage(sqlite3_file* file, sqlite3_int64 offset, void* page)
{
    return real(file)->pMethods->xUnfetch(real(file), offset, page);
}

constexpr sqlite3_io_methods kMethods = {3,
                                         closeFile,
                                         readFile,
                                         writeFile,
                                         truncateFile,
                                         syncFile,
                                         fileSize,
                                         lockFile,
                                         unlockFile,
                                         checkReservedLock,
                                         fileControl,
                                         sectorSize,
                                         deviceCharacteristics,
                                         mapShared,
                                         lockShared,
                                         sharedBarrier,
                                         unmapShared,
                                         fetchPage,
                                         unfetchPage};

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr;
    if (fails(faultyvfs::Operation::Open)) {
        return g_state.fault.result;
    }
    std::memset(real(file), 0, static_cast<size_t>(g_real->szOsFile));
    const int result = g_real->xOpen(g_real, name, real(file), flags, outFlags);
    if (real(file)->pMethods) {
        file->pMethods = &kMethods;
    }
    return result;
}

} // namespace

bool faultyvfs::install()
{
    g_real = sqlite3_vfs_find("unix");
    if (!g_real) {
        return false;
    }
    g_layer = *g_real;
    g_layer.zName = "faulty";
    g_layer.pNext = nullptr;
    g_layer.szOsFile = static_cast<int>(sizeof(LayerFile)) + g_real->szOsFile;
    g_layer.xOpen = openFile;
    return sqlite3_vfs_register(&g_layer, 1) == SQLITE_OK;
}

void faultyvfs::arm(const Fault& fault)
{
    g_state.armed = false;
    g_state.fault = fault;
    g_state.calls = 0;
    g_state.failures = 0;
    g_state.armed = true;
}

void faultyvfs::disarm()
{
    g_state.armed = false;
}

int faultyvfs::failures()
{
    return g_state.failures;
}
