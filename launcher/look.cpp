#include "launcher/look.h"

#include "resources/resources.h"

#include <QApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QPalette>
#include <QTranslator>

#include <memory>

namespace scnlauncher {
namespace {

/// The program's background, and what the launcher adds to the program's style sheet.
constexpr QColor kBackground(43, 43, 43);
const QString kOwnStyle = QStringLiteral(R"(
QWidget { background-color: #2b2b2b; font-family: 'Microsoft YaHei', Arial; }
QTabWidget, QStackedWidget { border: 0; padding: 0; }
QTabWidget::pane { border: 0; }
QPushButton { background-color: #455364; border-radius: 4px; padding: 3px 14px; }
QPushButton:hover { background-color: #54687a; }
QPushButton:disabled { background-color: #363b41; color: #788490; }
QTreeView::item:selected:!active { background-color: #346792; }
#newTab { border: 0; border-radius: 0; padding: 0 10px; font-size: 20px; }
#newTab:hover { background-color: #54687a; }
#pageTitle { font-size: 20px; padding: 12px; }
#problem, #state[trouble="true"], #critical, #keeping { color: #e0a030; }
)");

/// Those of its menus and buttons; where they are not installed, they are English.
void translateQtsOwnTexts()
{
    auto translator = std::make_unique<QTranslator>();
    if (translator->load(QStringLiteral("qtbase_zh_CN"),
                         QLibraryInfo::location(QLibraryInfo::TranslationsPath))) {
        translator->setParent(qApp);
        QCoreApplication::installTranslator(translator.release());
    }
}

} // namespace

void applyLook()
{
    translateQtsOwnTexts();
    // The first frame is drawn before a style sheet has its say.
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, kBackground);
    palette.setColor(QPalette::Base, kBackground);
    QApplication::setPalette(palette);
    initResources();
    QFile styles(QStringLiteral(":/qss/styles.qss"));
    if (styles.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qApp->setStyleSheet(QString::fromUtf8(styles.readAll()) + kOwnStyle);
    }
}

} // namespace scnlauncher
