#include "Review/Recovery.h"

#include "Base/videoTime.h"
#include "Platform/fileSystem.h"
#include "Review/logCategory.h"
#include "Threads/post.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <algorithm>
#include <utility>

namespace corv {
namespace {

QString momentText(const QDateTime& moment)
{
    const QLocale english(QLocale::English);
    const QString format = moment.date() == QDate::currentDate()
                               ? QStringLiteral("HH:mm")
                               : QStringLiteral("d MMM yyyy HH:mm");
    return english.toString(moment, format);
}

QString nameOf(const RecoveredReview& review)
{
    const QString named =
        review.projectPath.isEmpty() ? review.contents.videoFile : review.projectPath;
    return QFileInfo(named).completeBaseName();
}

// Whether there is nothing wrong with it but that its media are not there.
bool isWhole(const RecoveredReview& review)
{
    return !review.problem || (review.problem->kind != Failure::Kind::damaged &&
                               review.problem->kind != Failure::Kind::tooLarge);
}

} // namespace

Recovery::Recovery(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(delayMs);
    connect(&m_timer, &QTimer::timeout, this, &Recovery::write);
}

Recovery::~Recovery()
{
    finishPending();
    m_writing.waitForDone();
    m_look.waitForDone();
}

void Recovery::setReview(Review* review)
{
    if (m_review || !review)
        return;
    m_review = review;
    m_missing = std::make_unique<MissingMedia>(*review->jobs());
    connect(m_missing.get(), &MissingMedia::changed, this, &Recovery::offerChanged);
    connect(m_missing.get(), &MissingMedia::located, this,
            [this](const QString&, const ProjectContents& contents) { found(contents); });
    connect(review, &Review::openedVideoChanged, this, &Recovery::begin);
    connect(review, &Review::started, this, &Recovery::begin);
    connect(review, &Review::opened, this, &Recovery::settleNames);
    connect(review, &Review::saved, this, &Recovery::settle);
    connect(review, &Review::closing, this, &Recovery::finishPending);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &Recovery::finishPending);
    connect(review->pois(), &PoiModel::contentsChanged, this, &Recovery::changed);
    connect(review->pois(), &PoiModel::loadedFromLog, this,
            [this](const Poi& poi) { m_saved.pois[msOfTime(poi.time)] = listForm(poi); });
    connect(review, &Review::propertiesChanged, this, &Recovery::changed);
}

void Recovery::setFolder(const QString& folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    if (!folder.isEmpty() && (!QDir().mkpath(folder) || !QFileInfo(folder).isWritable()))
        // Not before the interface can hear it.
        post(this, [this] { sayNotKept(tr("the folder cannot be written")); });
    const std::vector<RecoveredReview> found = RecoveryStore(m_folder).found();
    if (!found.empty())
        offer(found.front());
}

QString Recovery::standardFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QStringLiteral("/recovery");
}

// --- Keeping ---------------------------------------------------------------------------------

Recovery::Contents Recovery::contentsNow() const
{
    Contents contents;
    contents.properties = keptProperties(
        ReviewProperties::of(*m_review->videoPlayer(), *m_review->logParser()), m_review->curves());
    for (const Poi& poi : m_review->pois()->pois())
        contents.pois.emplace_hint(contents.pois.end(), msOfTime(poi.time), listForm(poi));
    return contents;
}

/// What is there now needs no recovery: it is as it was opened, or as it was saved.
void Recovery::settle()
{
    m_timer.stop();
    m_writing.waitForDone();
    m_isAlwaysUnsaved = false;
    m_saved = contentsNow();
    rememberSizes();
    if (!m_place.file.isEmpty())
        QFile::remove(m_place.file);
}

/// While the medium is there: asked when it is gone, it may not answer.
void Recovery::rememberSizes()
{
    m_sizes.clear();
    const ProjectFileLoader::SavedFiles files = m_review->filesToSave();
    for (const QString& path : files.parts + QStringList{files.video, files.log}) {
        const QFileInfo file(path);
        if (!path.isEmpty() && file.isFile())
            m_sizes.insert(path, file.size());
    }
}

