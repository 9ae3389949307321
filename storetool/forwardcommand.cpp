#include "storetool/forwardcommand.h"

#include "storetool/console/console.h"
#include "storetool/console/interrupt.h"
#include "storetool/forward/forwarder.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>
#include <limits>
#include <optional>

namespace scnstore {

namespace {

const QString kTo = QStringLiteral("to");
const QString kOnce = QStringLiteral("once");

void say(const QString& line)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(shown(line)));
}

/// The exit code if the command line is wrong.
std::optional<int> checkSetup(const ForwardSetup& setup)
{
    const auto wrong = [](const QString& sentence) {
        return fail(kFailed, sentence + QStringLiteral(" See 'scn4070a-store forward --help'."));
    };
    for (const QString& directory : setup.directories) {
        if (!QFileInfo(directory).isDir()) {
            return wrong(QStringLiteral("forward: %1 is no directory.").arg(directory));
        }
    }
    if (setup.target.isEmpty()) {
        return wrong(QStringLiteral("forward: no database is given with --to."));
    }
    const QString complaint = ServerConnection::complaintAbout(setup.target);
    if (!complaint.isEmpty()) {
        return wrong(
            QStringLiteral("forward: the address of the database is wrong: %1.").arg(complaint));
    }
    return std::nullopt;
}

} // namespace

int runForwardCommand(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Copies the readings of the day files below each directory into a "
                       "PostgreSQL database, and goes "
                       "on while they are taken."));
    parser.addPositionalArgument(QStringLiteral("DIR"),
                                 QStringLiteral("Where data directories and kept runs lie."),
                                 QStringLiteral("DIR..."));
    parser.addOption({kTo, QStringLiteral("The database, as postgresql://user@host/name."),
                      QStringLiteral("address")});
    parser.addOption({kOnce, QStringLiteral("Copies what there is and ends.")});
    if (const auto code = readArguments(parser, arguments, {1, std::numeric_limits<int>::max()})) {
        return *code;
    }
    ForwardSetup setup;
    setup.directories = parser.positionalArguments();
    setup.target = parser.value(kTo);
    setup.once = parser.isSet(kOnce);
    if (const auto code = checkSetup(setup)) {
        return *code;
    }
    catchInterrupts();
    Forwarder forwarder(setup, say);
    switch (forwarder.run()) {
    case Forwarder::End::Done:
        return kFine;
    case Forwarder::End::FilesDamaged:
        return kDamaged;
    case Forwarder::End::FilesRefused:
        return fail(kDamaged, QStringLiteral("forward: ") + forwarder.errorText());
    case Forwarder::End::FilesInUse:
        return fail(kInUse, QStringLiteral("forward: ") + forwarder.errorText());
    case Forwarder::End::FilesBusy:
    case Forwarder::End::ServerFailed:
        break;
    }
    return fail(kFailed, QStringLiteral("forward: ") + forwarder.errorText());
}

} // namespace scnstore
