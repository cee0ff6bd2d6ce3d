#include "Review/RecoveryStore.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

/// What a start finds of the reviews that were not saved. The files are those of killed programs.
class RecoveryStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void saysWhyOneCannotBeRestored_data();
    void saysWhyOneCannotBeRestored();
};

void RecoveryStoreTest::saysWhyOneCannotBeRestored_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("sentence");
    const QByteArray whole = R"({"format":1,"video":"/gone/CORV0001.MOV"})";
    const QString damaged = "The unsaved review in %1 is damaged and cannot be restored.";
    QTest::newRow("nothing") << QByteArray() << damaged;
    QTest::newRow("cut off") << whole.left(30) << damaged;
    QTest::newRow("of a later version") << QByteArray(whole).replace("1", "2") << damaged;
    QTest::newRow("too large") << whole + QByteArray(16 << 20, ' ')
                               << "The unsaved review in %1 is too large and cannot be restored.";
}

void RecoveryStoreTest::saysWhyOneCannotBeRestored()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, sentence);
    const QTemporaryDir folder;
    const QString path = folder.filePath("review-1.json");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    file.close();
    const std::vector<RecoveredReview> found = RecoveryStore(folder.path()).found();
    QCOMPARE(found.size(), size_t(1));
    QVERIFY(found[0].problem.has_value());
    QCOMPARE(found[0].problem->sentence, sentence.arg(path));
}

QTEST_GUILESS_MAIN(RecoveryStoreTest)
#include "RecoveryStoreTest.moc"