void Recovery::sayNotKept(const QString& reason)
{
    if (std::exchange(m_hasSaidNotKept, true))
        return;
    emit notKept(
        tr("Unsaved work cannot be kept in %1: %2. Save the project often.").arg(m_folder, reason));
}

/// The names come from the log, when it has been read.
void Recovery::settleNames()
{
    const QString key = QStringLiteral("designation");
    const QVariantMap properties = contentsNow().properties;
    if (properties.contains(key))
        m_saved.properties.insert(key, properties.value(key));
    else
        m_saved.properties.remove(key);
    rememberSizes();
}

/// A place of its own for the flight that is open now. What was left of the one before it stays
/// where it is, and is nobody's.
void Recovery::begin()
{
    m_timer.stop();
    m_writing.waitForDone();
    m_place = {};
    m_isAlwaysUnsaved = false;
    const QString video = m_review->openedVideo();
    if (video.isEmpty() || m_folder.isEmpty())
        return;
    m_saved = contentsNow();
    rememberSizes();
    offerFor(video, m_review->projectPath());
    m_place = RecoveryStore(m_folder).newPlace();
}

void Recovery::finishPending()
{
    if (m_timer.isActive())
        flush();
}

void Recovery::changed()
{
    if (!m_folder.isEmpty() && m_review && !m_review->openedVideo().isEmpty() &&
        !m_timer.isActive())
        m_timer.start();
}

void Recovery::write()
{
    m_timer.stop();
    if (m_folder.isEmpty() || !m_review || m_review->openedVideo().isEmpty() ||
        !m_review->videoPlayer() || !m_review->logParser())
        return;
    if (m_writing.isRunning()) {
        m_timer.start();
        return;
    }
    Contents now = contentsNow();
    const bool differs = m_isAlwaysUnsaved || !(now == m_saved);
    // A disk that was full when the flight was opened may have room by now.
    if (m_place.file.isEmpty() && differs)
        m_place = RecoveryStore(m_folder).newPlace();
    if (m_place.file.isEmpty()) {
        if (differs)
            sayNotKept(m_place.error != 0 ? qt_error_string(m_place.error)
                                          : tr("the folder cannot be written"));
        return;
    }
    RecoveredReview review;
    review.projectPath = m_review->projectPath();
    const ProjectFileLoader::SavedFiles files = m_review->filesToSave();
    review.contents.videoFile = files.video;
    review.contents.logFile = files.log;
    review.contents.parts = files.parts;
    review.contents.sizes = m_sizes;
    review.contents.properties = now.properties;
    QVariantList pois;
    for (const auto& poi : now.pois)
        pois.append(poi.second);
    review.contents.pois = pois;
    m_writing = runOnPool([this, file = m_place.file, lock = m_place.lock, differs, review] {
        if (!differs) {
            QFile::remove(file);
            return;
        }
        const int error = platform::replaceFile(file, recoveryText(review));
        if (error == 0)
            return;
        qCWarning(lcReview) << "The unsaved review cannot be kept in" << file
                            << qt_error_string(error);
        post(this, [this, error] { sayNotKept(qt_error_string(error)); });
    });
}

void Recovery::flush()
{
    m_writing.waitForDone();
    write();
    m_writing.waitForDone();
}

// --- Offering --------------------------------------------------------------------------------

void Recovery::offer(std::optional<RecoveredReview> review)
{
    m_offer = std::move(review);
    if (m_missing)
        m_missing->dismiss();
    emit offerChanged();
}

bool Recovery::isLocatable() const
{
    return m_offer && m_offer->problem && m_offer->problem->kind == Failure::Kind::notFound &&
           m_missing && !m_missing->isSearching();
}

void Recovery::locate(const QString& folder)
{
    if (!isLocatable())
        return;
    m_missing->offer(m_offer->projectPath, m_offer->contents);
    m_missing->locate(folder);
}

