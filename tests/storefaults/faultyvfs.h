#pragma once

/// SQLite's file access with faults on demand: a layer over its "unix" VFS that can make the nth
/// write, sync or open fail. Once installed, every connection of the process uses it except those
/// that request "unix" by name. Set faults from one thread.
namespace faultyvfs {

enum class Operation { Write, Sync, Open };

struct Fault
{
    Operation operation = Operation::Write;
    int nth = 0;          ///< The first operation that fails, counted from 1.
    bool lasting = false; ///< All later ones fail too.
    bool torn = false;    ///< A failing write leaves the first half of its bytes.
    int result = 0;       ///< What SQLite gets.
};

/// Makes this layer the process's default. Returns false if SQLite refuses it.
bool install();

/// Starts counting operations; they fail from the fault's nth on.
void arm(const Fault& fault);

/// Ends the fault: everything works again.
void disarm();

/// Operations failed since arm().
int failures();

} // namespace faultyvfs
