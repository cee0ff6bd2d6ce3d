#include "App/FileChoice.h"

#include "Threads/post.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QWindow>
#include <algorithm>

namespace corv {
namespace {

/// The desktop's dialog has no widgets of Qt's.
bool isNative(const QFileDialog& dialog)
{
    return dialog.layout() == nullptr;
}

QWindow* windowOf(const QObject* object)
{
    for (QObject* owner = object->parent(); owner; owner = owner->parent()) {
        if (auto* window = qobject_cast<QWindow*>(owner))
            return window;
        if (auto* item = qobject_cast<QQuickItem*>(owner))
            if (item->window())
                return item->window();
    }
    return nullptr;
}

QUrl existingFolder(const QUrl& folder)
{
    if (!folder.isEmpty() && QFileInfo(folder.toLocalFile()).isDir())
        return folder;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? QUrl::fromLocalFile(documents) : QUrl();
}

// "JPEG (*.jpg)" has "jpg"; a filter of all files has none.
QString firstSuffix(const QString& nameFilter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([^\\s)*]+)"));
    return pattern.match(nameFilter).captured(1);
}

// Lets a dialog of Qt's complete a name without a suffix by that of the filter, before it asks
// whether a file may be replaced.
void completeNames(QFileDialog* dialog, const QString& nameFilter)
{
    const auto takeSuffix = [dialog](const QString& filter) {
        dialog->setDefaultSuffix(firstSuffix(filter));
    };
    takeSuffix(nameFilter);
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, takeSuffix);
}

} // namespace

QString filterOfAnyCase(const QString& nameFilter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.[^\\s)]+"));
    QString result;
    int end = 0;
    for (auto found = pattern.globalMatch(nameFilter); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        result += nameFilter.midRef(end, match.capturedStart() - end);
        for (const QChar letter : match.captured())
            result += letter.isLetter()
                          ? QStringLiteral("[%1%2]").arg(letter.toLower()).arg(letter.toUpper())
                          : QString(letter);
        end = match.capturedEnd();
    }
    return result + nameFilter.midRef(end);
}

FileChoice::FileChoice(QObject* parent) : QObject(parent) {}

FileChoice::~FileChoice() = default;

void FileChoice::setFolder(const QUrl& folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    emit folderChanged();
}

QString FileChoice::selectedNameFilter() const
{
    return m_nameFilters.value(m_filter);
}

void FileChoice::setVisible(bool visible)
{
    if (visible)
        open();
    else
        close();
}

QStringList FileChoice::filtersFor(const QFileDialog& dialog) const
{
    QStringList filters = m_nameFilters;
    if (isNative(dialog))
        std::transform(filters.begin(), filters.end(), filters.begin(), filterOfAnyCase);
    return filters;
}

void FileChoice::open()
{
    if (m_isOpen)
        return;
    m_dialog = std::make_unique<QFileDialog>();
    QFileDialog* const dialog = m_dialog.get();
    m_isOpen = true;
    dialog->setWindowTitle(m_title);
    dialog->setAcceptMode(m_isExisting ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dialog->setFileMode(m_isExisting ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog->setNameFilters(filtersFor(*dialog));
    // A suffix that the desktop's dialog adds after its question is one that nobody was asked
    // about.
    if (!m_isExisting && !isNative(*dialog))
        completeNames(dialog, m_nameFilters.value(0));
    const QUrl folder = existingFolder(m_folder);
    if (!folder.isEmpty())
        dialog->setDirectoryUrl(folder);
    if (!m_proposedName.isEmpty())
        dialog->selectFile(m_proposedName);
    connect(dialog, &QFileDialog::finished, this, &FileChoice::finish);
    dialog->winId();
    if (QWindow* const window = windowOf(this))
        dialog->windowHandle()->setTransientParent(window);
    // Of all windows: keys that went to another one would change the work that is being saved.
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
    emit visibleChanged();
}

void FileChoice::close()
{
    if (m_isOpen)
        m_dialog->reject();
}

void FileChoice::finish(int result)
{
    m_isOpen = false;
    const QList<QUrl> chosen = m_dialog->selectedUrls();
    const bool isAccepted = result == QDialog::Accepted && !chosen.isEmpty();
    const QUrl folder = isAccepted ? folderToEnter(chosen.first()) : QUrl();
    if (!folder.isEmpty()) {
        enter(folder);
        return;
    }
    if (isAccepted) {
        m_filter = std::max(0, filtersFor(*m_dialog).indexOf(m_dialog->selectedNameFilter()));
        m_fileUrl = chosen.first();
        setFolder(m_fileUrl.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash));
    }
    emit visibleChanged();
    const auto answer = [this, isAccepted] {
        if (isAccepted)
            emit accepted();
        else
            emit rejected();
    };
    // The desktop's dialog leaves the screen only when its own signal is over, and not before the
    // end of a copy that begins in it.
    if (isNative(*m_dialog))
        post(this, answer);
    else
        answer();
}

// The desktop's dialog takes for an answer what is no file: a folder, and a name that it has
// completed only as far as several have it in common.
QUrl FileChoice::folderToEnter(const QUrl& chosen) const
{
    const QFileInfo file(chosen.toLocalFile());
    if (!chosen.isLocalFile() || file.isFile())
        return {};
    if (file.isDir())
        return chosen;
    const bool isNoFile = m_isExisting && !file.exists() && QFileInfo(file.path()).isDir();
    return isNoFile ? QUrl::fromLocalFile(file.path()) : QUrl();
}

// That dialog has to leave the screen before another one can take its place.
void FileChoice::enter(const QUrl& folder)
{
    setFolder(folder);
    emit visibleChanged();
    post(this, [this] { open(); });
}

} // namespace corv
