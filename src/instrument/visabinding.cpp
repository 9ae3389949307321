#include "instrument/visabinding.h"

#include "visa/visaprovider.h"

#include <QLatin1String>
#include <QLibrary>

#include <optional>

namespace scn::visabinding {
namespace {

/// Names of the platform's VISA library, in search order.
#if defined(Q_OS_WIN)
constexpr const char* kLibraryNames[] = {"visa64", "visa32"};
#elif defined(Q_OS_MACOS)
constexpr const char* kLibraryNames[] = {"/Library/Frameworks/VISA.framework/VISA", "visa"};
#else
constexpr const char* kLibraryNames[] = {"visa"};
#endif

template <typename Function>
bool resolve(QLibrary& library, const char* symbol, Function& function)
{
    function = reinterpret_cast<Function>(library.resolve(symbol));
    return function != nullptr;
}

/// The operations of a library; nothing if it is missing or lacks one of them.
std::optional<visa::VisaTable> tableOf(const char* libraryName)
{
    QLibrary library{QLatin1String(libraryName)};
    if (!library.load()) {
        return std::nullopt;
    }
    visa::VisaTable found = {};
    if (resolve(library, "viOpenDefaultRM", found.viOpenDefaultRM) &&
        resolve(library, "viOpen", found.viOpen) && resolve(library, "viClose", found.viClose) &&
        resolve(library, "viSetAttribute", found.viSetAttribute) &&
        resolve(library, "viStatusDesc", found.viStatusDesc) &&
        resolve(library, "viRead", found.viRead) && resolve(library, "viWrite", found.viWrite)) {
        return found;
    }
    library.unload();
    return std::nullopt;
}

visa::VisaTable findTable()
{
    for (const char* const name : kLibraryNames) {
        if (const auto found = tableOf(name)) {
            return *found;
        }
    }
    return visa::providerVisaTable();
}

const visa::VisaTable*& replacementTable()
{
    static const visa::VisaTable* replacement = nullptr;
    return replacement;
}

} // namespace

const visa::VisaTable& table()
{
    static const visa::VisaTable found = findTable();
    const visa::VisaTable* const replacement = replacementTable();
    return replacement ? *replacement : found;
}

void setTable(const visa::VisaTable* replacement)
{
    replacementTable() = replacement;
}

} // namespace scn::visabinding
