#include "Timeline/PoiFilter.h"

#include <QSignalSpy>
#include <QtTest>

using namespace corv;

/// The points of interest as a list shows them.
class PoiFilterTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void showsPoisThatHaveEveryWord_data();
    void showsPoisThatHaveEveryWord();
    void sortsByTimeOrByName();
    void aRowHasItsTimeAndItsFirstLine();
    void deletesSeveralAtOnce();
    void followsTheModel();

private:
    QStringList names(const PoiFilter& filter) const;

    std::unique_ptr<PoiModel> m_model;
};

void PoiFilterTest::init()
{
    m_model = std::make_unique<PoiModel>();
    const auto poi = [](int time, const char* name, const char* comment) {
        return QVariantMap{{"time", time},
                           {"name", QString::fromUtf8(name)},
                           {"comment", QString::fromUtf8(comment)}};
    };
    m_model->setFromList({poi(3000, "Crack", "north pier\nsecond line"),
                          poi(1000, "Rust", "South pier"), poi(2000, "bird nest", "")});
}

QStringList PoiFilterTest::names(const PoiFilter& filter) const
{
    QStringList all;
    for (int row = 0; row < filter.count(); ++row)
        all << filter.data(filter.index(row, 0), PoiModel::NameRole).toString();
    return all;
}

void PoiFilterTest::showsPoisThatHaveEveryWord_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("no word") << "" << QStringList{"Rust", "bird nest", "Crack"};
    QTest::newRow("blanks") << "  " << QStringList{"Rust", "bird nest", "Crack"};
    QTest::newRow("in a name, another case") << "BIRD" << QStringList{"bird nest"};
    QTest::newRow("in a description") << "pier" << QStringList{"Rust", "Crack"};
    QTest::newRow("both words") << "pier crack" << QStringList{"Crack"};
    QTest::newRow("none has it") << "tower" << QStringList();
}

void PoiFilterTest::showsPoisThatHaveEveryWord()
{
    QFETCH(QString, words);
    QFETCH(QStringList, shown);
    PoiFilter filter;
    filter.setPois(m_model.get());
    filter.setWords(words);
    QCOMPARE(names(filter), shown);
}

void PoiFilterTest::sortsByTimeOrByName()
{
    PoiFilter filter;
    filter.setPois(m_model.get());
    filter.setByName(true);
    QCOMPARE(names(filter), (QStringList{"bird nest", "Crack", "Rust"}));
    filter.setByName(false);
    QCOMPARE(names(filter), (QStringList{"Rust", "bird nest", "Crack"}));
}

void PoiFilterTest::aRowHasItsTimeAndItsFirstLine()
{
    PoiFilter filter;
    filter.setPois(m_model.get());
    filter.setWords("crack");
    QCOMPARE(filter.timeOfRow(0), QTime(0, 0, 3));
    QVERIFY(!filter.timeOfRow(1).isValid());
    QCOMPARE(filter.rowOfTime(QTime(0, 0, 3)), 0);
    QCOMPARE(filter.rowOfTime(QTime(0, 0, 1)), -1);
    QCOMPARE(filter.rowOfTime(QTime()), -1);
    QCOMPARE(filter.data(filter.index(0, 0), PoiFilter::firstLineRole).toString(),
             QString("north pier"));
    QCOMPARE(filter.data(filter.index(0, 0), PoiFilter::timeTextRole).toString(),
             QString("00:03.000"));
}

void PoiFilterTest::deletesSeveralAtOnce()
{
    PoiFilter filter;
    filter.setPois(m_model.get());
    filter.removeRowsOf({0, 2, 7});
    QCOMPARE(names(filter), QStringList("bird nest"));
}

void PoiFilterTest::followsTheModel()
{
    PoiFilter filter;
    filter.setPois(m_model.get());
    filter.setWords("rust");
    QSignalSpy counted(&filter, &PoiFilter::countChanged);
    QVERIFY(m_model->setTexts(QTime(0, 0, 2), "more rust", ""));
    QCOMPARE(names(filter), (QStringList{"Rust", "more rust"}));
    QVERIFY(counted.count() > 0);
    m_model->clear();
    QCOMPARE(filter.count(), 0);
}

QTEST_MAIN(PoiFilterTest)
#include "PoiFilterTest.moc"
