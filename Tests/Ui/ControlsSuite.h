#pragma once

#include "UiFixture.h"

#include <QByteArray>
#include <QObject>
#include <memory>

namespace corv::test {

/// A suite of the shared controls, alone in a window.
class ControlsSuite : public QObject
{
    Q_OBJECT

protected:
    /// Makes a window with these QML items.
    void open(const QByteArray& contents, bool light = false);

    std::unique_ptr<UiFixture> m_ui;

private slots:
    void initTestCase();
};

} // namespace corv::test
