#pragma once

/// SQLite's access to files with faults on demand: a layer over its "unix" access that can make the
/// nth write, sync or open fail. Once installed it is what every connection of the process uses,
/// except those that ask for "unix" by name. Faults are set from one thread.
namespace faultyvfs {

enum class Operation { Write, Sync, Open };

struct Fault
{
    Operation operation = Operation::Write;
    int nth = 0;          ///< The first operation that fails, counted from 1 on.
    bool lasting = false; ///< All later ones fail as well.
    bool torn = false;    ///< A failing write leaves the first half of its bytes.
    int result = 0;       ///< What SQLite is told.
};

/// Makes the layer the process's way to files. Gives false if SQLite refuses it.
bool install();

/// Begins to count operations; from the fault's nth on they fail.
void arm(const Fault& fault);

/// Ends it: everything works again.
void disarm();

/// How many operations have failed since arm().
int failures();

} // namespace faultyvfs
