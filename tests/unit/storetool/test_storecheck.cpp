#include "dayfilewriter.h"
#include "runscene.h"
#include "storerun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <sys/stat.h>

#include <functional>

namespace {

constexpr qint64 kPage = 4096;
const QString kTable = QStringLiteral("curve_1_batch_20260112_060000_20260112_115959");

/// A way to spoil the file of 2026-01-12.
using Harm = std::function<void(const RunScene& scene)>;

} // namespace

Q_DECLARE_METATYPE(Harm)

/// What check finds, and that it never crashes on what it reads.
class TestStoreCheck : public QObject
{
    Q_OBJECT

private slots:
    void soundRunIsSound();
    void gapsAreTold();
    void missingWalIsANote();
    void missingWalOfAKeptRunIsNoted_data();
    void missingWalOfAKeptRunIsNoted();
    void damageIsASentence_data();
    void damageIsASentence();
    void everyPageMayBeDestroyed();
    void everyLengthMayBeLeft();
};

void TestStoreCheck::soundRunIsSound()
{
    const RunScene scene;
    scene.addDay("20260112");
    const StoreRun text = runStore({QStringLiteral("check"), scene.dataDirectory()});
    QCOMPARE(text.exitCode, 0);
    QCOMPARE(text.errors, QByteArray());
    QVERIFY(text.output.contains("20260112.db  101(Vdc)       360        0  " + kTable.toUtf8()));
    QVERIFY(text.output.contains("101(Vdc)       480           60 s     0\n"));
    QVERIFY(text.output.endsWith("The run is sound.\n"));

    const StoreRun run =
        runStore({QStringLiteral("check"), QStringLiteral("--json"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    const QJsonObject object = QJsonDocument::fromJson(run.output).object();
    QCOMPARE(object.value(QLatin1String("damage")).toArray().size(), 0);
    const QJsonArray tables = object.value(QLatin1String("files"))
                                  .toArray()
                                  .at(0)
                                  .toObject()
                                  .value(QLatin1String("tables"))
                                  .toArray();
    QCOMPARE(tables.size(), 4);
    QCOMPARE(tables.at(0).toObject().value(QLatin1String("readings")).toInt(), 360);
}

/// Two gaps in one curve, one of them over the edge of a batch.
void TestStoreCheck::gapsAreTold()
{
    const RunScene scene;
    scene.addDay("20260112", 1000);
    scene.change("20260112",
                 QStringLiteral("DELETE FROM %1 WHERE id BETWEEN 3601 AND 3620").arg(kTable));
    scene.change("20260112", QStringLiteral("DELETE FROM %1 WHERE id > 21300").arg(kTable));
    // One of ten intervals is none.
    scene.change("20260112",
                 QStringLiteral("DELETE FROM %1 WHERE id BETWEEN 101 AND 109").arg(kTable));
    const StoreRun run = runStore({QStringLiteral("check"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.contains("101(Vdc)     28471            1 s     2\n"));
    QVERIFY(run.output.contains("102(Vdc)     28800            1 s     0\n"));
    QVERIFY(run.output.contains("101(Vdc): none for 301 s after 2026-01-12 11:54:59\n"
                                "101(Vdc): none for 21 s after 2026-01-12 06:59:59\n"));
    const StoreRun wide = runStore({QStringLiteral("check"), QStringLiteral("--gap"),
                                    QStringLiteral("30"), scene.dataDirectory()});
    QVERIFY(wide.output.contains("101(Vdc)     28471            1 s     1\n"));
}

/// It may have been checkpointed: SQLite leaves the header as it is.
void TestStoreCheck::missingWalIsANote()
{
    const QByteArray note(
        "Note: 20260112.db was used with a WAL, 20260112.db-wal, which is not there: it "
        "was checkpointed, or the file was copied without it and lacks the last "
        "readings.\nThe run is sound.\n");
    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112", QStringLiteral("PRAGMA journal_mode = WAL"));
    QVERIFY(!QFile::exists(scene.dayFile("20260112") + QStringLiteral("-wal")));
    StoreRun run = runStore({QStringLiteral("check"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.output.endsWith(note), run.output.constData());
    scene.change("20260112", QStringLiteral("PRAGMA journal_mode = DELETE"));
    run = runStore({QStringLiteral("check"), scene.dataDirectory()});
    QVERIFY(!run.output.contains("Note:"));
}

/// The launcher lists the files that it gave names to, and takes a WAL off the list once it is empty.
void TestStoreCheck::missingWalOfAKeptRunIsNoted_data()
{
    QTest::addColumn<QString>("more");
    QTest::addColumn<int>("notes");

    QTest::newRow("folded in") << QString() << 0;
    QTest::newRow("lost") << QStringLiteral(", \"20260112.db-wal\": \"1\"") << 1;
}

void TestStoreCheck::missingWalOfAKeptRunIsNoted()
{
    QFETCH(QString, more);
    QFETCH(int, notes);

    const RunScene scene;
    scene.addDay("20260112");
    scene.change("20260112", QStringLiteral("PRAGMA journal_mode = WAL"));
    const QString kept = scene.keep();
    scene.clear();
    struct stat facts = {};
    QCOMPARE(::stat(QFile::encodeName(kept + QStringLiteral("/20260112.db")).constData(), &facts),
             0);
    QFile file(kept + QStringLiteral("/run.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("{\"serial\": \"SN1\", \"files\": {\"20260112.db\": \"%1\"%2}}")
                   .arg(QString::number(facts.st_ino), more)
                   .toUtf8());
    file.close();
    const StoreRun run = runStore({QStringLiteral("check"), kept});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output.count("Note:"), notes);
}

void TestStoreCheck::damageIsASentence_data()
{
    QTest::addColumn<Harm>("harm");
    QTest::addColumn<QByteArray>("sentence");

    const auto row = [](const char* name, const char* sentence, const Harm& harm) {
        QTest::newRow(name) << harm << QByteArray(sentence);
    };
    const auto sql = [](const QString& statement) {
        return [statement](const RunScene& scene) { scene.change("20260112", statement); };
    };
    row("empty", "20260112.db is empty.",
        [](const RunScene& scene) { spoil(scene.dayFile("20260112"), 0, {}); });
    row("no database", "20260112.db cannot be read: file is not a database.",
        [](const RunScene& scene) {
            spoil(scene.dayFile("20260112"), 0, {});
            spoil(scene.dayFile("20260112"), 0, "no database at all");
        });
    row("first page zeroed", "20260112.db cannot be read: file is not a database.",
        [](const RunScene& scene) {
            spoil(scene.dayFile("20260112"), 0, QByteArray(kPage, '\0'));
        });
    row("cut off", "20260112.db cannot be read: database disk image is malformed.",
        [](const RunScene& scene) { spoil(scene.dayFile("20260112"), 5 * kPage, {}); });
    row("table dropped",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 is listed but not there.",
        sql(QStringLiteral("DROP TABLE ") + kTable));
    row("table not listed",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 is there but not listed, "
        "so "
        "that no export finds it.",
        sql(QStringLiteral("DELETE FROM batch_metadata WHERE table_name = '%1'").arg(kTable)));
    row("base table dropped", "20260112.db cannot be read: no such table: batch_metadata.",
        sql(QStringLiteral("DROP TABLE batch_metadata")));
    row("curve without a name",
        "20260112.db table curve_2_batch_20260112_060000_20260112_115959 is listed for curve 2, "
        "which "
        "has no name.",
        sql(QStringLiteral("DELETE FROM curve_info WHERE curve_id = 2")));
    row("name that is no UTF-8", "20260112.db has a name for curve 1 that is no text.",
        sql(QStringLiteral("UPDATE curve_info SET name = CAST(x'313031FF56' AS TEXT) WHERE "
                           "curve_id = 1")));
    row("name with a zero", "20260112.db has a name for curve 2 that is no text.",
        sql(QStringLiteral("UPDATE curve_info SET name = 'a' || char(0) || 'b' WHERE "
                           "curve_id = 2")));
    row("number without a table",
        "20260112.db has a last number for table curve_9_batch_20260112_060000_20260112_115959, "
        "which is not there.",
        sql(QStringLiteral("INSERT INTO sqlite_sequence VALUES "
                           "('curve_9_batch_20260112_060000_20260112_115959', 5)")));
    row("table without a number",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has readings, but no last "
        "number.",
        sql(QStringLiteral("DELETE FROM sqlite_sequence WHERE name = '%1'").arg(kTable)));
    row("foreign reading",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 1 reading of another "
        "curve.",
        sql(QStringLiteral("UPDATE %1 SET curve_id = 2 WHERE id = 5").arg(kTable)));
    row("doubles",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 2 readings of the "
        "same "
        "millisecond as another.",
        [](const RunScene& scene) {
            // Without the rule that keeps them out.
            scene.change("20260112",
                         QStringLiteral("CREATE TABLE copy AS SELECT * FROM ") + kTable);
            scene.change("20260112", QStringLiteral("DROP TABLE ") + kTable);
            scene.change("20260112", QStringLiteral("ALTER TABLE copy RENAME TO ") + kTable);
            scene.change(
                "20260112",
                QStringLiteral("INSERT INTO %1 SELECT * FROM %1 WHERE id < 3").arg(kTable));
        });
    row("time that is a text",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 1 reading whose time "
        "or value is no number.",
        sql(QStringLiteral("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, 'abc', 1)")
                .arg(kTable)));
    row("time that is a blob",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 1 reading whose time "
        "or value is no number.",
        sql(QStringLiteral("UPDATE %1 SET timestamp = x'00ff' WHERE id = 5").arg(kTable)));
    row("value that is a text",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 2 readings whose time "
        "or value is no number.",
        sql(QStringLiteral("UPDATE %1 SET value = 'much' WHERE id IN (5, 9)").arg(kTable)));
    row("time that is a blob in the index",
        "20260112.db table curve_1_batch_20260112_060000_20260112_115959 has 1 reading that its "
        "index does not find.",
        [](const RunScene& scene) {
            // The header of an entry: its own size and the types of curve, time and row. The time becomes
            // a blob of as many bytes.
            const QByteArray entry("\x04\x09\x05\x01");
            constexpr char kBlob = '\x18';
            QFile file(scene.dayFile("20260112"));
            if (!file.open(QIODevice::ReadOnly)) {
                qFatal("%s", qPrintable(file.errorString()));
            }
            spoil(file.fileName(), file.readAll().indexOf(entry) + 2, QByteArray(1, kBlob));
        });
}

void TestStoreCheck::damageIsASentence()
{
    QFETCH(Harm, harm);
    QFETCH(QByteArray, sentence);

    const RunScene scene;
    scene.addDay("20260112");
    scene.addDay("20260113");
    harm(scene);
    const StoreRun run = runStore({QStringLiteral("check"), scene.dataDirectory()});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.contains("scn4070a-store: check: " + sentence + '\n'),
             run.errors.constData());
    // The other day is checked all the same.
    QVERIFY(run.output.contains("20260113.db  101(Vdc)       360        0"));
    QVERIFY(run.output.endsWith("The run is damaged.\n"));
}

void TestStoreCheck::everyPageMayBeDestroyed()
{
    const RunScene scene;
    scene.addDay("20260112", 20000);
    const QString path = scene.dayFile("20260112");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    file.close();
    const int pages = static_cast<int>(whole.size() / kPage);
    QVERIFY(pages > 15);
    for (const char filler : {'\0', '\xff'}) {
        for (int page = 0; page < pages; ++page) {
            spoil(path, page * kPage, QByteArray(kPage, filler));
            for (const char* command : {"check", "info"}) {
                const StoreRun run =
                    runStore({QString::fromLatin1(command), scene.dataDirectory()});
                QVERIFY2(run.exitCode == 2 || (run.exitCode == 0 && command[0] == 'i'),
                         qPrintable(QStringLiteral("%1, page %2: %3")
                                        .arg(QString::fromLatin1(command), QString::number(page),
                                             QString::number(run.exitCode))));
                QVERIFY(run.exitCode == 0 || run.errors.startsWith("scn4070a-store: "));
            }
            spoil(path, page * kPage, whole.mid(static_cast<int>(page * kPage), kPage));
        }
    }
    QCOMPARE(runStore({QStringLiteral("check"), scene.dataDirectory()}).exitCode, 0);
}

void TestStoreCheck::everyLengthMayBeLeft()
{
    const RunScene scene;
    scene.addDay("20260112");
    const QString path = scene.dayFile("20260112");
    qint64 length = QFileInfo(path).size();
    while (length > 0) {
        length -= kPage / 2;
        spoil(path, length, {});
        const StoreRun run = runStore({QStringLiteral("check"), scene.dataDirectory()});
        QVERIFY2(run.exitCode == 2, qPrintable(QString::number(length)));
        QVERIFY(run.errors.startsWith("scn4070a-store: check: 20260112.db "));
    }
}

SCN_TEST(TestStoreCheck, QCoreApplication)
#include "test_storecheck.moc"
