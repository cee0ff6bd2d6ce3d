#include "ManualPictures.h"

#include "Base/videoTime.h"

#include <QDir>
#include <QQmlContext>
#include <QQmlExpression>
#include <QQuickItem>
#include <QQuickWindow>
#include <QUrl>
#include <stdexcept>

namespace corv {
namespace {

// Small enough that the texts of the window can be read on a page.
constexpr QSize windowSize(1280, 760);

QVariant evaluateIn(QObject* window, const QString& expression)
{
    return QQmlExpression(qmlContext(window), window, expression).evaluate();
}

} // namespace

ManualPictures::ManualPictures(const QString& project, const QString& card, const QString& outDir)
    : m_project(project), m_card(card), m_outDir(outDir)
{
    m_review.window()->resize(windowSize);
    m_review.waitFor(QStringLiteral("the window"), [this] {
        return m_review.window()->isExposed() && m_review.picture().size() == windowSize;
    });
}

void ManualPictures::takeAll()
{
    takeStart();
    takeImporter();
    m_review.open(m_project);
    takeFlight();
    takePoiProperties();
    takeMove();
    takeAdjustments();
    takeFramesExport();
}

void ManualPictures::takeStart()
{
    constexpr int aroundPx = 40;
    auto* panel = m_review.window()->findChild<QQuickItem*>(QStringLiteral("welcomeMessage"));
    if (!panel)
        throw std::runtime_error("the window has no quick start panel");
    const QRect place = panel->mapRectToScene(panel->boundingRect()).toRect();
    save(m_review.picture().copy(place.adjusted(-aroundPx, -aroundPx, aroundPx, aroundPx)),
         QStringLiteral("start"));
}

void ManualPictures::takeImporter()
{
    m_review.evaluate(QStringLiteral("goExploreRemovableDevices()"));
    QQuickWindow* importer = m_review.waitForWindow(QStringLiteral("autoImporter"));
    const auto choose = [&](bool forVideo, const QString& folder) {
        importer->setProperty("isSelectingDirectoryForVideo", forVideo);
        QMetaObject::invokeMethod(importer, "handleDirectoryChosen",
                                  Q_ARG(QVariant, QVariant(folder)));
    };
    choose(true, QDir(m_card).filePath(QStringLiteral("DCIM/101_CORV")));
    choose(false, m_card);
    evaluateIn(importer, QStringLiteral("parseChosenDirs()"));
    m_review.waitFor(QStringLiteral("the list of flights"), [&] {
        return !importer->property("isBusy").toBool() &&
               evaluateIn(importer, QStringLiteral("matchingsListModel.count")).toInt() > 0;
    });
    save(m_review.pictureAtRest(importer), QStringLiteral("importer"));
    evaluateIn(importer, QStringLiteral("cancelAndClose()"));
}

void ManualPictures::takeFlight()
{
    m_review.playUpTo(m_review.mostInterestingMoment());
    save(m_review.picture(), QStringLiteral("flight"));
    m_review.showMoment(m_review.mostInterestingMoment());
}

void ManualPictures::takePoiProperties()
{
    const QVariantList pois =
        m_review.evaluate(QStringLiteral("timelineContent.getPOIs()")).toList();
    if (pois.size() < 2)
        throw std::runtime_error("the project has fewer than two points of interest");
    selectPoi(pois[1].toMap()[QStringLiteral("time")].toInt());
    m_review.evaluate(QStringLiteral("editSelectedPoi()"));
    QQuickWindow* properties = m_review.waitForWindow(QStringLiteral("poiPropertiesWindow"));
    save(m_review.pictureAtRest(properties), QStringLiteral("poi"));
    evaluateIn(properties, QStringLiteral("cancelPressed()"));
}

void ManualPictures::takeMove()
{
    constexpr int aLittleMs = 3000;
    m_review.evaluate(QStringLiteral("startMovingPoi()"));
    const QTime selected =
        m_review.evaluate(QStringLiteral("timelineContent.selectedPoiTime")).toTime();
    m_review.showMoment(selected.addMSecs(aLittleMs));
    const QRect below = placeOf("controlsTab") | placeOf("timelineTab") | placeOf("infoTab");
    save(m_review.picture().copy(below), QStringLiteral("move"));
    m_review.evaluate(QStringLiteral("stopMovingPoi()"));
    m_review.showMoment(selected);
}

void ManualPictures::takeAdjustments()
{
    constexpr int pictureBeside = 480;
    m_review.evaluate(QStringLiteral("tabsContainer.currentIndex = 1"));
    m_review.waitFor(QStringLiteral("the adjustments"), [this] {
        return m_review.evaluate(QStringLiteral("adjustmentsPanel() !== undefined")).toBool();
    });
    const QRect panel = placeOf("hUDRectangle");
    save(m_review.picture().copy(panel.adjusted(-pictureBeside, 0, 0, 0)),
         QStringLiteral("adjustments"));
    m_review.evaluate(QStringLiteral("tabsContainer.currentIndex = 0"));
}

void ManualPictures::takeFramesExport()
{
    m_review.evaluate(QStringLiteral("secondaryWindows.openFramesExport()"));
    QQuickWindow* frames = m_review.waitForWindow(QStringLiteral("framesExport"));
    evaluateIn(frames,
               QStringLiteral("folderTextInput.text = 'file:///media/pilot/Lindenau/frames'"));
    save(m_review.pictureAtRest(frames), QStringLiteral("framesexport"));
    frames->close();
}

void ManualPictures::selectPoi(int timeMs)
{
    constexpr int insideFlagPx = 4;
    constexpr int flagMiddlePx = 60;
    const QRect strip = placeOf("timelineContent");
    const double x =
        timeMs / m_review.evaluate(QStringLiteral("timelineContent.msPerPx")).toDouble() -
        m_review.evaluate(QStringLiteral("timelineContent.contentX")).toDouble();
    m_review.click(strip.topLeft() + QPointF(x + insideFlagPx, flagMiddlePx));
    const QTime moment = timeOfMs(timeMs);
    m_review.waitFor(QStringLiteral("the selected point of interest"), [&] {
        return m_review.evaluate(QStringLiteral("timelineContent.selectedPoiTime")).toTime() ==
               moment;
    });
    // The click asks for the moment as well, which is not heard while another is on its way.
    m_review.showMoment(moment);
}

QRect ManualPictures::placeOf(const char* id) const
{
    auto* item = m_review.evaluate(QString::fromLatin1(id)).value<QQuickItem*>();
    if (!item)
        throw std::runtime_error(std::string("the window has no ") + id);
    return item->mapRectToScene(item->boundingRect()).toRect();
}

void ManualPictures::save(const QImage& picture, const QString& name) const
{
    const QString file = QDir(m_outDir).filePath(name + QStringLiteral(".png"));
    if (!picture.save(file))
        throw std::runtime_error("cannot write " + file.toStdString());
}

} // namespace corv