void Recovery::found(const ProjectContents& contents)
{
    if (!m_offer)
        return;
    RecoveredReview review = *m_offer;
    review.contents = contents;
    review.problem = fileProblem(QStringLiteral("The video"), contents.videoFile);
    offer(review);
}

void Recovery::lookAgain()
{
    if (!m_offer || !isWhole(*m_offer) || m_look.isRunning() ||
        (m_missing && m_missing->isSearching()))
        return;
    m_look = runOnPool([this, file = m_offer->file, video = m_offer->contents.videoFile] {
        post(this, [this, file, video, problem = fileProblem(QStringLiteral("The video"), video)] {
            // Another one may be offered by now, or the files were found elsewhere.
            if (m_offer && m_offer->file == file && m_offer->contents.videoFile == video)
                see(problem);
        });
    });
}

void Recovery::see(const std::optional<Failure>& problem)
{
    const auto sentenceOf = [](const std::optional<Failure>& failure) {
        return failure ? failure->sentence : QString();
    };
    if (sentenceOf(problem) == sentenceOf(m_offer->problem))
        return;
    RecoveredReview review = *m_offer;
    review.problem = problem;
    offer(review);
}

void Recovery::offerFor(const QString& videoPath, const QString& projectPath)
{
    if (m_folder.isEmpty())
        return;
    const std::vector<RecoveredReview> found = RecoveryStore(m_folder).found();
    const auto match =
        std::find_if(found.begin(), found.end(), [&](const RecoveredReview& candidate) {
            return candidate.projectPath.isEmpty() || projectPath.isEmpty()
                       ? candidate.contents.videoFile == videoPath
                       : candidate.projectPath == projectPath;
        });
    if (match != found.end())
        offer(*match);
}

QString Recovery::offerText() const
{
    if (!m_offer)
        return {};
    if (m_missing && m_missing->isSearching())
        return tr("Looking for the missing files...");
    if (m_offer->problem && m_offer->problem->kind == Failure::Kind::damaged)
        return m_offer->problem->sentence;
    const int count = m_offer->contents.pois.value_or(QVariantList()).size();
    const QString review =
        QStringLiteral("your unsaved review of %1 from %2 (%3)")
            .arg(nameOf(*m_offer), momentText(m_offer->savedAt),
                 count == 1 ? QStringLiteral("1 point of interest")
                            : QStringLiteral("%1 points of interest").arg(count));
    if (m_offer->problem) {
        const bool wasLookedFor = m_missing && m_missing->isOffered();
        return QStringLiteral("Cannot restore %1 now. %2")
            .arg(review, wasLookedFor ? m_missing->text() : m_offer->problem->sentence);
    }
    if (m_offer->projectSavedAt.isValid())
        return QStringLiteral("Restore %1. Its project was saved after that, at %2.")
            .arg(review, momentText(m_offer->projectSavedAt));
    return QStringLiteral("Restore %1").arg(review);
}

void Recovery::restore()
{
    if (!isRestorable())
        return;
    const RecoveredReview review = *m_offer;
    offer(std::nullopt);
    m_review->whenOpened(review.contents.videoFile, review.contents.openableParts(),
                         [this, review] {
                             m_review->restore(review.projectPath, review.contents);
                             // Kept under the new name before the old one goes.
                             m_isAlwaysUnsaved = true;
                             flush();
                             if (QFile::exists(m_place.file))
                                 RecoveryStore(m_folder).remove(review.file);
                             offer(std::nullopt);
                         });
}

void Recovery::discard()
{
    if (!m_offer)
        return;
    RecoveryStore(m_folder).remove(m_offer->file);
    const std::vector<RecoveredReview> found = RecoveryStore(m_folder).found();
    offer(found.empty() ? std::nullopt : std::optional<RecoveredReview>(found.front()));
}

void Recovery::later()
{
    offer(std::nullopt);
}

} // namespace corv
