#include "ControlsSuite.h"

#include <QSettings>

namespace corv::test {

void ControlsSuite::initTestCase()
{
    UiFixture::prepare();
}

void ControlsSuite::open(const QByteArray& contents, bool light)
{
    m_ui = std::make_unique<UiFixture>();
    QSettings().setValue("userPreferences/lightTheme", light);
    QVERIFY(m_ui->loadText(R"(
        import QtQuick 2.7
        import QtQuick.Window 2.2
        import "."
        import "constants.js" as Cst
        import "Controls" as Controls
        Window {
            visible: true; width: 500; height: 300; color: "#444444"
            function themed(name) { return Theme[name]; }
            function constant(name) { return Cst[name]; }
    )" + contents + "}"));
    QTest::mouseMove(m_ui->window(), QPoint(490, 290));
}

} // namespace corv::test
