#include "export/exportoutcome.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace {

struct OutcomeText
{
    ExportResult result;
    const char* text;
};

constexpr std::array<OutcomeText, 6> kOutcomes = {{
    {ExportSuccess, QT_TRANSLATE_NOOP("ExportOutcome", "导出成功%1")},
    {ExportFileError, QT_TRANSLATE_NOOP("ExportOutcome", "CSV文件无法打开（可能被占用）")},
    {ExportNoData, QT_TRANSLATE_NOOP("ExportOutcome", "没有可以保存的数据")},
    {ExportDbError, QT_TRANSLATE_NOOP("ExportOutcome", "数据库读取失败，请检查数据文件")},
    {ExportCancelled, QT_TRANSLATE_NOOP("ExportOutcome", "导出已取消")},
    {ExportWriteError, QT_TRANSLATE_NOOP("ExportOutcome", "导出失败")},
}};

} // namespace

QString exportOutcomeText(ExportResult result, const QStringList& files)
{
    const auto* const outcome =
        std::find_if(kOutcomes.begin(), kOutcomes.end(),
                     [result](const OutcomeText& row) { return row.result == result; });
    if (outcome == kOutcomes.end()) {
        return {};
    }
    const QString text = QCoreApplication::translate("ExportOutcome", outcome->text);
    return result == ExportSuccess ? text.arg(files.join(QStringLiteral("; "))) : text;
}
