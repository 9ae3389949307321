#pragma once

#include <QString>

namespace scnlauncher {

/// Where a child is started. Its data lies in the folder of its program.
struct ProgramPlace
{
    /// Empty if there is none.
    QString program;
    QString folder;
    /// Why there is none, a sentence for the user.
    QString errorText;
};

/// The path of a program that comes with the launcher: beside it, as in a build folder, or where it
/// was installed to.
QString companionProgram(const QString& name);

/// Whether a child may keep its data in a folder: it can be written and, since root can write
/// anywhere, is none of the system's.
bool takesData(const QString& folder);

/// $XDG_DATA_HOME/scn4070a, with a folder for each name below; empty for a user without a home.
QString perUserRoot();

/// $XDG_DATA_HOME/scn4070a/<name>, readable; empty for a user without a home.
QString perUserFolder(const QString& name);

/// Brings the copy of a program in a folder up to date: a link to the same file where the system
/// allows, else a copy, put in place in one step. The caller holds the folder's lock, so that no
/// copy runs there.
ProgramPlace copiedProgram(const QString& program, const QString& folder);

} // namespace scnlauncher
