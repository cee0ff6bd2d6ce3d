#include "Review/proposedName.h"

#include <QtTest>

using namespace corv;

/// The names that dialogs propose.
class ProposedNameTest : public QObject
{
    Q_OBJECT

private slots:
    void isMadeOfTheFlightsNames_data();
    void isMadeOfTheFlightsNames();
    void nameOfAPictureHasItsTime();
};

void ProposedNameTest::isMadeOfTheFlightsNames_data()
{
    QTest::addColumn<QString>("mission");
    QTest::addColumn<QString>("flight");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    QTest::newRow("all") << "Solar park"
                         << "Row survey" << 3 << "Solar park_Row survey_3_2026-11-21";
    QTest::newRow("no number") << "Solar park"
                               << "Row survey" << 0 << "Solar park_Row survey_2026-11-21";
    QTest::newRow("no names") << ""
                              << "" << 0 << "CORV0001_2026-11-21";
    QTest::newRow("a number alone") << ""
                                    << "" << 12 << "12_2026-11-21";
    QTest::newRow("what a path, a shell or a URL would take for something else")
        << "../a/b#c%d\"e'f?g"
        << "-h:i*j|k`l\n.m" << 1 << "a_b_c_d_e_f_g_h_i_j_k_l .m_1_2026-11-21";
    QTest::newRow("letters of any language") << QStringLiteral("Größe") << QStringLiteral("東京")
                                             << 1 << QStringLiteral("Größe_東京_1_2026-11-21");
    QTest::newRow("long") << QString(200, 'x') << "y" << 1 << QString(60, 'x') + "_y_1_2026-11-21";
    QTest::newRow("nothing but signs") << "///"
                                       << "..." << 0 << "CORV0001_2026-11-21";
}

void ProposedNameTest::isMadeOfTheFlightsNames()
{
    QFETCH(QString, mission);
    QFETCH(QString, flight);
    QFETCH(int, number);
    ReviewProperties properties;
    properties.hasNaming = number > 0 || !mission.isEmpty() || !flight.isEmpty();
    properties.missionName = mission;
    properties.flightName = flight;
    properties.flightNumber = number;
    QTEST(proposedName(properties, QStringLiteral("/card/CORV0001.MOV"), QDate(2026, 11, 21)),
          "name");
}

void ProposedNameTest::nameOfAPictureHasItsTime()
{
    QCOMPARE(proposedFrameName("Roof_3", QTime(0, 2, 5, 40)), QString("Roof_3_02m05.040s"));
    QCOMPARE(proposedFrameName("Roof_3", QTime(1, 0, 0)), QString("Roof_3_60m00.000s"));
}

QTEST_APPLESS_MAIN(ProposedNameTest)
#include "ProposedNameTest.moc"
