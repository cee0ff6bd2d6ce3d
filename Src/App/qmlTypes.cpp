#include "App/qmlTypes.h"

#include "App/Appearance.h"
#include "App/FileChoice.h"
#include "App/TintedPicture.h"
#include "Discovery/DirectoryParser.h"
#include "Log/LogParser.h"
#include "Project/PoiReportExporter.h"
#include "Project/ProjectFileLoader.h"
#include "Review/ExportJobs.h"
#include "Review/JobJournal.h"
#include "Review/RecentProjects.h"
#include "Review/Recovery.h"
#include "Review/Review.h"
#include "Review/SearchJobs.h"
#include "Shell/AppInfo.h"
#include "Shell/ApplicationTelemetry.h"
#include "Shell/HeldKey.h"
#include "Shell/HiddenPart.h"
#include "Shell/OpenedWindows.h"
#include "Shell/PointerRest.h"
#include "Shell/Shortcut.h"
#include "Timeline/ExportInsets.h"
#include "Timeline/FramePreview.h"
#include "Timeline/HeadUpDisplay.h"
#include "Timeline/LogCurves.h"
#include "Timeline/PictureItem.h"
#include "Timeline/PoiFilter.h"
#include "Timeline/PoiTableExport.h"
#include "Timeline/ProjectPictures.h"
#include "Timeline/ThermalBarItem.h"
#include "Timeline/TimelineContent.h"
#include "Timeline/TimelineNavigator.h"
#include "Video/VideoPlayer.h"

#include <qqml.h>

namespace corv {
namespace {

template <class Type>
QObject* provide(QQmlEngine*, QJSEngine*)
{
    return new Type;
}

template <class Type>
void registerSingleton(const char* module, const char* name)
{
    qmlRegisterSingletonType<Type>(module, 1, 0, name, provide<Type>);
}

} // namespace

void registerQmlTypes()
{
    registerSingleton<Appearance>("corv.Appearance", "Appearance");
    registerSingleton<AppInfo>("corv.AppInfo", "AppInfo");
    registerSingleton<ApplicationTelemetry>("corv.ApplicationTelemetry", "ApplicationTelemetry");
    registerSingleton<LogParser>("corv.LogParsing", "LogParser");
    registerSingleton<HeldKey>("Shortcuts", "HeldKey");
    registerSingleton<OpenedWindows>("corv.OpenedWindows", "OpenedWindows");
    qmlRegisterType<FileChoice>("FileChoice", 1, 0, "FileChoice");
    qmlRegisterType<DirectoryParser>("DirectoryParser", 1, 0, "DirectoryParser");
    qmlRegisterType<HeadUpDisplay>("HeadUpDisplay", 1, 0, "HeadUpDisplay");
    qmlRegisterType<LogCurves>("LogCurves", 1, 0, "LogCurves");
    qmlRegisterType<VideoPlayer>("VideoPlayer", 1, 0, "VideoPlayer");
    qmlRegisterType<PoiReportExporter>("PoiReportExporter", 1, 0, "PoiReportExporter");
    qmlRegisterType<ProjectFileLoader>("ProjectFileLoader", 1, 0, "ProjectFileLoader");
    qmlRegisterType<TintedPicture>("Pictures", 1, 0, "TintedPicture");
    qmlRegisterType<PointerRest>("Pointer", 1, 0, "PointerRest");
    qmlRegisterType<HiddenPart>("Windows", 1, 0, "HiddenPart");
    qmlRegisterType<Shortcut>("Shortcuts", 1, 0, "Shortcut");
    qmlRegisterType<TimelineContent>("Timeline", 1, 0, "TimelineContent");
    qmlRegisterType<TimelineNavigator>("Timeline", 1, 0, "TimelineNavigator");
    qmlRegisterType<PictureItem>("Timeline", 1, 0, "PictureItem");
    qmlRegisterType<ExportInsets>("Timeline", 1, 0, "ExportInsets");
    qmlRegisterType<ThermalBarItem>("Timeline", 1, 0, "ThermalBarItem");
    qmlRegisterType<FramePreview>("Timeline", 1, 0, "FramePreview");
    qmlRegisterType<PoiTableExport>("Timeline", 1, 0, "PoiTableExport");
    qmlRegisterType<PoiFilter>("Timeline", 1, 0, "PoiFilter");
    qmlRegisterType<ProjectPictures>("Timeline", 1, 0, "ProjectPictures");
    qmlRegisterType<ExportJobs>("Review", 1, 0, "ExportJobs");
    qmlRegisterType<SearchJobs>("Review", 1, 0, "SearchJobs");
    qmlRegisterType<JobJournal>("Review", 1, 0, "JobJournal");
    qmlRegisterType<Review>("Review", 1, 0, "Review");
    qmlRegisterType<Recovery>("Review", 1, 0, "Recovery");
    qmlRegisterType<RecentProjects>("Review", 1, 0, "RecentProjects");
    qmlRegisterUncreatableType<Job>("Review", 1, 0, "Job", QStringLiteral("made by a review"));
    qmlRegisterUncreatableType<MissingMedia>("Review", 1, 0, "MissingMedia",
                                             QStringLiteral("made by a review"));
    qRegisterMetaType<PoiModel*>();
    qRegisterMetaType<JobList*>();
    qRegisterMetaType<ProjectFileLoader*>();
}

} // namespace corv
